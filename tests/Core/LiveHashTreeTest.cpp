#include <Orv/Core/LiveHashTree.h>
#include <Orv/Exception.h>

#include "Log/LoggedLines.h"

#include <QCryptographicHash>
#include <QtAlgorithms>

#include <gmock/gmock.h>

using namespace Orv::Core;
using testing::ThrowsMessage;

namespace {

QByteArray md5(const QByteArray& data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Md5);
}

QByteArray leaf(int number)
{
    return md5(QByteArray::number(number));
}

/// The hash of `count` leaves from `first` on, by definition: the largest complete tree on the left, the rest on the
/// right.
QByteArray definition(int first, int count)
{
    if (count == 1)
        return leaf(first);
    int left = 1;
    while (left * 2 < count)
        left *= 2;
    return md5(definition(first, left) + definition(first + left, count - left));
}

} // namespace

TEST(LiveHashTree, AgreesWithTheDefinition)
{
    MD5LiveHashTree tree;
    for (int count = 1; count <= 300; ++count) {
        tree.reset();
        for (int i = 0; i < count; ++i) {
            tree.addNextHash(leaf(i));
            ASSERT_EQ(tree.getCurrentState().size(), int(qPopulationCount(quint32(i + 1))))
                << "minimal number of subtrees";
        }
        tree.finish();
        ASSERT_EQ(tree.getFinalHash().toHex(), definition(0, count).toHex()) << count;
    }
}

TEST(LiveHashTree, WorkedExample)
{
    const QByteArray A = "A", B = "bb", C, D = "D", E = "E"; // any length is allowed
    const QByteArray P = md5(md5(A + B) + md5(C + D));
    MD5LiveHashTree tree;
    for (const QByteArray& hash : {A, B, C, D, E})
        tree.addNextHash(hash);
    const QList<QPair<int, QByteArray>> pending = {{2, P}, {0, E}};
    EXPECT_EQ(tree.getCurrentState(), pending);
    EXPECT_FALSE(tree.finished());
    tree.finish();
    tree.finish();
    EXPECT_TRUE(tree.finished());
    EXPECT_EQ(tree.getFinalHash(), md5(P + E));
}

TEST(LiveHashTree, ContinuesFromState)
{
    MD5LiveHashTree whole;
    MD5LiveHashTree continued;
    for (int i = 0; i < 70; ++i) {
        continued.setCurrentState(whole.getCurrentState());
        for (LiveHashTree* const tree : {static_cast<LiveHashTree*>(&whole), static_cast<LiveHashTree*>(&continued)})
            tree->addNextHash(leaf(i));
        ASSERT_EQ(continued.getCurrentState(), whole.getCurrentState()) << i;
    }
    const auto state = whole.getCurrentState();
    whole.finish();
    using State = decltype(state);
    for (const State& wrong : {State{{1, "a"}, {1, "b"}}, State{{0, "a"}, {1, "b"}}, State{{0, "a"}, {-1, "b"}}}) {
        EXPECT_THROW(continued.setCurrentState(wrong), Orv::Exception::Base) << wrong[1].first;
        EXPECT_EQ(continued.getCurrentState(), state) << "unchanged";
    }
    continued.finish();
    EXPECT_EQ(continued.getFinalHash(), whole.getFinalHash());
    continued.setCurrentState({});
    EXPECT_FALSE(continued.finished());
}

TEST(LiveHashTree, Misuse)
{
    MD5LiveHashTree tree;
    EXPECT_THAT([&] { tree.getFinalHash(); }, ThrowsMessage<Orv::Exception::Base>("Hash tree not finished."));

    LoggedLines logged;
    EXPECT_THAT([&] { tree.finish(); }, ThrowsMessage<Orv::Exception::Base>("Live hash tree calculation failed"));
    EXPECT_EQ(logged.take(), QStringList("error: LiveHashTree: Live hash tree calculation failed, size != 1, size: 0"));
    EXPECT_FALSE(tree.finished());

    tree.addNextHash("leaf");
    tree.finish();
    EXPECT_EQ(tree.getFinalHash(), QByteArray("leaf")) << "not hashed again";
    EXPECT_THAT([&] { tree.getCurrentState(); }, ThrowsMessage<Orv::Exception::Base>("No state for finished tree."));
    tree.reset();
    EXPECT_THAT([&] { tree.getFinalHash(); }, ThrowsMessage<Orv::Exception::Base>("Hash tree not finished."));
    EXPECT_TRUE(tree.getCurrentState().isEmpty());
}

TEST(LiveHashTreeNode, MergeAndText)
{
    MD5LiveHashTreeNode node(QByteArray::fromHex("01ab"));
    EXPECT_EQ(node.toString(), "Level: 0, hash: 01ab");
    node.promoteToLevel(4);
    node.merge(MD5LiveHashTreeNode("right"));
    EXPECT_EQ(node.level(), 5);
    EXPECT_EQ(node.hash(), md5(QByteArray::fromHex("01ab") + "right"));
}

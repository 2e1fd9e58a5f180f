#include <Orv/Utility/Ownership.h>

#include "Log/LoggedLines.h"
#include "PrivateMount.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <unistd.h>

using Orv::Utility::changeOwnershipForPath;

namespace {

constexpr uint Owner = 12345; // of the enclosing folder
constexpr uint Group = 23456;

QPair<uint, uint> ownersOf(const QString& path)
{
    const QFileInfo info(path);
    return {info.ownerId(), info.groupId()};
}

QString changeLine(const QString& path)
{
    return QStringLiteral("debug: Change owner for path: %1 owner: %2 group: %3").arg(path).arg(Owner).arg(Group);
}

/// A folder of another user with two folders and a file of ours, one in the other; a file with a name outside ASCII.
class OwnershipTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (::geteuid() != 0)
            GTEST_SKIP() << "only root can give files away";
        ASSERT_TRUE(QDir().mkpath(lower));
        ASSERT_TRUE(QFile(file).open(QIODevice::WriteOnly));
        ASSERT_EQ(::chown(QFile::encodeName(top), Owner, Group), 0);
    }

    QTemporaryDir m_folder;
    const QString top = m_folder.path() + QStringLiteral("/top");
    const QString upper = top + QStringLiteral("/upper");
    const QString lower = upper + QStringLiteral("/lower");
    const QString file = lower + QStringLiteral("/größe");
    const QString firstLine =
        QStringLiteral("debug: Ownere for path: %1 owner: %2 group: %3")
            .arg(file, QFileInfo(QStringLiteral("/")).owner(), QFileInfo(QStringLiteral("/")).group());
    const QString secondLine =
        QStringLiteral("debug: Change owner for full path: %1 owner: %2 group: %3").arg(file).arg(Owner).arg(Group);
    const QPair<uint, uint> ours = {0, 0};
    const QPair<uint, uint> theirs = {Owner, Group};
    LoggedLines logged;
};

} // namespace

TEST_F(OwnershipTest, FoldersAndFileFromTheTopOn)
{
    EXPECT_TRUE(changeOwnershipForPath(file));
    for (const QString& path : {upper, lower, file})
        EXPECT_EQ(ownersOf(path), theirs) << path;
    EXPECT_EQ(
        logged.take(), QStringList({firstLine, secondLine, changeLine(upper), changeLine(lower), changeLine(file)}));
    EXPECT_TRUE(changeOwnershipForPath(upper)) << "nothing left to do but for what is above";
}

TEST_F(OwnershipTest, NearestFolderDecides)
{
    ASSERT_EQ(::chown(QFile::encodeName(lower), Owner + 1, Group + 1), 0);
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(lower));
    EXPECT_TRUE(changeOwnershipForPath(QFileInfo(file).fileName())) << "a relative path";
    EXPECT_TRUE(QDir::setCurrent(before));
    EXPECT_EQ(ownersOf(file), qMakePair(Owner + 1, Group + 1));
    EXPECT_EQ(ownersOf(lower), qMakePair(Owner + 1, Group + 1));
    EXPECT_EQ(ownersOf(upper), ours);
}

TEST_F(OwnershipTest, OneOwnerUpToTheRoot)
{
    for (QFileInfo folder(m_folder.path()); !folder.isRoot(); folder.setFile(folder.path()))
        ASSERT_EQ(folder.ownerId(), 0u) << "this test needs a folder for temporary files that is root's";
    ASSERT_EQ(::chown(QFile::encodeName(top), 0, Group), 0);
    EXPECT_TRUE(changeOwnershipForPath(file));
    EXPECT_EQ(ownersOf(file), ours);
    EXPECT_EQ(ownersOf(top), qMakePair(0u, Group));
    EXPECT_EQ(logged.take(), QStringList(firstLine));
}

TEST_F(OwnershipTest, StopsAtTheFirstFailure)
{
    const PrivateMount readOnly(lower);
    if (!readOnly.reason().isNull())
        GTEST_SKIP() << readOnly.reason().toStdString();
    EXPECT_FALSE(changeOwnershipForPath(file));
    EXPECT_EQ(ownersOf(upper), theirs);
    EXPECT_EQ(ownersOf(lower), ours);
    EXPECT_EQ(ownersOf(file), ours);
    const QString failure = QStringLiteral("warning: Error on change owner for path: %1 message: %2")
                                .arg(lower, QString::fromLocal8Bit(std::strerror(EROFS)));
    EXPECT_EQ(logged.take(), QStringList({firstLine, secondLine, changeLine(upper), changeLine(lower), failure}));
}

TEST_F(OwnershipTest, PathWithAZero)
{
    EXPECT_FALSE(changeOwnershipForPath(file + QChar(0)));
    EXPECT_EQ(ownersOf(file), ours) << "which is not what was named";
}

TEST(Ownership, OrdinaryUserMayNot)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may";
    const QTemporaryDir folder;
    LoggedLines logged;
    // The folder for temporary files may belong to the user; the root does not.
    EXPECT_FALSE(changeOwnershipForPath(folder.path()));
    EXPECT_THAT(logged.take().join(QLatin1Char('\n')).toStdString(),
        testing::HasSubstr("\nwarning: Error on change owner for path: "));
    EXPECT_EQ(QFileInfo(folder.path()).ownerId(), ::geteuid());
}

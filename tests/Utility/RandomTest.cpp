#include <Orv/Utility/RandomByteArray.h>
#include <Orv/Utility/RandomString.h>

#include "Log/ChildProcess.h"
#include "Utility/NarrowDevice.h"

#include <QBuffer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include <sys/resource.h>

using Orv::Utitlity::RandomByteArray;
using Orv::Utitlity::RandomString;

TEST(RandomByteArray, Appends)
{
    QByteArray bytes = "before";
    EXPECT_TRUE(RandomByteArray::generate(bytes, 0));
    EXPECT_EQ(bytes, "before");
    EXPECT_TRUE(RandomByteArray::generate(bytes, 1300));
    EXPECT_EQ(bytes.size(), 6 + 1300);
    EXPECT_TRUE(bytes.startsWith("before"));
    const std::set<char> different(bytes.begin() + 6, bytes.end());
    EXPECT_GT(different.size(), 200u) << "of 256";
    EXPECT_NE(bytes.mid(6, 512), bytes.mid(6 + 512, 512));
}

TEST(RandomByteArray, WritesInPortions)
{
    NarrowDevice wide(QIODevice::WriteOnly);
    EXPECT_TRUE(RandomByteArray::generate(wide, 1300));
    EXPECT_THAT(wide.requests, testing::ElementsAre(512, 512, 276));

    NarrowDevice narrow(QIODevice::WriteOnly);
    narrow.room = 600;
    EXPECT_FALSE(RandomByteArray::generate(narrow, 1300));
    EXPECT_THAT(narrow.requests, testing::ElementsAre(512, 512)) << "nothing after a short write";

    NarrowDevice readOnly(QIODevice::ReadOnly);
    EXPECT_FALSE(RandomByteArray::generate(readOnly, 0));
    EXPECT_THAT(readOnly.requests, testing::IsEmpty());
}

TEST(RandomByteArray, NoDescriptorLeft)
{
    expectInChild([] {
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit none{0, limit.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
        QByteArray bytes = "before";
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const bool failed = !RandomByteArray::generate(bytes, 10) && !RandomByteArray::generate(buffer, 10);
        ::setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_TRUE(failed && bytes == "before" && buffer.data().isEmpty());
    });
}

TEST(RandomString, LengthAndLetters)
{
    EXPECT_TRUE(RandomString::generateSimple(0).isEmpty());
    EXPECT_TRUE(RandomString::generateSimple(-1).isEmpty());
    const QString text = RandomString::generateSimple(5000);
    EXPECT_EQ(text.size(), 5000);
    const std::set<QChar> letters(text.begin(), text.end());
    EXPECT_EQ(letters.size(), 62u) << "all of them";
    for (const QChar letter : letters)
        EXPECT_TRUE(letter.unicode() < 128 && letter.isLetterOrNumber());
}

TEST(RandomString, FollowsTheSeededSequence)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    qsrand(7);
    const QString first = RandomString::generateSimple(20);
    qsrand(7);
    const int index = qrand() % 62;
    qsrand(7);
    QT_WARNING_POP
    EXPECT_EQ(RandomString::generateSimple(20), first);
    EXPECT_EQ(first[0], QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789")[index]);
}

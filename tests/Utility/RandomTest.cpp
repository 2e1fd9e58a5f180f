#include <Orv/Utility/RandomByteArray.h>
#include <Orv/Utility/RandomString.h>

#include "Log/ChildProcess.h"
#include "PrivateMount.h"
#include "Utility/ChunkedDevice.h"

#include <gmock/gmock.h>

#include <cstdlib>
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

TEST(RandomByteArray, WritesInChunks)
{
    ChunkedDevice wide(QIODevice::WriteOnly);
    EXPECT_TRUE(RandomByteArray::generate(wide, 1300));
    EXPECT_THAT(wide.requests, testing::ElementsAre(512, 512, 276));

    ChunkedDevice narrow(QIODevice::WriteOnly);
    narrow.limit = 600;
    EXPECT_FALSE(RandomByteArray::generate(narrow, 1300));
    EXPECT_THAT(narrow.requests, testing::ElementsAre(512, 512)) << "stops after a short write";

    ChunkedDevice readOnly(QIODevice::ReadOnly);
    EXPECT_FALSE(RandomByteArray::generate(readOnly, 0));
    EXPECT_THAT(readOnly.requests, testing::IsEmpty());
}

TEST(RandomByteArray, DescriptorLimit)
{
    expectInChild([] {
        const rlimit few{64, 64};
        const rlimit none{0, 64};
        QByteArray bytes;
        ChunkedDevice device(QIODevice::WriteOnly);
        ::setrlimit(RLIMIT_NOFILE, &few);
        for (int i = 0; i < 100; ++i)
            ASSERT_TRUE(RandomByteArray::generate(bytes, 1)) << "each call closes its descriptor, " << i;
        ::setrlimit(RLIMIT_NOFILE, &none);
        EXPECT_FALSE(RandomByteArray::generate(bytes, 10));
        EXPECT_FALSE(RandomByteArray::generate(device, 10));
        ::setrlimit(RLIMIT_NOFILE, &few); // sanitizers open files at exit
        EXPECT_EQ(bytes.size() + device.content.size(), 100);
    });
}

TEST(RandomByteArray, EmptyDevice)
{
    const PrivateMount mount(1 << 20, "tmpfs"); // creates a private mount namespace
    if (!mount.reason().isNull())
        GTEST_SKIP() << mount.reason().toStdString();
    ASSERT_EQ(std::system("mount --bind /dev/null /dev/urandom"), 0);
    QByteArray bytes = "before";
    ChunkedDevice device(QIODevice::WriteOnly);
    EXPECT_FALSE(RandomByteArray::generate(bytes, 1300) || RandomByteArray::generate(device, 1300));
    EXPECT_EQ(bytes + device.content, "before");
    EXPECT_EQ(std::system("umount /dev/urandom"), 0);
}

TEST(RandomString, LengthAndLetters)
{
    EXPECT_TRUE(RandomString::generateSimple(0).isEmpty());
    EXPECT_TRUE(RandomString::generateSimple(-1).isEmpty());
    const QString text = RandomString::generateSimple(5000);
    EXPECT_EQ(text.size(), 5000);
    EXPECT_NE(RandomString::generateSimple(5000), text);
    const std::set<QChar> letters(text.begin(), text.end());
    EXPECT_EQ(letters.size(), 62U) << "all of them";
    for (const QChar letter : letters)
        EXPECT_TRUE(letter.unicode() < 128 && letter.isLetterOrNumber());
}

#include <Orv/Utility/Preallocate.h>

#include "Log/LoggedLines.h"
#include "PrivateMount.h"

#include <QTemporaryFile>

#include <sys/stat.h>

using Orv::Utility::preallocateFile;

namespace {

constexpr quint64 MiB = 1024 * 1024;

quint64 reservedBytes(const QFile& file)
{
    struct stat status = {};
    EXPECT_EQ(::fstat(file.handle(), &status), 0);
    return quint64(status.st_blocks) * 512;
}

class PreallocateTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        if (!m_mount.reason().isNull())
            GTEST_SKIP() << m_mount.reason().toStdString();
        ASSERT_TRUE(m_file.open(QIODevice::ReadWrite));
    }

    PrivateMount m_mount{qint64(16 * MiB), GetParam()};
    QFile m_file{m_mount.path() + QStringLiteral("/file")}; // closed before the unmount
    LoggedLines logged;
};

} // namespace

TEST_P(PreallocateTest, ReservesBehindThePhysicalEnd)
{
    ASSERT_TRUE(m_file.write("12345") == 5 && m_file.flush());
    for (const quint64 calls : {1, 2}) { // the second call reserves after the first reservation
        EXPECT_TRUE(preallocateFile(m_file.handle(), MiB));
        EXPECT_GE(reservedBytes(m_file), calls * MiB);
    }
    ASSERT_TRUE(m_file.seek(3 * MiB) && m_file.write(QByteArray(MiB, 'x')) == qint64(MiB) && m_file.flush());
    const quint64 before = reservedBytes(m_file);
    ASSERT_LT(before, 4 * MiB) << "the file has no hole";
    EXPECT_TRUE(preallocateFile(m_file.handle(), MiB));
    EXPECT_GE(reservedBytes(m_file), before + MiB) << "after the end, not in allocated space";
    EXPECT_EQ(m_file.size(), qint64(4 * MiB));
    EXPECT_EQ(logged.take(), QStringList());
}

TEST_P(PreallocateTest, ReservesWhatIsWritten)
{
    // An attribute in its own block, such as an ACL, is not part of the file's data.
    if (!PrivateMount::addLargeAttribute(m_file))
        GTEST_SKIP() << "no extended attributes on this file system";
    ASSERT_TRUE(preallocateFile(m_file.handle(), MiB));
    const quint64 before = reservedBytes(m_file);
    ASSERT_TRUE(m_file.write(QByteArray(MiB, 'x')) == qint64(MiB) && m_file.flush() && ::fsync(m_file.handle()) == 0);
    EXPECT_EQ(reservedBytes(m_file), before);
}

TEST_P(PreallocateTest, NoSpace)
{
    ASSERT_TRUE(m_file.write("12345") == 5 && m_file.flush());
    for (const quint64 size : {32 * MiB, quint64(1) << 62, ~quint64(0)}) {
        EXPECT_FALSE(preallocateFile(m_file.handle(), size)) << size;
        EXPECT_LT(reservedBytes(m_file), MiB) << "nothing reserved";
    }
    EXPECT_EQ(m_file.size(), 5);
    EXPECT_EQ(logged.take(), QStringList());
}

TEST_P(PreallocateTest, QuotaUsedUp)
{
    PrivateMount::useUpQuota();
    EXPECT_FALSE(preallocateFile(m_file.handle(), 8 * MiB));
    EXPECT_EQ(reservedBytes(m_file), 0) << "nothing reserved";
}

INSTANTIATE_TEST_SUITE_P(FileSystems, PreallocateTest, testing::Values("tmpfs", "ext4"));

TEST(Preallocate, AnyFileSystem)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open() && file.write("12345") == 5 && file.flush());
    EXPECT_TRUE(preallocateFile(file.handle(), MiB));
    EXPECT_TRUE(preallocateFile(file.handle(), 0));
    EXPECT_EQ(file.size(), 5);

    const LoggedLines logged;
    QFile readOnly(file.fileName());
    ASSERT_TRUE(readOnly.open(QIODevice::ReadOnly));
    EXPECT_FALSE(preallocateFile(readOnly.handle(), MiB));
    EXPECT_FALSE(preallocateFile(-1, MiB));
    EXPECT_FALSE(preallocateFile(-1, 0));
}

TEST(Preallocate, UnsupportedFileSystem)
{
    QFile file(QStringLiteral("/proc/self/comm"));
    if (!file.open(QIODevice::ReadWrite))
        GTEST_SKIP() << "no known file on a file system without support";
    LoggedLines logged;
    const QString warning = QStringLiteral("warning: Operation file prealocate not supported for this filesystem");
    EXPECT_TRUE(preallocateFile(file.handle(), MiB));
    EXPECT_EQ(logged.take(), QStringList(warning));
    EXPECT_TRUE(preallocateFile(file.handle(), MiB));
    EXPECT_EQ(logged.take(), QStringList(warning)) << "each time";
}

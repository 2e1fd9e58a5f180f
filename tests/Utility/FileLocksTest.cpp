#include "Utility/FileLocks_p.h"

#include "KnownAnswers.h"
#include "Log/ChildProcess.h"

#include <QTemporaryFile>

#include <memory>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

namespace {

bool lists(std::string table, quint64 inode)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        ::fmemopen(table.data(), table.size(), "r"), std::fclose);
    return listsWriteLock(file.get(), inode);
}

} // namespace

TEST(FileLocks, Fields)
{
    for (const KnownAnswer& row : tableOfAnswers("lockfields.txt")) {
        SCOPED_TRACE(row["row"].constData());
        QByteArray line = QByteArray::fromPercentEncoding(row["line"]);
        const int max = row["max"].toInt();
        std::vector<char*> fields(size_t(max) + 1, line.data());
        EXPECT_EQ(get_fields(line.data(), fields.data(), static_cast<unsigned char>(max)), row["count"].toUInt());
        EXPECT_EQ(fields[size_t(max)], line.data()) << "past the end";
        QByteArray joined;
        for (int i = 0; i < max && fields[size_t(i)]; ++i)
            joined += '(' + QByteArray(fields[size_t(i)]) + ')';
        EXPECT_EQ(joined, row["fields"]);
    }
}

TEST(FileLocks, Table)
{
    for (const KnownAnswer& row : tableOfAnswers("locks.txt")) {
        const std::string line = row["line"].toStdString();
        EXPECT_EQ(lists(line + '\n', 77), row["counts"] == "yes") << line;
        EXPECT_TRUE(lists(line + "\n2: POSIX ADVISORY WRITE 1 fd:00:77 0 0\n", 77)) << line;
    }
    EXPECT_TRUE(lists("1: POSIX ADVISORY WRITE 1 0:0:18446744073709551615 0 EOF", ~quint64(0)));

    // A long line is read in several parts.
    const std::string tail = "1: POSIX ADVISORY WRITE 1 fd:00:77 0 EOF\n";
    EXPECT_TRUE(lists(std::string(511, 'x') + tail, 77));
    EXPECT_FALSE(lists(std::string(504, 'x') + tail, 77)) << "its first fields belong to the previous part";
    EXPECT_TRUE(lists(std::string(5 * 511, ' ') + tail, 77));
}

TEST(FileLocks, LocksOfAFile)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    const QByteArray name = QFile::encodeName(file.fileName());
    struct stat status = {};
    ASSERT_EQ(::stat(name, &status), 0);
    for (const int lock : {LOCK_UN, LOCK_EX, LOCK_SH}) {
        ASSERT_EQ(::flock(file.handle(), lock), 0);
        if (lock == LOCK_EX && !contentOf("/proc/locks").contains(QByteArray::number(quint64(status.st_ino))))
            GTEST_SKIP() << "this system does not list locks";
        EXPECT_EQ(file_wr_check_name(name), lock == LOCK_EX ? 1 : 0) << lock;
        EXPECT_EQ(file_wr_check_ino(status.st_ino), lock == LOCK_EX ? 1 : 0) << lock;
    }
}

TEST(FileLocks, Failures)
{
    EXPECT_EQ(file_wr_check_name("/nowhere/at/all"), -1);
    EXPECT_EQ(file_wr_check_name(nullptr), -1);
    expectInChild([] {
        const rlimit few{64, 64};
        const rlimit none{0, 64};
        ::setrlimit(RLIMIT_NOFILE, &none);
        EXPECT_EQ(file_wr_check_ino(1), -2) << "no free descriptor";
        ::setrlimit(RLIMIT_NOFILE, &few); // sanitizers open files at exit
    });
}

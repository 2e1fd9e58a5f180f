#include "Utility/FileLocks_p.h"

#include "KnownAnswers.h"
#include "Log/ChildProcess.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace {

std::vector<std::string> fieldsOf(std::string line, unsigned char max)
{
    std::vector<char*> fields(max + 1u, line.data());
    const unsigned count = get_fields(line.data(), fields.data(), max);
    for (unsigned i = count; i < max; ++i)
        EXPECT_EQ(fields[i], nullptr);
    EXPECT_EQ(fields[max], line.data()) << "past the end";
    return std::vector<std::string>(fields.begin(), fields.begin() + count);
}

bool lists(std::string table, quint64 inode)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        ::fmemopen(table.data(), table.size(), "r"), std::fclose);
    return listsWriteLock(file.get(), inode);
}

/// A process that locks a file, or waits until it can, and stays until it is ended.
pid_t startLocker(const QByteArray& path, short type)
{
    const pid_t process = ::fork();
    if (process != 0)
        return process;
    struct flock lock = {};
    lock.l_type = type;
    ::fcntl(::open(path, O_RDWR), F_SETLKW, &lock);
    ::pause();
    ::_exit(0);
}

/// Waits until the kernel lists the process. False if it never does: some sandboxes keep a list that is always empty.
bool isListed(pid_t process)
{
    const QByteArray number = ' ' + QByteArray::number(process) + ' ';
    for (int i = 0; i < 3000 && !contentOf(QStringLiteral("/proc/locks")).contains(number); ++i)
        ::usleep(1000);
    return contentOf(QStringLiteral("/proc/locks")).contains(number);
}

} // namespace

TEST(FileLocks, Fields)
{
    struct Row {
        const char* line;
        unsigned char max;
        std::vector<std::string> fields;
    };
    const Row rows[] = {{"a b c", 2, {"a", "b"}}, {"a b c", 0, {}}, {"", 3, {}}, {" \ta\t\n b", 3, {"a", "b"}},
        {"a::b", 4, {"a", "", "b"}}, {":a", 4, {"", "a"}}, {"a:", 4, {"a"}}, {"a: :b", 4, {"a", "", "b"}}};
    for (const Row& row : rows)
        EXPECT_EQ(fieldsOf(row.line, row.max), row.fields) << row.line;
}

TEST(FileLocks, Table)
{
    for (const KnownAnswer& row : tableOfAnswers("locks.txt")) {
        const std::string line = row["line"].toStdString();
        EXPECT_EQ(lists(line + '\n', 77), row["counts"] == "yes") << line;
        EXPECT_TRUE(lists(line + "\n2: POSIX ADVISORY WRITE 1 fd:00:77 0 0\n", 77)) << line;
    }
    EXPECT_TRUE(lists("1: POSIX ADVISORY WRITE 1 0:0:18446744073709551615 0 EOF", ~quint64(0)));
}

TEST(FileLocks, LongLineIsReadInPieces)
{
    const std::string tail = "1: POSIX ADVISORY WRITE 1 fd:00:77 0 EOF\n";
    EXPECT_TRUE(lists(std::string(511, 'x') + tail, 77));
    EXPECT_FALSE(lists(std::string(504, 'x') + tail, 77)) << "its first fields belong to the piece before";
    EXPECT_TRUE(lists(std::string(5 * 511, ' ') + tail, 77));
}

TEST(FileLocks, LocksOfOtherProcesses)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    const QByteArray name = QFile::encodeName(file.fileName());
    struct stat status = {};
    ASSERT_EQ(::stat(name, &status), 0);
    const std::vector<short> rows[] = {{}, {F_WRLCK}, {F_RDLCK}, {F_RDLCK, F_WRLCK}}; // in the last, one waits
    for (const std::vector<short>& types : rows) {
        std::vector<pid_t> lockers;
        bool areListed = true;
        for (const short type : types) {
            lockers.push_back(startLocker(name, type));
            areListed = areListed && isListed(lockers.back());
        }
        const int expected = types == std::vector<short>{F_WRLCK} ? 1 : 0;
        if (areListed) {
            EXPECT_EQ(file_wr_check_name(name), expected) << types.size();
            EXPECT_EQ(file_wr_check_ino(status.st_ino), expected) << types.size();
        }
        for (const pid_t locker : lockers) {
            ::kill(locker, SIGKILL);
            ::waitpid(locker, nullptr, 0);
        }
        if (!areListed)
            GTEST_SKIP() << "this system lists no locks";
    }
}

TEST(FileLocks, MissingFile)
{
    EXPECT_EQ(file_wr_check_name("/nowhere/at/all"), -1);
    EXPECT_EQ(file_wr_check_name(nullptr), -1);
}

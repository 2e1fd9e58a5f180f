#include "Utility/FileLocks_p.h"

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

/// A process that has a lock on a file, or waits for one, until it is told to end.
class Locker {
public:
    Locker(const QString& path, short type, bool hasToWait = false)
    {
        int ready[2];
        EXPECT_EQ(::pipe(ready), 0);
        m_process = ::fork();
        if (m_process == 0)
            lockAndSleep(path, type, hasToWait, ready[1]);
        ::close(ready[1]);
        char byte = 0;
        EXPECT_EQ(::read(ready[0], &byte, 1), 1);
        ::close(ready[0]);
    }
    ~Locker()
    {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    Locker(const Locker&) = delete;
    Locker& operator=(const Locker&) = delete;

    pid_t process() const { return m_process; }

private:
    [[noreturn]] static void lockAndSleep(const QString& path, short type, bool hasToWait, int ready)
    {
        const int file = ::open(QFile::encodeName(path).constData(), O_RDWR);
        struct flock lock = {};
        lock.l_type = type;
        lock.l_whence = SEEK_SET;
        if (hasToWait)
            (void)!::write(ready, "", 1);
        if (::fcntl(file, F_SETLKW, &lock) == 0)
            (void)!::write(ready, "", 1);
        ::pause();
        ::_exit(0);
    }

    pid_t m_process = -1;
};

/// Whether the kernel lists a lock that the process waits for. A process comes to wait only after it has said so.
bool isWaiting(pid_t process)
{
    const QByteArray table = contentOf(QStringLiteral("/proc/locks"));
    for (const QByteArray& line : table.split('\n')) {
        const std::vector<std::string> fields = fieldsOf(line.toStdString(), 10);
        if (fields.size() > 5 && fields[1] == "->" && fields[5] == std::to_string(process))
            return true;
    }
    return false;
}

class LockedFile : public testing::Test {
protected:
    void SetUp() override
    {
        if (!QFile::exists(QStringLiteral("/proc/locks")))
            GTEST_SKIP() << "this system has no list of locks";
        ASSERT_TRUE(m_file.open());
        m_name = QFile::encodeName(m_file.fileName());
        { // some sandboxes keep a list that is always empty
            const Locker locker(m_file.fileName(), F_WRLCK);
            if (!contentOf(QStringLiteral("/proc/locks")).contains(QByteArray::number(locker.process())))
                GTEST_SKIP() << "this system lists no locks";
        }
    }

    QTemporaryFile m_file;
    QByteArray m_name;
};

} // namespace

TEST(FileLocks, Fields)
{
    using Fields = std::vector<std::string>;
    struct Row {
        const char* line;
        unsigned char max;
        Fields fields;
    };
    const Row rows[] = {
        {"1: POSIX  ADVISORY  WRITE 3568 fd:00:2531452 0 EOF\n", 10,
            {"1", "POSIX", "ADVISORY", "WRITE", "3568", "fd", "00", "2531452", "0", "EOF"}},
        {"1: -> POSIX  ADVISORY", 10, {"1", "->", "POSIX", "ADVISORY"}},
        {"a b c", 2, {"a", "b"}},
        {"a b c", 0, {}},
        {"", 3, {}},
        {" \t\n", 3, {}},
        {" \ta\t\n b", 3, {"a", "b"}},
        {"a::b", 4, {"a", "", "b"}},
        {":a", 4, {"", "a"}},
        {"a:", 4, {"a"}},
        {"a: :b", 4, {"a", "", "b"}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(fieldsOf(row.line, row.max), row.fields) << row.line;
}

TEST(FileLocks, Table)
{
    struct Row {
        const char* line;
        bool counts;
    };
    const Row rows[] = {
        {"1: POSIX  ADVISORY  WRITE 3568 fd:00:77 0 EOF\n", true},
        {"1: FLOCK  ADVISORY  WRITE 3568 08:01:77 0 EOF\n", true},
        {"1: POSIX  ADVISORY  WRITE 3568 fd:00:77", true},
        {"1: POSIX  ADVISORY  READ  3568 fd:00:77 0 EOF\n", false},
        {"1: POSIX  ADVISORY  WRITE 3568 fd:00:770 0 EOF\n", false},
        {"1: POSIX  ADVISORY  WRITE 77 fd:77:1 77 77\n", false},
        {"1: -> POSIX  ADVISORY  WRITE 3568 fd:00:77 0 EOF\n", false},
        {"1: -> ADVISORY  WRITE 3568 fd:00:77 0 EOF\n", false},
        {"1: POSIX  ADVISORY  WRITE 3568 fd:00\n", false},
        {"\n", false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(lists(row.line, 77), row.counts) << row.line;
        EXPECT_TRUE(lists(row.line + std::string("\n2: POSIX ADVISORY WRITE 1 fd:00:77 0 0\n"), 77)) << row.line;
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

TEST_F(LockedFile, WriteLock)
{
    struct stat status = {};
    ASSERT_EQ(::stat(m_name, &status), 0);
    EXPECT_EQ(file_wr_check_name(m_name), 0);
    {
        const Locker writer(m_file.fileName(), F_WRLCK);
        EXPECT_EQ(file_wr_check_name(m_name), 1);
        EXPECT_EQ(file_wr_check_ino(status.st_ino), 1);
    }
    EXPECT_EQ(file_wr_check_ino(status.st_ino), 0);
}

TEST_F(LockedFile, ReadLockAndOneThatWaits)
{
    const Locker reader(m_file.fileName(), F_RDLCK);
    EXPECT_EQ(file_wr_check_name(m_name), 0);
    const Locker waiter(m_file.fileName(), F_WRLCK, true);
    for (int i = 0; i < 6000 && !isWaiting(waiter.process()); ++i)
        ::usleep(10000);
    ASSERT_TRUE(isWaiting(waiter.process()));
    EXPECT_EQ(file_wr_check_name(m_name), 0);
}

TEST(FileLocks, MissingFile)
{
    EXPECT_EQ(file_wr_check_name("/nowhere/at/all"), -1);
    EXPECT_EQ(file_wr_check_name(nullptr), -1);
}

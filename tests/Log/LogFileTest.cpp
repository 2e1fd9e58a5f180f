#include "Log/LogFile_p.h"

#include "Log/LogTest.h"

#include <Orv/Log/LogRollout.h>

#include <QDateTime>
#include <QScopeGuard>

#include <sys/resource.h>

namespace {

class LogFileTest : public LogTest {
protected:
    std::string path(const char* name) const { return LogTest::path(name).toStdString(); }

    /// The contents of the files in a directory: rotated files, the oldest first, then the current one.
    std::vector<std::string> contents(const char* name = ".") const
    {
        const QDir directory(LogTest::path(name));
        std::vector<std::string> result;
        for (const QString& file : directory.entryList(QDir::Files, QDir::Name))
            result.push_back(contentOf(directory.filePath(file)).toStdString());
        std::rotate(result.begin(), result.begin() + (result.empty() ? 0 : 1), result.end()); // "log." before "log_"
        return result;
    }

    void clear() const
    {
        QDir(m_directory.path()).removeRecursively();
        QDir().mkpath(m_directory.path());
    }
};

constexpr std::size_t MaxSize = 10;

/// The flags of the only descriptor that the process has for a file.
std::string flagsOf(const std::string& path)
{
    struct stat file { };
    struct stat opened { };
    ::stat(path.c_str(), &file);
    std::string flags;
    for (int descriptor = 0; descriptor < 100; ++descriptor) {
        if (::fstat(descriptor, &opened) == 0 && opened.st_ino == file.st_ino && opened.st_dev == file.st_dev) {
            flags += (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) ? "close-on-exec" : "inherited";
            flags += (::fcntl(descriptor, F_GETFL) & O_APPEND) ? " append" : " write";
        }
    }
    return flags;
}

void limitFileSize(rlim_t size)
{
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = size;
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

TEST_F(LogFileTest, RotatedNames)
{
    const auto time = [](int seconds) {
        return QDateTime::currentDateTime().addSecs(seconds).toString(QStringLiteral("yyyyMMddhhmmss")).toStdString();
    };
    const auto back = qScopeGuard([path = QDir::currentPath()] { QDir::setCurrent(path); });
    const std::pair<const char*, std::string> rows[] = {
        {"log_A.log", "log_A_"}, {"log_A.text", "log_A._"}, {"gr\u00f6\u00dfe.log", "gr\u00f6\u00dfe_"}, {"abc", "_"}};
    for (const auto& [before, prefix] : rows) {
        clear();
        QDir::setCurrent(m_directory.path());
        writeFile(QString::fromUtf8(before), "content");
        const std::string earliest = prefix + time(0) + ".log";
        logsRollout(before, 0);
        const std::string latest = prefix + time(0) + ".log";
        const std::string name = QDir().entryList(QDir::Files | QDir::Hidden).join('|').toStdString();
        EXPECT_TRUE(earliest <= name && name <= latest) << name;
    }
    writeFile(QStringLiteral("log.log"), "content");
    for (int second = 0; second < 60; ++second) // the new name is taken, whatever the current second
        writeFile(QString::fromStdString("log_" + time(second) + ".log"), "older");
    logsRollout("log.log", 0);
    logsRollout("none.log", 0);
    EXPECT_EQ(contentOf(QStringLiteral("log.log")), "content");
    EXPECT_EQ(QDir().entryList(QDir::Files).size(), 62);
}

TEST_F(LogFileTest, RotatedAfterTheEntryThatFillsIt)
{
    using Texts = std::vector<std::string>;
    const std::tuple<const char*, Texts, Texts> rows[] = {{"", {"12345678\n"}, {"12345678\n"}},
        {"", {"123456789\n"}, {"123456789\n", ""}}, {"", {"a long entry\n", "b\n"}, {"a long entry\n", "b\n"}},
        {"whole\n", {"b\n"}, {"whole\nb\n"}}, {"cut", {"b\n"}, {"cut\nb\n"}},
        {"full from before", {}, {"full from before", ""}}};
    for (const auto& [before, entries, after] : rows) {
        clear();
        writeFile(LogTest::path("log.log"), before);
        LogFile log(path("log.log"), MaxSize);
        for (const std::string& entry : entries)
            log.append(entry);
        EXPECT_EQ(contents(), after);
        EXPECT_EQ(flagsOf(path("log.log")), "close-on-exec append");
    }
}

TEST_F(LogFileTest, ReopensTheFile)
{
    writeFile(LogTest::path("directory"), {}); // a regular file instead of the directory blocks root too
    LogFile log(path("directory/log.log"), MaxSize);
    log.append("lost\n");
    EXPECT_EQ(::unlink(path("directory").c_str()), 0);
    log.append("kept\n");
    EXPECT_THAT(contents("directory"), ElementsAre("kept\n"));
    QDir(LogTest::path("directory")).removeRecursively();
    log.append("in the deleted file\n");
    log.append("last\n");
    EXPECT_THAT(contents("directory"), ElementsAre("last\n"));

    EXPECT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    LogFile(path("pipe"), MaxSize).append("nobody reads this\n"); // must not block
}

TEST_F(LogFileTest, GrowsWhileTheRenameFails)
{
    LogFile log(path("log.log"), MaxSize);
    log.append("first\n");
    if (::geteuid() == 0) { // permissions do not apply to root
        EXPECT_EQ(::chown(path("").c_str(), 65534, 65534) + ::chown(path("log.log").c_str(), 65534, 65534), 0);
        EXPECT_EQ(::seteuid(65534), 0);
    }
    ::chmod(path("").c_str(), 0500);
    log.append("second\n");
    log.append("third\n");
    EXPECT_THAT(contents(), ElementsAre("first\nsecond\nthird\n"));
    ::chmod(path("").c_str(), 0700);
    log.append("last\n");
    EXPECT_THAT(contents(), ElementsAre("first\nsecond\nthird\n", "last\n"));
    EXPECT_EQ(::seteuid(::getuid()), 0);
}

TEST_F(LogFileTest, EntryAfterAFullDiskStartsANewLine)
{
    { // opened first without and then with a limit, whose signal must not end the process
        LogFile log(path("log.log"), 0);
        log.append("before\n");
    }
    limitFileSize(9);
    LogFile log(path("log.log"), 0);
    for (int i = 0; i < 100; ++i)
        log.append("lost\n");
    limitFileSize(RLIM_INFINITY);
    log.append("after\n");
    log.append("last\n");
    EXPECT_THAT(contents(), ElementsAre("before\nlo\nafter\nlast\n"));
}

#include "Log/LogTest.h"

#include <Orv/Log/MessageHandlers.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <new>
#include <stdexcept>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using LogFileTest = LogTest;

const QByteArray FullLog(2097152, 'x');
const QString Folder = QStringLiteral("folder");

std::atomic<int> largeAllocationsLeft{-1}; // before one of them fails; negative: none does

struct ThrowingBuffer : std::streambuf {
    int overflow(int) override { throw std::runtime_error("no output"); }
};

/// The flags of the descriptors that the process has of a file.
std::string flagsOf(const QString& path)
{
    struct stat file { };
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &file), 0);
    std::string flags;
    for (int descriptor = 0; descriptor < 100; ++descriptor) {
        struct stat opened { };
        if (::fstat(descriptor, &opened) != 0 || opened.st_ino != file.st_ino || opened.st_dev != file.st_dev)
            continue;
        flags += (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) ? "close-on-exec" : "inherited";
        flags += (::fcntl(descriptor, F_GETFL) & O_APPEND) ? ", append " : ", where it is ";
    }
    return flags;
}

void limitFileSize(rlim_t size)
{
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(size, limit.rlim_max);
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

void* operator new(std::size_t size)
{
    if (size > 100000 && largeAllocationsLeft >= 0 && largeAllocationsLeft-- == 0)
        throw std::bad_alloc();
    if (void* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

TEST_F(LogFileTest, EntryThatFillsTheLogIsTheLastInIt)
{
    for (const int size : {FullLog.size(), 3000}) {
        const QByteArray text = FullLog.left(size);
        expectInChild([&] {
            manager().init();
            EXPECT_EQ(flagsOf(log()), "close-on-exec, append ");
            for (qint64 written = 0; written < FullLog.size(); written += size) {
                qInfo("%s", text.constData());
                ASSERT_LT(QFileInfo(log()).size(), FullLog.size()) << "not rotated at once";
            }
            EXPECT_EQ(flagsOf(log()), "close-on-exec, append ");
        });
        ASSERT_EQ(rotated().size(), 1);
        const QString old = rotated().first();
        EXPECT_TRUE(QRegularExpression(QStringLiteral("/log_DOV_LOG_\\d{14}\\.log$")).match(old).hasMatch());
        EXPECT_GE(QFileInfo(old).size(), FullLog.size());
        EXPECT_THAT(entries(old), testing::Each("[INFO]: " + text.toStdString()));
        QFile::remove(old);
    }
}

TEST_F(LogFileTest, LogFromBeforeIsContinuedOrRotated)
{
    const std::pair<QByteArray, Lines> rows[] = {
        {"whole\n", {"whole", "[INFO]: new"}}, {"cut", {"cut", "[INFO]: new"}}, {FullLog, {"[INFO]: new"}}};
    for (const auto& [before, after] : rows) {
        writeFile(log(), before);
        expectInChild([&] {
            manager().init();
            qInfo("new");
            manager().reconfigure();
        });
        EXPECT_EQ(entries(log()), after);
    }
    ASSERT_EQ(rotated().size(), 1);
    EXPECT_EQ(contentOf(rotated().first()), FullLog);
}

TEST_F(LogFileTest, FullLogSurvivesUntilItsFolderIsBack)
{
    const QString away = path(QStringLiteral("away"));
    ASSERT_TRUE(QDir().mkpath(away));
    writeFile(log(QStringLiteral("away")), FullLog);
    expectInChild([&] {
        writeFile(path(Folder), {}); // in the place of the folder, where not even root can make anything then
        managerWithShadow(Folder).init();
        inThreads(4, [](int) { qInfo("lost"); });
        EXPECT_TRUE(QFile::remove(path(Folder)) && QFile::rename(away, path(Folder)));
        qInfo("written");
    });
    EXPECT_THAT(entries(log(Folder)), ElementsAre("[INFO]: written"));
    EXPECT_THAT(entries(shadow()),
        ElementsAre("[INFO]: lost", "[INFO]: lost", "[INFO]: lost", "[INFO]: lost", "[INFO]: written"));
    ASSERT_EQ(rotated(Folder).size(), 1);
    EXPECT_EQ(contentOf(rotated(Folder).first()), FullLog);
}

TEST_F(LogFileTest, FolderThatIsGoneWhenTheLogIsFullIsMadeAgain)
{
    expectInChild([&] {
        manager(Folder).init();
        qInfo("first");
        QDir(path(Folder)).removeRecursively();
        qInfo("%s", FullLog.constData());
        qInfo("last");
    });
    EXPECT_THAT(entries(log(Folder)), ElementsAre("[INFO]: last"));
}

TEST_F(LogFileTest, FullLogGrowsAsLongAsItsFolderRefuses)
{
    expectInChild([&] {
        manager(Folder).init();
        qInfo("first");
        for (const QString& place : {path(Folder), log(Folder), m_folder.path()}) // root would not be refused
            EXPECT_TRUE(::geteuid() != 0 || ::chown(QFile::encodeName(place).constData(), 65534, 65534) == 0);
        EXPECT_TRUE(::geteuid() != 0 || ::seteuid(65534) == 0);
        ::chmod(QFile::encodeName(path(Folder)).constData(), 0500);
        qInfo("%s", FullLog.constData());
        qInfo("second");
        EXPECT_EQ(QDir(path(Folder)).entryList(QDir::Files).size(), 1);
        ::chmod(QFile::encodeName(path(Folder)).constData(), 0700);
        qInfo("last");
    });
    ASSERT_EQ(rotated(Folder).size(), 1);
    EXPECT_THAT(entries(rotated(Folder).first()),
        ElementsAre("[INFO]: first", "[INFO]: " + FullLog.toStdString(), "[INFO]: second"));
    EXPECT_THAT(entries(log(Folder)), ElementsAre("[INFO]: last"));
}

TEST_F(LogFileTest, EntryAfterAFullDiskBeginsALine)
{
    EXPECT_THAT(logged([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        manager().init();
        qInfo("before");
        limitFileSize(rlim_t(QFileInfo(log()).size()) + 36); // in the middle of the next entry
        for (int i = 0; i < 100; ++i)
            qInfo("lost");
        limitFileSize(RLIM_INFINITY);
        qInfo("after");
        qInfo("last");
    }),
        ElementsAre("[INFO]: before", "[INFO]: l", "[INFO]: after", "[INFO]: last"));
    EXPECT_EQ(rotated().size(), 0);
}

TEST_F(LogFileTest, PipeThatNobodyReadsHoldsUpNothing)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(log()).constData(), 0600), 0);
    expectInChild([&] {
        managerWithShadow().init();
        qInfo("text");
    });
    EXPECT_THAT(entries(shadow()), ElementsAre("[INFO]: text"));
}

TEST_F(LogFileTest, EntryThatFailsOnTheWayDoesNotHoldUpOthers)
{
    for (const bool isRaw : {false, true}) {
        EXPECT_THAT(logged([&] {
            ThrowingBuffer buffer;
            std::cout.rdbuf(&buffer);
            std::cout.exceptions(std::ios::badbit);
            manager().setOutToStream(!isRaw);
            manager().setRawOutput(isRaw);
            manager().init();
            inThreads(2, [](int) { qInfo("text"); });
            ::_exit(testing::Test::HasFailure() ? 1 : 0); // leaves the buffer in its place
        }),
            ElementsAre("[INFO]: text", "[INFO]: text"));
    }

    const std::string large(200000, 'x');
    Lines lines = logged([&] {
        manager().init();
        for (int failing = 0; failing < 10; ++failing) {
            inThreads(1, [&](int) {
                largeAllocationsLeft = failing;
                messageHandler(QtInfoMsg, QMessageLogContext(), QString::fromStdString(large));
                largeAllocationsLeft = -1;
            });
            inThreads(1, [](int) { qInfo("other"); });
        }
    });
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "[INFO]: other"), 10);
    const auto written = std::count(lines.begin(), lines.end(), "[INFO]: " + large);
    EXPECT_TRUE(written > 0 && written < 8) << written;
    EXPECT_EQ(lines.size(), std::size_t(10 + written));
}

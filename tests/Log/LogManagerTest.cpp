#include "Log/LogTest.h"

#include <Orv/Log/MessageHandlers.h>

#include <QScopeGuard>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <new>
#include <stdexcept>

#include <sys/stat.h>

namespace {

using LogManagerTest = LogTest;

void logAllSeverities()
{
    OrvDebug("a").debug() << "debug";
    OrvDebug("a").debugOnly() << "debugOnly";
    OrvDebug("a").infoH() << "infoH";
    OrvDebug("a").info() << "info";
    OrvDebug("a").warning() << "warning";
    OrvDebug("a").critical() << "critical";
    OrvDebug("a").error() << "error";
}

struct ThrowingBuffer : std::streambuf {
    int overflow(int) override { throw std::runtime_error("no output"); }
};

std::atomic<int> largeAllocationsLeft{-1}; // before one of them fails; negative: none does

} // namespace

void* operator new(std::size_t size)
{
    void* memory =
        size > 100000 && largeAllocationsLeft >= 0 && largeAllocationsLeft-- == 0 ? nullptr : std::malloc(size);
    return memory ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

TEST_F(LogManagerTest, LevelsDecideWhatIsWritten)
{
    const Lines all = {"[DEBUG]: [ a ] [ N ] debug", "[DEBUG]: [ a ] [ N ] debugOnly", "[INFO]: [ a ] [ N ] infoH",
        "[INFO]: [ a ] [ N ] info", "[WARNING]: [ a ] [ N ] warning", "[ERROR]: [ a ] [ N ] critical",
        "[ERROR]: [ a ] [ N ] error"};
    const auto debugOff = static_cast<LogManager::LogLevel>(-1); // setDebug(false)
    const std::pair<std::vector<LogManager::LogLevel>, int> rows[] = {{{}, 4}, {{LogManager::Disabled}, 0},
        {{LogManager::Info}, 4}, {{LogManager::InfoHigh}, 5}, {{LogManager::Debug}, 7},
        {{LogManager::Debug, static_cast<LogManager::LogLevel>(9)}, 4}, {{LogManager::Debug, debugOff}, 5},
        {{LogManager::InfoHigh, LogManager::Disabled}, 0},
        {{LogManager::InfoHigh, LogManager::Disabled, LogManager::Info}, 4}};
    for (const auto& [levels, last] : rows) {
        const auto work = [&, &levels = levels] {
            for (const auto level : levels)
                level == debugOff ? manager().setDebug(false) : manager().setLogLevel(level);
            manager().init();
            EXPECT_EQ(manager().isDebug(), !levels.empty() && levels.back() == LogManager::Debug);
            logAllSeverities();
        };
        EXPECT_EQ(logged(work), Lines(all.end() - last, all.end())) << testing::PrintToString(levels);
        EXPECT_EQ(contentOf(output()).size(), 0);
    }
}

TEST_F(LogManagerTest, NothingIsWrittenUnlessAsked)
{
    expectInChild([this] {
        LogManager::instance().setLogPath(m_folder.path());
        LogManager::instance().setEnableShadow(true); // without a path
        LogManager::instance().init();
        EXPECT_EQ(qInstallMessageHandler(messageHandler), messageHandler);
        logAllSeverities();
    });
    EXPECT_TRUE(QDir(m_folder.path()).isEmpty());
}

TEST_F(LogManagerTest, StandardOutputAndRawOutput)
{
    const auto stream = [&] {
        qputenv("TERM", "xterm");
        managerWithShadow().setOutToStream(true);
        manager().init();
        qInfo("größe");
        OrvDebug("a").debug() << "off";
        qCritical("error");
    };
    EXPECT_THAT(logged(stream), ElementsAre("[INFO]: größe", "[ERROR]: error"));
    EXPECT_EQ(contentOf(output()), contentOf(log())) << "no colors, and the shadow log stays off the screen";
    EXPECT_EQ(entries(shadow()), entries(log()));

    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
    const int slave = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY);
    expectInChild(stream, QString::fromLocal8Bit(::ptsname(terminal)));
    std::string shown(1000, 0);
    shown.resize(std::size_t(std::max<ssize_t>(::read(terminal, &shown[0], shown.size()), 0)));
    EXPECT_THAT(shown, testing::StartsWith("\x1b[36m"));
    ::close(slave);
    ::close(terminal);

    EXPECT_THAT(logged([&] {
        manager().setRawOutput(true);
        manager().init();
        qWarning("raw");
    }),
        ElementsAre("[WARNING]: raw"));
    EXPECT_EQ(contentOf(output()), "raw\n");
}

TEST_F(LogManagerTest, ChangesAndDeletedLogsWaitForReconfigure)
{
    EXPECT_THAT(logged([&] {
        EXPECT_TRUE(!manager().isInit() && managerWithShadow().init() && manager().isInit());
        manager().setAppPrefix(QStringLiteral("p%datetime")); // no placeholder, just as in the directory's name
        manager().setLogPath(path(QStringLiteral("a%1b%2")));
        EXPECT_TRUE(manager(QStringLiteral("a%1b%2")).init());
        qInfo("first");
        EXPECT_TRUE(QFile::remove(shadow()) && LogManager::instance().reconfigure());
        qInfo("second");
    }),
        ElementsAre("[INFO]: first"));
    EXPECT_THAT(entries(path(QStringLiteral("a%1b%2/log_p%datetime.log"))), ElementsAre("[INFO]: second"));
    EXPECT_THAT(entries(shadow()), ElementsAre("[INFO]: second"));
}

TEST_F(LogManagerTest, EntriesAreWrittenAsTheyAre)
{
    EXPECT_THAT(logged([&] {
        manager().init();
        qWarning("libpng warning: iCCP");
        qWarning("LIBPNG");
        qWarning(" libpng");
        qInfo("libpng");
        messageHandler(static_cast<QtMsgType>(5), QMessageLogContext(), QStringLiteral("unknown"));
        manager().setVerbose(true);
        QMessageLogger("file.cpp", 42, "void f(%1)", "some.%2").info("%s", "/a%2Fb%1 %datetime %msg");
        OrvDebug("a").info() << QString(QStringLiteral("null")).replace(1, 1, QChar(0));
        static const auto late = qScopeGuard([] { OrvDebug("late").info() << "from a static destructor"; });
    }),
        ElementsAre("[WARNING]: LIBPNG", "[WARNING]:  libpng", "[INFO]: libpng", "[INFO]: /a%2Fb%1 %datetime %msg",
            "\tFunction: void f(%1)", "\tCategory: some.%2", "\tLine: 42", std::string("[INFO]: [ a ] [ N ] n\0ll", 24),
            "\tFunction: ", "\tCategory: 0.orv.log", "\tLine: 0", "[INFO]: [ late ] [ N ] from a static destructor",
            "\tFunction: ", "\tCategory: 0.orv.log", "\tLine: 0"));
}

TEST_F(LogManagerTest, FatalIsInEachLogBeforeTheEnd)
{
    for (const auto level : {LogManager::Info, LogManager::Disabled}) {
        QFile::remove(shadow());
        EXPECT_EQ(runInChild([&] {
            managerWithShadow().setLogLevel(level);
            manager().init();
            OrvDebug("a").info() << "whole text";
            qFatal("the end");
        }).signal,
            SIGABRT);
        const Lines all = {"[INFO]: [ a ] [ N ] whole text", "[FATAL]: the end"};
        EXPECT_EQ(entries(shadow()), all);
        EXPECT_EQ(entries(log()), level == LogManager::Disabled ? Lines() : all);
        QFile::remove(log());
    }
}

TEST_F(LogManagerTest, ConfiguredAnewWhileThreadsLog)
{
    constexpr int LinesEach = 2000;
    expectInChild([&] {
        managerWithShadow().init();
        inThreads(4, [&](int thread) {
            for (int i = 0; thread == 0 && i < 300; ++i)
                manager().reconfigure();
            for (int i = 0; thread > 0 && i < LinesEach; ++i)
                qInfo("text");
        });
    });
    for (const QString& file : {log(), shadow()}) {
        EXPECT_EQ(entries(file).size(), 3u * LinesEach);
        EXPECT_THAT(entries(file), testing::Each("[INFO]: text"));
    }
}

TEST_F(LogManagerTest, EntryThatFailsOnTheWayDoesNotHoldUpOthers)
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
            ::_exit(testing::Test::HasFailure()); // leaves the buffer in its place
        }),
            ElementsAre("[INFO]: text", "[INFO]: text"));
    }

    const std::string large(200000, 'x');
    const Lines lines = logged([&] {
        manager().init();
        for (int failing = 0; failing < 10; ++failing) {
            largeAllocationsLeft = failing;
            inThreads(1, [&](int) { messageHandler(QtInfoMsg, {}, QString(200000, QLatin1Char('x'))); });
            largeAllocationsLeft = -1;
            inThreads(1, [](int) { qInfo("other"); });
        }
    });
    const auto written = std::count(lines.begin(), lines.end(), "[INFO]: " + large);
    EXPECT_TRUE(written > 0 && written < 8) << written << " of 10";
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "[INFO]: other"), 10);
    EXPECT_EQ(lines.size(), std::size_t(10 + written));
}

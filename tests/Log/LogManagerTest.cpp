#include "Log/LogTest.h"

#include <algorithm>
#include <iostream>
#include <new>
#include <stdexcept>

namespace {

using LogManagerTest = LogTest;

struct ThrowingBuffer : std::streambuf {
    int overflow(int) override { throw std::runtime_error("no output"); }
};

std::atomic<int> largeAllocationsLeft{-1}; // until one fails; negative: none fails

} // namespace

void* operator new(std::size_t size)
{
    const bool fails = size > 100000 && largeAllocationsLeft >= 0 && largeAllocationsLeft-- == 0;
    void* memory = fails ? nullptr : std::malloc(size);
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

TEST_F(LogManagerTest, WritesNothingByDefault)
{
    const auto work = [this] {
        manager().setOutToFile(false);
        LogManager::instance().setEnableShadow(true);
        LogManager::instance().setShadowFilePath({});
        LogManager::instance().init();
        qInfo("text");
        EXPECT_EQ(qInstallMessageHandler(nullptr), messageHandler);
        const Orv::OrvFullDebug timing("a", QStringLiteral("nothing of this"));
        OrvDebug::output() << "plain text" << 7;
    };
    EXPECT_EQ(logged(work), Lines());
    EXPECT_EQ(contentOf(output()), "plain text7");
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files), QStringList(QStringLiteral("output")));
}

TEST_F(LogManagerTest, StandardOutputAndRawOutput)
{
    const auto stream = [&] {
        qputenv("TERM", "xterm");
        manager(true).setOutToStream(true);
        LogManager::instance().init();
        qInfo("größe");
    };
    EXPECT_THAT(logged(stream), ElementsAre("[INFO]: größe"));
    EXPECT_EQ(contentOf(output()), contentOf(log())) << "no colors, no shadow log";
    EXPECT_EQ(entries({shadow()}), entries({log()}));

    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
    const int open = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY); // otherwise the output would be lost
    EXPECT_EQ(runInChild(stream, QString::fromLocal8Bit(::ptsname(terminal))).exitCode, 0);
    char shown[6] = "";
    EXPECT_EQ(::read(terminal, shown, 5), 5);
    EXPECT_STREQ(shown, "\x1b[36m");
    ::close(open);
    ::close(terminal);

    const auto raw = [&] {
        manager().setRawOutput(true);
        manager().init();
        qWarning("raw");
    };
    EXPECT_THAT(logged(raw), ElementsAre("[WARNING]: raw"));
    EXPECT_EQ(contentOf(output()), "raw\n");
}

TEST_F(LogManagerTest, ReconfigureAppliesChangesAndReplacesDeletedLogs)
{
    const auto work = [&] {
        EXPECT_TRUE(!manager().isInit() && manager(true).init() && manager(true).isInit());
        LogManager::instance().setAppPrefix(QStringLiteral("p%datetime")); // not expanded
        LogManager::instance().setLogPath(path("a%1b%2"));
        EXPECT_TRUE(LogManager::instance().init());
        qInfo("first");
        EXPECT_TRUE(QFile::remove(shadow()) && LogManager::instance().reconfigure());
        qInfo("second");
    };
    EXPECT_THAT(logged(work), ElementsAre("[INFO]: first"));
    EXPECT_THAT(entries({path("a%1b%2/log_p%datetime.log")}), ElementsAre("[INFO]: second"));
    EXPECT_THAT(entries({shadow()}), ElementsAre("[INFO]: second"));
}

TEST_F(LogManagerTest, EntriesAreWrittenVerbatim)
{
    const auto work = [&] {
        manager().init();
        qWarning("libpng warning: iCCP");
        qWarning("LIBPNG");
        qWarning(" libpng");
        qInfo("libpng");
        messageHandler(static_cast<QtMsgType>(5), QMessageLogContext(), QStringLiteral("unknown"));
        manager().setVerbose(true);
        QMessageLogger("file.cpp", 42, "void f(%1)", "some.%2").info("%s", "/a%2Fb%1 %datetime %msg");
        OrvDebug("a").info() << QString(QLatin1String("n\0ll", 4));
    };
    EXPECT_THAT(logged(work),
        ElementsAre("[WARNING]: LIBPNG", "[WARNING]:  libpng", "[INFO]: libpng", "[INFO]: /a%2Fb%1 %datetime %msg",
            "\tFunction: void f(%1)", "\tCategory: some.%2", "\tLine: 42", std::string("[INFO]: [ a ] [ N ] n\0ll", 24),
            "\tFunction: ", "\tCategory: 0.orv.log", "\tLine: 0"));
}

TEST_F(LogManagerTest, FatalMessagesReachBothLogs)
{
    for (const auto level : {LogManager::Disabled, LogManager::Info}) {
        QFile::remove(shadow());
        const auto work = [&] {
            manager(true).setLogLevel(level);
            LogManager::instance().init();
            qFatal("the end");
        };
        EXPECT_EQ(runInChild(work).signal, SIGABRT);
        EXPECT_THAT(entries({shadow()}), ElementsAre("[FATAL]: the end"));
        EXPECT_EQ(entries({log()}), level == LogManager::Disabled ? Lines() : entries({shadow()}));
    }
}

TEST_F(LogManagerTest, ReconfiguredWhileThreadsLog)
{
    const Lines lines = logged([&] {
        manager(true).init();
        inThreads(4, [&](int thread) {
            for (int i = 0; i < 300; ++i)
                thread == 0 ? void(LogManager::instance().reconfigure()) : qInfo("text");
        });
    });
    EXPECT_EQ(lines, Lines(900, "[INFO]: text"));
    EXPECT_EQ(entries({shadow()}), lines);
}

TEST_F(LogManagerTest, FailedEntriesDoNotBlockOthers)
{
    for (const bool isRaw : {false, true}) {
        const auto work = [&] {
            ThrowingBuffer buffer;
            std::cout.rdbuf(&buffer);
            std::cout.exceptions(std::ios::badbit);
            manager().setOutToStream(!isRaw);
            manager().setRawOutput(isRaw);
            manager().init();
            inThreads(2, [](int) { qInfo("text"); });
            ::_exit(testing::Test::HasFailure()); // without restoring the buffer
        };
        EXPECT_THAT(logged(work), ElementsAre("[INFO]: text", "[INFO]: text"));
    }

    const auto work = [&] {
        manager().init();
        for (int failing = 0; failing < 10; ++failing) {
            largeAllocationsLeft = failing;
            inThreads(1, [](int) { messageHandler(QtInfoMsg, {}, QString(200000, QLatin1Char('x'))); });
            largeAllocationsLeft = -1;
            inThreads(1, [](int) { qInfo("other"); });
        }
    };
    const Lines lines = logged(work);
    const auto written = std::count(lines.begin(), lines.end(), "[INFO]: " + std::string(200000, 'x'));
    EXPECT_TRUE(written > 0 && written < 8) << written << " of 10";
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "[INFO]: other"), 10);
    EXPECT_EQ(lines.size(), std::size_t(10 + written));
}

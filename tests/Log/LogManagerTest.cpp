#include "Log/LogTest.h"

#include <Orv/Log/MessageHandlers.h>

#include <QScopeGuard>

#include <csignal>

#include <sys/stat.h>

using testing::IsEmpty;

namespace {

using LogManagerTest = LogTest;

void logAllSeverities()
{
    OrvDebug("a").debug() << "debug";
    OrvDebug("a").debugOnly() << "debugOnly";
    OrvDebug("a").info() << "info";
    OrvDebug("a").infoH() << "infoH";
    OrvDebug("a").warning() << "warning";
    OrvDebug("a").critical() << "critical";
    OrvDebug("a").error() << "error";
}

} // namespace

TEST_F(LogManagerTest, LevelsDecideWhatIsWritten)
{
    const Lines all = {"[DEBUG]: [ a ] [ N ] debug", "[DEBUG]: [ a ] [ N ] debugOnly", "[INFO]: [ a ] [ N ] info",
        "[INFO]: [ a ] [ N ] infoH", "[WARNING]: [ a ] [ N ] warning", "[ERROR]: [ a ] [ N ] critical",
        "[ERROR]: [ a ] [ N ] error"};
    const Lines high(all.begin() + 2, all.end());
    Lines always = high;
    always.erase(always.begin() + 1);

    using Levels = std::vector<LogManager::LogLevel>;
    const std::pair<Levels, Lines> rows[] = {
        {{}, always},
        {{LogManager::Disabled}, {}},
        {{LogManager::Info}, always},
        {{LogManager::InfoHigh}, high},
        {{LogManager::Debug}, all},
        {{LogManager::Debug, static_cast<LogManager::LogLevel>(9)}, always},
        {{LogManager::InfoHigh, LogManager::Disabled}, {}},
        {{LogManager::InfoHigh, LogManager::Disabled, LogManager::Info}, always},
    };
    for (const auto& [levels, expected] : rows) {
        const auto work = [&, &levels = levels] {
            for (const auto level : levels)
                manager().setLogLevel(level);
            manager().init();
            logAllSeverities();
        };
        EXPECT_EQ(logged(work), expected) << testing::PrintToString(levels);
        EXPECT_EQ(contentOf(output()).size(), 0);
    }
    const auto debugOff = [&] {
        manager().setLogLevel(LogManager::Debug);
        manager().setDebug(false);
        EXPECT_FALSE(manager().isDebug());
        manager().init();
        logAllSeverities();
    };
    EXPECT_EQ(logged(debugOff), high) << "high detail stays, debug lines go";
}

TEST_F(LogManagerTest, NothingIsWrittenUnlessAsked)
{
    const auto work = [this] {
        LogManager::instance().setLogPath(m_folder.path());
        LogManager::instance().setEnableShadow(true); // without a path
        LogManager::instance().init();
        EXPECT_EQ(qInstallMessageHandler(messageHandler), messageHandler);
        logAllSeverities();
    };
    writeFile(path(QStringLiteral("full")), QByteArray(2097152, 'x'));
    ASSERT_TRUE(QFile::rename(path(QStringLiteral("full")), log()));
    expectInChild(work, output());
    EXPECT_EQ(QFileInfo(log()).size(), 2097152) << "a full log that is not in use stays as it is";
    EXPECT_THAT(logged(work), IsEmpty());
    EXPECT_EQ(contentOf(output()).size(), 0);
    EXPECT_THAT(QDir(m_folder.path()).entryList(QDir::Files), ElementsAre(QStringLiteral("output")));
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

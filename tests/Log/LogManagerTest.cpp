#include "Log/ChildProcess.h"

#include <Orv/Log/LogManager.h>
#include <Orv/Log/MessageHandlers.h>
#include <Orv/Log/OrvDebug.h>

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>

using Orv::LogManager;
using Orv::OrvDebug;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class LogManagerTest : public testing::Test {
protected:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString log() const { return path(QStringLiteral("log_DOV_LOG.log")); }
    QString shadow() const { return path(QStringLiteral("shadow.log")); }
    QString output() const { return path(QStringLiteral("output")); }

    /// Sets the log up in the test's folder, with the file on.
    LogManager& manager() const
    {
        LogManager& manager = LogManager::instance();
        manager.setLogPath(m_folder.path());
        manager.setOutToFile(true);
        return manager;
    }

    LogManager& managerWithShadow() const
    {
        manager().setEnableShadow(true);
        manager().setShadowFilePath(shadow());
        return manager();
    }

    /// The lines of a log without the date and time, which are checked here, and with N for the number of the thread,
    /// which depends on what the process did before.
    static std::vector<std::string> entries(const QString& path)
    {
        static const QRegularExpression time(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d,\\d{6} "));
        static const QRegularExpression thread(QStringLiteral("\\] \\[ \\d+ \\] "));
        std::vector<std::string> result;
        for (const QString& line : linesOf(path)) {
            const auto match = time.match(line);
            QString entry = match.hasMatch() ? line.mid(match.capturedLength()) : line;
            result.push_back(entry.replace(thread, QStringLiteral("] [ N ] ")).toStdString());
        }
        return result;
    }

    QTemporaryDir m_folder;
};

void inThreads(int count, const std::function<void()>& work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
}

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
    const std::vector<std::string> always = {"[INFO]: [ a ] [ N ] info", "[WARNING]: [ a ] [ N ] warning",
        "[ERROR]: [ a ] [ N ] critical", "[ERROR]: [ a ] [ N ] error"};
    std::vector<std::string> high = always;
    high.insert(high.begin() + 1, "[INFO]: [ a ] [ N ] infoH");
    std::vector<std::string> all = high;
    all.insert(all.begin(), {"[DEBUG]: [ a ] [ N ] debug", "[DEBUG]: [ a ] [ N ] debugOnly"});

    using Levels = std::vector<LogManager::LogLevel>;
    const std::pair<Levels, std::vector<std::string>> rows[] = {
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
        QFile::remove(log());
        expectInChild(
            [&, &levels = levels] {
                for (const auto level : levels)
                    manager().setLogLevel(level);
                manager().init();
                logAllSeverities();
            },
            output());
        EXPECT_EQ(entries(log()), expected);
    }
    EXPECT_THAT(contentOf(output()).toStdString(), IsEmpty());
}

TEST_F(LogManagerTest, DebugSwitch)
{
    expectInChild([&] {
        manager().setLogLevel(LogManager::Debug);
        manager().setDebug(false);
        EXPECT_FALSE(manager().isDebug());
        manager().init();
        logAllSeverities();
    });
    EXPECT_EQ(entries(log()).size(), 5u) << "high detail stays, debug lines go";
}

TEST_F(LogManagerTest, NothingIsWrittenUnlessAsked)
{
    const auto run = [this] {
        expectInChild(
            [&] {
                LogManager& log = manager();
                log.setOutToFile(false);
                log.init();
                logAllSeverities();
            },
            output());
    };
    run();
    EXPECT_FALSE(QFile::exists(log()));
    const QByteArray old(2097152, 'x');
    std::ofstream(log().toStdString()) << old.constData();
    run();
    EXPECT_EQ(contentOf(log()), old) << "a full log that is not in use stays as it is";
    EXPECT_THAT(entries(output()), IsEmpty());
}

TEST_F(LogManagerTest, StandardOutputAndRawOutput)
{
    expectInChild(
        [&] {
            manager().setOutToStream(true);
            manager().setAppPrefix(QStringLiteral("other"));
            manager().init();
            qInfo("to %s", "stream");
        },
        output());
    EXPECT_THAT(contentOf(output()).toStdString(), testing::HasSubstr("[INFO]: to stream"));
    EXPECT_THAT(entries(path(QStringLiteral("log_other.log"))), ElementsAre("[INFO]: to stream"));

    QFile::remove(output());
    expectInChild(
        [&] {
            manager().setRawOutput(true);
            manager().init();
            qWarning("raw");
        },
        output());
    EXPECT_EQ(contentOf(output()), "raw\n");
    EXPECT_THAT(entries(log()), ElementsAre("[WARNING]: raw"));
}

TEST_F(LogManagerTest, ChangesWaitForReconfigure)
{
    const QString elsewhere = path(QStringLiteral("log_second.log"));
    const Ending ending = runInChild([&] {
        bool good = !manager().isInit() && manager().init() && manager().isInit();
        manager().setAppPrefix(QStringLiteral("second"));
        good = good && manager().init();
        qInfo("first");
        good = good && manager().reconfigure();
        qInfo("second");
        std::exit(good ? 7 : 8);
    });
    EXPECT_EQ(ending.exitCode, 7);
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: first"));
    EXPECT_THAT(entries(elsewhere), ElementsAre("[INFO]: second"));
}

TEST_F(LogManagerTest, VerboseEntriesNameTheirOrigin)
{
    expectInChild([&] {
        manager().setVerbose(true);
        manager().init();
        QMessageLogger("file.cpp", 42, "void f()", "some.category").info("%s", "100% done %2");
        OrvDebug("a").info() << "stream";
    });
    EXPECT_THAT(entries(log()),
        ElementsAre("[INFO]: 100% done void f()", "\tFunction: void f()", "\tCategory: some.category", "\tLine: 42",
            "[INFO]: [ a ] [ N ] stream", "\tFunction: ", "\tCategory: 0.orv.log", "\tLine: 0"));
}

TEST_F(LogManagerTest, ForeignNoiseAndUnknownTypesAreDropped)
{
    expectInChild([&] {
        manager().init();
        qWarning("libpng warning: iCCP");
        qWarning("LIBPNG");
        qWarning(" libpng");
        qInfo("libpng");
        messageHandler(static_cast<QtMsgType>(5), QMessageLogContext(), QStringLiteral("unknown"));
    });
    EXPECT_THAT(entries(log()), ElementsAre("[WARNING]: LIBPNG", "[WARNING]:  libpng", "[INFO]: libpng"));
}

TEST_F(LogManagerTest, ShadowGetsEveryEntryOnce)
{
    expectInChild(
        [&] {
            managerWithShadow().setOutToStream(true);
            manager().init();
            qInfo("größe");
            OrvDebug("a").debug() << "off";
            qCritical("error");
        },
        output());
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: größe", "[ERROR]: error"));
    EXPECT_EQ(entries(shadow()), entries(log()));
    EXPECT_EQ(contentOf(output()).count("[ERROR]: error"), 1) << "the shadow log stays off the screen";
}

TEST_F(LogManagerTest, ShadowStaysOnWhenTheLogIsDisabled)
{
    const Ending ending = runInChild([&] {
        managerWithShadow().setLogLevel(LogManager::InfoHigh);
        manager().setLogLevel(LogManager::Disabled);
        manager().init();
        OrvDebug("a").infoH() << "whole text";
        OrvDebug("a").debug() << "off";
        qFatal("the end");
    });
    EXPECT_EQ(ending.signal, SIGABRT);
    EXPECT_THAT(entries(log()), IsEmpty());
    EXPECT_THAT(entries(shadow()), ElementsAre("[INFO]: [ a ] [ N ] whole text", "[FATAL]: the end"));
}

TEST_F(LogManagerTest, ShadowWithoutAPathIsNone)
{
    const Ending ending = runInChild([&] {
        manager().setEnableShadow(true);
        manager().init();
        qInfo("text");
        std::exit(qInstallMessageHandler(nullptr) == messageHandler ? 7 : 8);
    });
    EXPECT_EQ(ending.exitCode, 7);
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: text"));
    EXPECT_THAT(QDir(m_folder.path()).entryList(QDir::Files), ElementsAre(QStringLiteral("log_DOV_LOG.log")));
}

TEST_F(LogManagerTest, FatalIsInBothLogsBeforeTheEnd)
{
    const Ending ending = runInChild([&] {
        managerWithShadow().init();
        messageHandlerShadow(QtFatalMsg, QMessageLogContext(), QStringLiteral("the end"));
    });
    EXPECT_EQ(ending.signal, SIGABRT);
    EXPECT_THAT(entries(log()), ElementsAre("[FATAL]: the end"));
    EXPECT_THAT(entries(shadow()), ElementsAre("[FATAL]: the end"));
}

TEST_F(LogManagerTest, FullLogIsMovedAside)
{
    const QByteArray text(1000, 'x');
    expectInChild([&] {
        managerWithShadow().init();
        inThreads(4, [&text] {
            for (int i = 0; i < 600; ++i)
                qInfo("%s", text.constData());
        });
    });
    const QStringList files = QDir(m_folder.path()).entryList({QStringLiteral("log_DOV_LOG_*.log")});
    ASSERT_EQ(files.size(), 1);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^log_DOV_LOG_\\d{14}\\.log$")).match(files.first()).hasMatch());
    const auto old = entries(path(files.first()));
    const auto current = entries(log());
    EXPECT_EQ(old.size() + current.size(), 2400u);
    EXPECT_GE(QFileInfo(path(files.first())).size(), 2097152);
    const std::string whole = "[INFO]: " + text.toStdString();
    for (const auto& lines : {old, current, entries(shadow())})
        EXPECT_THAT(lines, testing::Each(whole));
    EXPECT_EQ(entries(shadow()).size(), 2400u);
}

TEST_F(LogManagerTest, EntryThatFillsTheLogIsTheLastInIt)
{
    for (const int size : {2097152, 3000}) {
        const QByteArray text(size, 'x');
        expectInChild([&] {
            manager().init();
            for (qint64 written = 0; written < 2097152; written += size) {
                qInfo("%s", text.constData());
                ASSERT_LT(QFileInfo(log()).size(), 2097152) << "not moved aside at once";
            }
        });
        const QStringList moved = QDir(m_folder.path()).entryList({QStringLiteral("log_DOV_LOG_*.log")});
        ASSERT_FALSE(moved.isEmpty());
        EXPECT_GE(QFileInfo(path(moved.last())).size(), 2097152);
    }
}

TEST_F(LogManagerTest, LogThatIsFullFromBeforeIsMovedAside)
{
    const QByteArray old(2097152, 'x');
    std::ofstream(log().toStdString()) << old.constData();
    expectInChild([&] {
        manager().init();
        qInfo("new");
        manager().reconfigure();
    });
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: new"));
    const QStringList files = QDir(m_folder.path()).entryList({QStringLiteral("log_DOV_LOG_*.log")});
    ASSERT_EQ(files.size(), 1);
    EXPECT_EQ(contentOf(path(files.first())), old);
}

TEST_F(LogManagerTest, MissingFolderIsMade)
{
    const QString folder = path(QStringLiteral("a/b"));
    expectInChild([&] {
        LogManager& log = manager();
        log.setLogPath(folder);
        log.init();
        qInfo("text");
    });
    EXPECT_THAT(entries(folder + QStringLiteral("/log_DOV_LOG.log")), ElementsAre("[INFO]: text"));
}

TEST_F(LogManagerTest, GoesOnWhenTheFolderCanBeMadeAgain)
{
    // A file stands where the folder has to be: nothing can be made there, not even by root.
    const QString folder = path(QStringLiteral("folder"));
    const Ending ending = runInChild([&] {
        QFile obstacle(folder);
        obstacle.open(QIODevice::WriteOnly);
        obstacle.close();
        LogManager& log = managerWithShadow();
        log.setLogPath(folder);
        log.init();
        qInfo("lost");
        obstacle.remove();
        qInfo("written");
    });
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(entries(folder + QStringLiteral("/log_DOV_LOG.log")), ElementsAre("[INFO]: written"));
    EXPECT_THAT(entries(shadow()), ElementsAre("[INFO]: lost", "[INFO]: written"));
}

TEST_F(LogManagerTest, FullLogSurvivesUntilItsFolderIsBack)
{
    const QString folder = path(QStringLiteral("folder"));
    const QString away = path(QStringLiteral("away"));
    const QByteArray old(2097152, 'x');
    ASSERT_TRUE(QDir().mkpath(away));
    std::ofstream((away + QStringLiteral("/log_DOV_LOG.log")).toStdString()) << old.constData();
    expectInChild([&] {
        EXPECT_TRUE(QFile(folder).open(QIODevice::WriteOnly)); // in the place of the folder
        LogManager& log = manager();
        log.setLogPath(folder);
        log.init();
        qInfo("lost");
        EXPECT_TRUE(QFile::remove(folder) && QFile::rename(away, folder));
        qInfo("written");
    });
    EXPECT_THAT(entries(folder + QStringLiteral("/log_DOV_LOG.log")), ElementsAre("[INFO]: written"));
    const QStringList moved = QDir(folder).entryList({QStringLiteral("log_DOV_LOG_*.log")});
    ASSERT_EQ(moved.size(), 1);
    EXPECT_EQ(contentOf(folder + QLatin1Char('/') + moved.first()), old);
}

TEST_F(LogManagerTest, DeletedLogsAreMadeAgain)
{
    expectInChild([&] {
        managerWithShadow().init();
        qInfo("gone");
        EXPECT_TRUE(QFile::remove(log()) && QFile::remove(shadow()));
        manager().reconfigure();
        qInfo("text");
    });
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: text"));
    EXPECT_THAT(entries(shadow()), ElementsAre("[INFO]: text"));
}

TEST_F(LogManagerTest, SeveralThreadsAndNoPlaceForEitherLog)
{
    const QString obstacle = path(QStringLiteral("obstacle"));
    ASSERT_TRUE(QFile(obstacle).open(QIODevice::WriteOnly));
    expectInChild([&] {
        EXPECT_TRUE(QDir::setCurrent(m_folder.path()));
        LogManager& log = managerWithShadow();
        log.setLogPath(obstacle + QStringLiteral("/one/two"));
        log.setShadowFilePath(obstacle + QStringLiteral("/three/four/shadow.log"));
        log.init();
        inThreads(4, [] {
            for (int i = 0; i < 200; ++i)
                qInfo("lost");
        });
    });
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("obstacle"));
}

TEST_F(LogManagerTest, ConfiguredAnewWhileThreadsLog)
{
    constexpr int Lines = 2000;
    expectInChild([&] {
        managerWithShadow().init();
        std::thread configuring([&] {
            for (int i = 0; i < 300; ++i)
                manager().reconfigure();
        });
        inThreads(3, [] {
            for (int i = 0; i < Lines; ++i)
                qInfo("text");
        });
        configuring.join();
    });
    for (const QString& file : {log(), shadow()}) {
        EXPECT_EQ(entries(file).size(), 3u * Lines);
        EXPECT_THAT(entries(file), testing::Each("[INFO]: text"));
    }
}

TEST_F(LogManagerTest, GoesOnWhenTheFolderIsGoneAtARollOver)
{
    const QString folder = path(QStringLiteral("folder"));
    expectInChild([&] {
        LogManager& log = manager();
        log.setLogPath(folder);
        log.init();
        qInfo("first");
        QDir(folder).removeRecursively();
        for (int i = 0; i < 2200; ++i)
            qInfo("%s", QByteArray(1000, 'x').constData());
        qInfo("last");
    });
    const auto lines = entries(folder + QStringLiteral("/log_DOV_LOG.log"));
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "[INFO]: last");
}

TEST_F(LogManagerTest, GoesOnWhenThereIsRoomAgain)
{
    const Ending ending = runInChild([&] {
        manager().init();
        qInfo("before");
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        rlimit full = limit;
        full.rlim_cur = 10;
        ::setrlimit(RLIMIT_FSIZE, &full);
        for (int i = 0; i < 100; ++i)
            qInfo("lost");
        ::setrlimit(RLIMIT_FSIZE, &limit);
        qInfo("after");
    });
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: before", "[INFO]: after"));
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files).size(), 1) << "no roll-over";
}

namespace {

struct LateLogger {
    bool armed = false;
    ~LateLogger()
    {
        if (armed)
            OrvDebug("late").info() << "from a static destructor";
    }
};
LateLogger lateLogger;

} // namespace

TEST_F(LogManagerTest, StaticDestructorsCanLog)
{
    const Ending ending = runInChild([&] {
        manager().init();
        lateLogger.armed = true;
    });
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: [ late ] [ N ] from a static destructor"));
}

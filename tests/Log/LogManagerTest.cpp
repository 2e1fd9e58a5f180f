#include "Log/ChildProcess.h"
#include "PrivateMount.h"

#include <Orv/Log/LogManager.h>
#include <Orv/Log/MessageHandlers.h>
#include <Orv/Log/OrvDebug.h>

#include <QDir>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
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
    QString path(const QString& name) const { return QDir(m_folder.path()).filePath(name); }
    QString log(const QString& folder = QString()) const
    {
        return QDir(path(folder)).filePath(QStringLiteral("log_DOV_LOG.log"));
    }
    QString shadow() const { return path(QStringLiteral("shadow.log")); }
    QString output() const { return path(QStringLiteral("output")); }

    /// The only log that was moved aside.
    QString moved(const QString& folder = QString()) const
    {
        const QDir place(path(folder));
        const QStringList names = place.entryList({QStringLiteral("log_DOV_LOG_*.log")});
        EXPECT_EQ(names.size(), 1);
        return place.filePath(names.value(0));
    }

    /// Sets the log up in the test's folder or one below it, with the file on.
    LogManager& manager(const QString& folder = QString()) const
    {
        LogManager& manager = LogManager::instance();
        manager.setLogPath(path(folder));
        manager.setOutToFile(true);
        return manager;
    }

    LogManager& managerWithShadow(const QString& folder = QString()) const
    {
        manager(folder).setEnableShadow(true);
        manager(folder).setShadowFilePath(shadow());
        return manager(folder);
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

const QByteArray FullLog(2097152, 'x');
const QString Folder = QStringLiteral("folder");

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

    QFile::remove(log());
    expectInChild([&] {
        manager().setLogLevel(LogManager::Debug);
        manager().setDebug(false);
        EXPECT_FALSE(manager().isDebug());
        manager().init();
        logAllSeverities();
    });
    EXPECT_EQ(entries(log()), high) << "high detail stays, debug lines go";
}

TEST_F(LogManagerTest, NothingIsWrittenUnlessAsked)
{
    const auto run = [this] {
        expectInChild(
            [this] {
                manager().setOutToFile(false);
                LogManager::instance().init();
                logAllSeverities();
            },
            output());
    };
    run();
    EXPECT_FALSE(QFile::exists(log()));
    writeFile(log(), FullLog);
    run();
    EXPECT_EQ(contentOf(log()), FullLog) << "a full log that is not in use stays as it is";
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
    expectInChild([&] {
        EXPECT_TRUE(!manager().isInit() && manager().init() && manager().isInit());
        manager().setAppPrefix(QStringLiteral("second"));
        EXPECT_TRUE(manager().init());
        qInfo("first");
        EXPECT_TRUE(manager().reconfigure());
        qInfo("second");
    });
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: first"));
    EXPECT_THAT(entries(path(QStringLiteral("log_second.log"))), ElementsAre("[INFO]: second"));
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

TEST_F(LogManagerTest, FatalIsInEachLogBeforeTheEnd)
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

    QFile::remove(shadow());
    EXPECT_EQ(runInChild([this] {
        managerWithShadow().init();
        messageHandlerShadow(QtFatalMsg, QMessageLogContext(), QStringLiteral("the end"));
    }).signal,
        SIGABRT);
    EXPECT_THAT(entries(log()), ElementsAre("[FATAL]: the end"));
    EXPECT_THAT(entries(shadow()), ElementsAre("[FATAL]: the end"));
}

TEST_F(LogManagerTest, ShadowWithoutAPathIsNone)
{
    expectInChild([&] {
        manager().setEnableShadow(true);
        manager().init();
        qInfo("text");
        EXPECT_EQ(qInstallMessageHandler(nullptr), messageHandler);
    });
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: text"));
    EXPECT_THAT(QDir(m_folder.path()).entryList(QDir::Files), ElementsAre(QStringLiteral("log_DOV_LOG.log")));
}

TEST_F(LogManagerTest, EntryThatFillsTheLogIsTheLastInIt)
{
    for (const int size : {FullLog.size(), 3000}) {
        const QByteArray text = FullLog.left(size);
        expectInChild([&] {
            manager().init();
            for (qint64 written = 0; written < FullLog.size(); written += size) {
                qInfo("%s", text.constData());
                ASSERT_LT(QFileInfo(log()).size(), FullLog.size()) << "not moved aside at once";
            }
        });
        const QString old = moved();
        EXPECT_TRUE(QRegularExpression(QStringLiteral("/log_DOV_LOG_\\d{14}\\.log$")).match(old).hasMatch());
        EXPECT_GE(QFileInfo(old).size(), FullLog.size());
        EXPECT_THAT(entries(old), testing::Each("[INFO]: " + text.toStdString()));
        QFile::remove(old);
    }
}

TEST_F(LogManagerTest, LogThatIsFullFromBeforeIsMovedAside)
{
    writeFile(log(), FullLog);
    expectInChild([&] {
        manager().init();
        qInfo("new");
        manager().reconfigure();
    });
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: new"));
    EXPECT_EQ(contentOf(moved()), FullLog);
}

TEST_F(LogManagerTest, FullLogSurvivesUntilItsFolderIsBack)
{
    const QString away = path(QStringLiteral("away"));
    ASSERT_TRUE(QDir().mkpath(away));
    writeFile(log(QStringLiteral("away")), FullLog);
    expectInChild([&] {
        writeFile(path(Folder), {}); // in the place of the folder, where not even root can make anything then
        managerWithShadow(Folder).init();
        qInfo("lost");
        EXPECT_TRUE(QFile::remove(path(Folder)) && QFile::rename(away, path(Folder)));
        qInfo("written");
    });
    EXPECT_THAT(entries(log(Folder)), ElementsAre("[INFO]: written"));
    EXPECT_THAT(entries(shadow()), ElementsAre("[INFO]: lost", "[INFO]: written"));
    EXPECT_EQ(contentOf(moved(Folder)), FullLog);
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
    writeFile(path(Folder), {});
    expectInChild([&] {
        EXPECT_TRUE(QDir::setCurrent(m_folder.path()));
        managerWithShadow(Folder + QStringLiteral("/one/two"));
        LogManager::instance().setShadowFilePath(path(Folder + QStringLiteral("/three/four/shadow.log")));
        LogManager::instance().init();
        inThreads(4, [] {
            for (int i = 0; i < 200; ++i)
                qInfo("lost");
        });
    });
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList(Folder));
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
    expectInChild([&] {
        manager(Folder).init();
        qInfo("first");
        QDir(path(Folder)).removeRecursively();
        qInfo("%s", FullLog.constData());
        qInfo("last");
    });
    EXPECT_THAT(entries(log(Folder)), ElementsAre("[INFO]: last"));
}

TEST_F(LogManagerTest, GoesOnWhenThereIsRoomAgain)
{
    expectInChild([&] {
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
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: before", "[INFO]: after"));
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files).size(), 1) << "no roll-over";
}

TEST_F(LogManagerTest, GoesOnWhenTheDiskHasRoomAgain)
{
    const PrivateMount disk(64 * 1024, "tmpfs");
    if (!disk.reason().isNull())
        GTEST_SKIP() << disk.reason().toStdString();
    const QString file = QDir(disk.path()).filePath(QStringLiteral("log_DOV_LOG.log"));
    const QString ballast = QDir(disk.path()).filePath(QStringLiteral("ballast"));
    expectInChild([&] {
        writeFile(ballast, QByteArray(32 * 1024, 'x'));
        LogManager& log = manager();
        log.setLogPath(disk.path());
        log.init();
        for (int i = 0; i < 1000; ++i)
            qInfo("filling");
        QFile::remove(ballast);
        qInfo("after");
        qInfo("last");
    });
    std::vector<std::string> lines = entries(file);
    ASSERT_GT(lines.size(), 100u);
    EXPECT_LT(lines.size(), 1000u) << "the disk was not full";
    EXPECT_EQ(lines.back(), "[INFO]: last");
    lines.pop_back();
    EXPECT_THAT(lines.back(), testing::EndsWith("[INFO]: after")) << "what was cut may stand before it";
    lines.pop_back();
    EXPECT_THAT(lines, testing::Each("[INFO]: filling"));
}

TEST_F(LogManagerTest, GoesOnWhenPermissionIsLost)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root keeps every permission";
    expectInChild([&] {
        ASSERT_TRUE(QDir().mkpath(path(Folder)));
        manager(Folder).init();
        qInfo("first");
        ::chmod(QFile::encodeName(path(Folder)).constData(), 0500);
        qInfo("%s", FullLog.constData()); // cannot be moved aside
        qInfo("second");
        ::chmod(QFile::encodeName(log(Folder)).constData(), 0);
        qInfo("%s", FullLog.constData()); // ... nor opened again
        qInfo("lost");
        ::chmod(QFile::encodeName(log(Folder)).constData(), 0600);
        qInfo("last");
    });
    ::chmod(QFile::encodeName(path(Folder)).constData(), 0700);
    EXPECT_THAT(entries(log(Folder)), ElementsAre("[INFO]: last"));
}

TEST_F(LogManagerTest, StaticDestructorsCanLog)
{
    expectInChild([&] {
        manager().init();
        static const auto late = qScopeGuard([] { OrvDebug("late").info() << "from a static destructor"; });
    });
    EXPECT_THAT(entries(log()), ElementsAre("[INFO]: [ late ] [ N ] from a static destructor"));
}

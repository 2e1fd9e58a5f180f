#include "Log/ChildProcess.h"

#include <Orv/Log/CrashHandler.h>
#include <Orv/Log/LogManager.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

using testing::HasSubstr;

namespace {

class CrashHandlerTest : public testing::Test {
protected:
    void setUp() const
    {
        Orv::LogManager& manager = Orv::LogManager::instance();
        manager.setLogPath(m_folder.path());
        manager.setOutToFile(true);
        manager.setCrashHandler(true);
        manager.init();
    }

    std::string log() const { return contentOf(m_folder.filePath(QStringLiteral("log_DOV_LOG.log"))).toStdString(); }

    QTemporaryDir m_folder;
};

/// Runs an application that interrupts itself `times` times before its event loop gets to quit.
int interruptedLoop(int times)
{
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    QTimer::singleShot(0, [times] {
        for (int i = 0; i < times; ++i)
            std::raise(SIGINT);
    });
    return QCoreApplication::exec();
}

} // namespace

TEST_F(CrashHandlerTest, CrashSignalsLeaveAFarewellAndTheReason)
{
    const std::string picture = "\n                   _..\n"
                                "  /}_{\\           /.-'\n"
                                " ( a a )-.___...-'/\n"
                                " ==._.==         ;\n"
                                "      \\ i _..._ /,\n"
                                "      {_;/   {_// \n";
    const std::pair<int, const char*> rows[] = {{SIGSEGV, "SIGSEGV"}, {SIGFPE, "SIGFPE"}, {SIGILL, "SIGILL"}};
    for (const auto& [signal, name] : rows) {
        QFile::remove(m_folder.filePath(QStringLiteral("log_DOV_LOG.log")));
        const Ending ending = runInChild([this, signal = signal] {
            setUp();
            std::raise(signal);
        });
        EXPECT_EQ(ending.signal, SIGABRT) << name;
        const std::string farewell = "[ERROR]: " + picture +
            "The app has been shut down unexpectedly, please contact Support. Signal:" + std::to_string(signal) + "\n";
        EXPECT_THAT(log(), HasSubstr(farewell));
        const std::string reason = log().substr(std::min(log().size(), log().find(farewell) + farewell.size()));
        EXPECT_THAT(reason, HasSubstr("[FATAL]: CRASH HANDLED"));
        EXPECT_THAT(reason, HasSubstr(name));
    }
}

TEST_F(CrashHandlerTest, FirstInterruptQuitsTheApplicationAndTheSecondEndsItWithAnError)
{
    const std::tuple<int, int, const char*> rows[] = {{1, 0, "[INFO]: Quit the application (user request signal):2\n"},
        {2, -1, "[INFO]: Application terminated...\n"}};
    for (const auto& [times, result, entry] : rows) {
        expectInChild([this, times = times, result = result] {
            setUp();
            EXPECT_EQ(interruptedLoop(times), result);
        });
        EXPECT_THAT(log(), HasSubstr(entry));
    }
}

TEST_F(CrashHandlerTest, IsNotInstalledUnlessAsked)
{
    const Ending ending = runInChild([this] {
        Orv::LogManager::instance().setLogPath(m_folder.path());
        Orv::LogManager::instance().init();
        std::raise(SIGINT);
    });
    EXPECT_EQ(ending.signal, SIGINT);
}

#include "Log/LogTest.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <map>

#include <pthread.h>

using testing::HasSubstr;

namespace {

class CrashHandlerTest : public LogTest {
protected:
    void setUp() const
    {
        manager().setCrashHandler(true);
        manager().init();
    }
    /// Expects that the process ends by the handler and that the file has its report.
    void expectReport(const std::function<void()>& crash, int signal, const QString& file, const char* what) const;
};

constexpr char Picture[] =
    "\n                   _..\n  /}_{\\           /.-'\n ( a a )-.___...-'/\n ==._.==         ;\n"
    "      \\ i _..._ /,\n      {_;/   {_// \n";

constexpr char Description[] =
    "[SIGSEGV] signal\n    Invalid access to memory\n    Program is trying to read an invalid "
    "(unallocated, deleted or corrupted) or inaccessible memory.\n";

void CrashHandlerTest::expectReport(
    const std::function<void()>& crash, int signal, const QString& file, const char* what) const
{
    QFile::remove(file);
    EXPECT_EQ(runInChild(crash).signal, SIGABRT) << what;
    const std::string report = contentOf(file).toStdString();
    const std::string farewell = std::string("[ERROR]: ") + Picture +
        "The app has been shut down unexpectedly, please contact Support. Signal:" + std::to_string(signal) + "\n";
    EXPECT_THAT(report, HasSubstr(farewell)) << what;
    const std::string reason = report.substr(std::min(report.size(), report.find(farewell) + farewell.size()));
    EXPECT_THAT(reason, HasSubstr("[FATAL]: CRASH HANDLED; Application has crashed due to [SIG")) << what;
    EXPECT_THAT(reason, HasSubstr("\n    ======= Backtrace: =========\n    [0] ")) << what;
    EXPECT_TRUE(signal != SIGSEGV || reason.find(Description) != std::string::npos) << what;
}

int interruptOnCompare(const void*, const void*)
{
    return std::raise(SIGSEGV);
}

// NOLINTNEXTLINE(misc-no-recursion)
int overflowStack(const volatile char* above)
{
    volatile char frame[4096];
    frame[0] = *above;
    return frame[0] == 2 ? 0 : overflowStack(frame) + frame[0];
}

/// Crashes wherever the loop happens to be, which is inside malloc() most of the time.
void crashInsideMalloc()
{
    std::atomic<bool> isRunning{false};
    std::thread thread([&isRunning] {
        for (std::size_t size = 2000;; size = 2000 + size * 7 % 60000) {
            const std::vector<char> memory(size);
            isRunning = memory.front() == 0;
        }
    });
    while (!isRunning)
        std::this_thread::yield();
    ::pthread_kill(thread.native_handle(), SIGSEGV);
    thread.join();
}

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

TEST_F(CrashHandlerTest, CrashesAreReported)
{
    for (const int signal : {SIGSEGV, SIGFPE, SIGILL}) {
        const auto crash = [&] {
            setUp();
            std::raise(signal);
        };
        expectReport(crash, signal, log(), std::to_string(signal).c_str());
    }

    const auto sorting = [&] {
        setUp();
        int numbers[] = {1, 2};
        std::qsort(numbers, 2, sizeof(int), interruptOnCompare);
    };
    expectReport(sorting, SIGSEGV, log(), "in a function that another one calls");
    EXPECT_THAT(contentOf(log()).toStdString(), HasSubstr("qsort"));

    const auto overflowing = [&] {
        setUp();
        const volatile char first = 1;
        std::exit(overflowStack(&first));
    };
    expectReport(overflowing, SIGSEGV, log(), "stack overflow");

    QFile::remove(log());
    const auto disabled = [&] {
        managerWithShadow().setLogLevel(LogManager::Disabled);
        setUp();
        std::raise(SIGSEGV);
    };
    expectReport(disabled, SIGSEGV, shadow(), "only the shadow log");
    EXPECT_EQ(contentOf(log()).size(), 0);

    const auto echoed = [&] {
        manager().setOutToStream(true);
        manager().setRawOutput(true);
        setUp();
        std::raise(SIGSEGV);
    };
    EXPECT_EQ(runInChild(echoed, output()).signal, SIGABRT);
    EXPECT_EQ(contentOf(output()).count("The app has been shut down"), 2) << "standard output and raw output";
}

TEST_F(CrashHandlerTest, CrashesThatHoldALockAreReported)
{
    for (int i = 0; i < 20 && !HasFailure(); ++i) {
        const auto crash = [&] {
            setUp();
            crashInsideMalloc();
        };
        expectReport(crash, SIGSEGV, log(), "inside malloc");
    }

    const QString pipe = path(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const int reader = ::open(QFile::encodeName(pipe).constData(), O_RDONLY | O_NONBLOCK); // ... that does not read
    const auto crash = [&] {
        ::dup2(::open(QFile::encodeName(pipe).constData(), O_WRONLY), STDOUT_FILENO);
        manager().setOutToStream(true);
        setUp();
        std::thread([] { qInfo("%s", std::string(1 << 20, 'x').c_str()); }).detach();
        while (QFileInfo(log()).size() < 1 << 20) { }
        std::raise(SIGSEGV); // the other thread is in the log, and will not leave
    };
    expectReport(crash, SIGSEGV, log(), "the log is held up by a full pipe");
    ::close(reader);
}

TEST_F(CrashHandlerTest, FirstInterruptQuitsTheApplicationAndTheSecondEndsItWithAnError)
{
    const std::tuple<int, int, const char*> rows[] = {
        {1, 0, "[INFO]: Quit the application (user request signal):2"}, {2, -1, "[INFO]: Application terminated..."}};
    for (const auto& [times, result, entry] : rows) {
        const Lines lines = logged([this, times = times, result = result] {
            setUp();
            EXPECT_EQ(interruptedLoop(times), result);
        });
        ASSERT_EQ(lines.size(), std::size_t(times));
        EXPECT_EQ(lines.back(), entry);
    }
}

TEST_F(CrashHandlerTest, InterruptsWhileThreadsLog)
{
    constexpr int Interrupts = 1000;
    std::map<std::string, int> count = {{"[INFO]: text", 0}};
    for (const std::string& line : logged([&] {
             qputenv("TZ", "Asia/Kathmandu"); // entries of signal handlers have the local time as well
             ::tzset();
             setUp();
             std::atomic<bool> done{false};
             std::atomic<int> lines{0};
             const auto work = [&](int count) {
                 for (; !done; lines += count) {
                     qInfo() << "text";
                     std::this_thread::yield();
                 }
             };
             std::thread other(work, 0);
             std::thread interrupted(work, 1);
             for (int i = 0; i < Interrupts; ++i) {
                 ::pthread_kill(interrupted.native_handle(), SIGINT);
                 for (const int before = lines; lines < before + 2;) // the signal has arrived by then
                     std::this_thread::yield();
             }
             done = true;
             other.join();
             interrupted.join();
         }))
        ++count[line];
    EXPECT_GT(count["[INFO]: text"], Interrupts);
    EXPECT_EQ(count["[INFO]: Quit the application (user request signal):2"], 1);
    EXPECT_EQ(count["[INFO]: Application terminated..."], Interrupts - 1);
    EXPECT_EQ(count.size(), 3u) << "a line is torn";
    const QStringList lines = linesOf(log());
    EXPECT_TRUE(std::is_sorted(lines.begin(), lines.end(), [](const QString& left, const QString& right) {
        return left.leftRef(26) < right.leftRef(26); // date and time
    }));
}

TEST_F(CrashHandlerTest, IsNotInstalledUnlessAsked)
{
    const Ending ending = runInChild([this] {
        std::signal(SIGINT, SIG_DFL); // it may be ignored by whoever started this
        manager().init();
        std::raise(SIGINT);
    });
    EXPECT_EQ(ending.signal, SIGINT);
}

#include "KnownAnswers.h"
#include "Log/LogTest.h"

#include <QCoreApplication>
#include <QTimer>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <map>

#include <pthread.h>

namespace {

class CrashHandlerTest : public LogTest {
protected:
    void setUp() const
    {
        manager().setCrashHandler(true);
        manager().init();
    }

    /// What a child process writes to `file` that ends by the handler.
    std::string report(const QString& file, const std::function<void()>& crash) const
    {
        QFile::remove(file);
        EXPECT_EQ(runInChild(crash, output()).signal, SIGABRT);
        std::string text;
        for (const std::string& line : entries(file))
            text += line + '\n';
        return text;
    }

    const std::string m_expected = contentOf(dataPath("crashreport.txt")).toStdString(); // up to the first frame
};

int crashOnCompare(const void*, const void*)
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
        for (std::size_t size = 2000;; size = 2000 + size * 7 % 60000)
            isRunning = std::vector<char>(size).front() == 0;
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
    int numbers[] = {1, 2};
    const volatile char first = 1;
    const std::tuple<const char*, std::function<void()>, const char*> rows[] = {
        {"signal 8", [] { std::raise(SIGFPE); }, "[SIGFPE]"}, {"signal 4", [] { std::raise(SIGILL); }, "[SIGILL]"},
        {"frames", [&] { std::qsort(numbers, 2, sizeof(int), crashOnCompare); }, "qsort"},
        {"stack overflow", [&] { std::exit(overflowStack(&first)); }, "    [63] "}};
    for (const auto& [name, crash, part] : rows) {
        const std::string text = report(log(), [this, &crash = crash] {
            setUp();
            crash();
        });
        EXPECT_THAT(text, testing::HasSubstr(part)) << name;
        EXPECT_TRUE(std::string(name).find("signal") == 0 || text.find(m_expected) == 0) << name << text;
    }

    const auto echoed = [&] {
        manager().setOutToStream(true);
        manager().setRawOutput(true);
        setUp();
        std::raise(SIGSEGV);
    };
    EXPECT_THAT(report(log(), echoed), testing::StartsWith(m_expected));
    EXPECT_EQ(contentOf(output()).count("shut down unexpectedly"), 2) << "standard output and raw output";
    const auto disabled = [&] {
        managerWithShadow().setLogLevel(LogManager::Disabled);
        setUp();
        std::raise(SIGSEGV);
    };
    QFile::remove(log());
    EXPECT_THAT(report(shadow(), disabled), testing::StartsWith(m_expected));
    EXPECT_EQ(contentOf(log()).size(), 0);
}

TEST_F(CrashHandlerTest, CrashesWhileALockIsHeldAreReported)
{
    const auto inMalloc = [&] {
        setUp();
        crashInsideMalloc();
    };
    for (int i = 0; i < 20; ++i)
        ASSERT_THAT(report(log(), inMalloc), testing::StartsWith(m_expected));

    const QByteArray pipe = QFile::encodeName(path(QStringLiteral("pipe")));
    ASSERT_EQ(::mkfifo(pipe, 0600), 0);
    const int reader = ::open(pipe, O_RDONLY | O_NONBLOCK); // ... that does not read
    const std::string text = report(log(), [&] {
        ::dup2(::open(pipe, O_WRONLY), STDOUT_FILENO);
        manager().setOutToStream(true);
        setUp();
        std::thread([] { qInfo("%s", std::string(1 << 20, 'x').c_str()); }).detach();
        while (QFileInfo(log()).size() < 1 << 20) { }
        std::raise(SIGSEGV); // the other thread is in the log, and will not leave
    });
    EXPECT_THAT(text, testing::HasSubstr("x\n" + m_expected));
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
    const auto withoutHandler = [this] {
        std::signal(SIGINT, SIG_DFL); // whoever started this may ignore it
        manager().init();
        std::raise(SIGINT);
    };
    EXPECT_EQ(runInChild(withoutHandler).signal, SIGINT);
}

TEST_F(CrashHandlerTest, InterruptsWhileThreadsLog)
{
    constexpr int Interrupts = 1000;
    const Lines lines = logged([&] {
        qputenv("TZ", "Asia/Kathmandu"); // entries of signal handlers have the local time as well
        ::tzset();
        setUp();
        std::atomic<bool> done{false};
        std::atomic<int> written{0};
        const auto work = [&](int count) {
            for (; !done; written += count, std::this_thread::yield())
                qInfo() << "text";
        };
        std::thread other(work, 0);
        std::thread interrupted(work, 1);
        for (int i = 0; i < Interrupts; ++i) {
            ::pthread_kill(interrupted.native_handle(), SIGINT);
            for (const int before = written; written < before + 2;) // the signal has arrived by then
                std::this_thread::yield();
        }
        done = true;
        other.join();
        interrupted.join();
    });
    std::map<std::string, int> count;
    for (const std::string& line : lines)
        ++count[line];
    EXPECT_EQ(count["[INFO]: Quit the application (user request signal):2"], 1);
    EXPECT_EQ(count["[INFO]: Application terminated..."], Interrupts - 1);
    EXPECT_GT(count["[INFO]: text"], Interrupts);
    EXPECT_EQ(count.size(), 3u) << "a line is torn";
    const QStringList file = linesOf(log());
    EXPECT_TRUE(std::is_sorted(file.begin(), file.end(), [](const QString& left, const QString& right) {
        return left.leftRef(26) < right.leftRef(26); // date and time
    }));
}

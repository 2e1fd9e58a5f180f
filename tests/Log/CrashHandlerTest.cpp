#include "KnownAnswers.h"
#include "Log/LogTest.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <ctime>
#include <map>

#include <search.h>

namespace {

class CrashHandlerTest : public LogTest {
protected:
    /// Expects that the handler ends a child process and that its report in `file` contains `function`.
    void expectReport(const QString& file, const std::function<void()>& crash, const char* function = "") const
    {
        QFile::remove(file);
        EXPECT_EQ(runInChild(crash, output()).signal, SIGABRT);
        const Lines lines = entries({file});
        const Lines expected = entries({dataPath("crashreport.txt")});
        const auto report = std::search(lines.begin(), lines.end(), expected.begin(), expected.end());
        ASSERT_NE(report, lines.end()) << testing::PrintToString(lines);
        EXPECT_THAT(Lines(report, lines.end()), testing::Contains(testing::HasSubstr(function)));
    }
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

void crashInsideMalloc()
{
    std::atomic<bool> isRunning{false};
    std::thread thread([&isRunning] {
        for (std::size_t size = 2000;; size = 2000 + size * 7 % 60000)
            isRunning = std::vector<char>(size).front() == 0;
    });
    while (!isRunning)
        std::this_thread::yield();
    ::pthread_kill(thread.native_handle(), SIGSEGV); // in malloc() most of the time
    thread.join();
}

} // namespace

TEST_F(CrashHandlerTest, CrashesAreReported)
{
    for (const auto& [signal, name] : {std::pair(SIGFPE, "[SIGFPE]"), std::pair(SIGILL, "[SIGILL]")}) {
        const auto work = [this, signal = signal] {
            manager().init();
            std::raise(signal);
        };
        EXPECT_EQ(runInChild(work).signal, SIGABRT);
        EXPECT_THAT(entries({log()}), testing::Contains(testing::HasSubstr(name)));
    }
    const auto searching = [&] {
        manager().init();
        int numbers[] = {1, 2};
        std::size_t count = 2;
        ::lfind(numbers, numbers, &count, sizeof(int), crashOnCompare);
    };
    expectReport(log(), searching, "lfind");
    const auto overflowing = [&] {
        manager().init();
        const volatile char first = 1;
        std::exit(overflowStack(&first));
    };
    expectReport(log(), overflowing, "    [63] ");
    const auto inMalloc = [&] {
        manager().init();
        crashInsideMalloc();
    };
    for (int i = 0; i < 20 && !HasFailure(); ++i)
        expectReport(log(), inMalloc);
    const auto echoed = [&] {
        manager().setOutToStream(true);
        manager().setRawOutput(true);
        manager().init();
        std::raise(SIGSEGV);
    };
    QFile::remove(output());
    expectReport(log(), echoed);
    EXPECT_EQ(contentOf(output()).count("shut down unexpectedly"), 2) << "standard output and raw output";
    const auto disabled = [&] {
        manager(true).setLogLevel(LogManager::Disabled);
        LogManager::instance().init();
        std::raise(SIGSEGV);
    };
    QFile::remove(log());
    expectReport(shadow(), disabled);
    EXPECT_EQ(contentOf(log()).size(), 0);
}

TEST_F(CrashHandlerTest, ReportedWhileTheLogIsBlocked)
{
    const QByteArray pipe = QFile::encodeName(path("pipe"));
    ASSERT_EQ(::mkfifo(pipe, 0600), 0);
    const int reader = ::open(pipe, O_RDONLY | O_NONBLOCK); // never reads
    const auto blocked = [&] {
        ::dup2(::open(pipe, O_WRONLY), STDOUT_FILENO);
        manager().setOutToStream(true);
        manager().init();
        std::thread([] { qInfo("%s", std::string(1 << 20, 'x').c_str()); }).detach();
        while (QFileInfo(log()).size() < 1 << 20) { }
        std::raise(SIGSEGV); // the other thread blocks while it holds the lock
    };
    expectReport(log(), blocked);
    ::close(reader);
}

TEST_F(CrashHandlerTest, InterruptsQuitTheApplication)
{
    const Lines expected = {
        "[INFO]: Quit the application (user request signal):2", "[INFO]: Application terminated..."};
    for (int times = 1; times <= 2; ++times) {
        const auto work = [this, times] {
            manager().init();
            int argc = 1;
            char name[] = "test";
            char* argv[] = {name, nullptr};
            const QCoreApplication application(argc, argv);
            QTimer::singleShot(0, [times] {
                for (int i = 0; i < times; ++i)
                    std::raise(SIGINT);
            });
            EXPECT_EQ(QCoreApplication::exec(), times == 1 ? 0 : -1);
        };
        EXPECT_EQ(logged(work), Lines(expected.begin(), expected.begin() + times));
    }
    const auto withoutHandler = [this] {
        std::signal(SIGINT, SIG_DFL); // the parent process may ignore it
        manager().setCrashHandler(false);
        LogManager::instance().init();
        std::raise(SIGINT);
    };
    EXPECT_EQ(runInChild(withoutHandler).signal, SIGINT);
}

TEST_F(CrashHandlerTest, InterruptsWhileThreadsLog)
{
    constexpr int Interrupts = 1000;
    std::map<std::string, int> count;
    for (const std::string& line : logged([&] {
             qputenv("TZ", "Asia/Kathmandu"); // signal handlers use local time too
             ::tzset();
             manager().init();
             std::atomic<bool> done{false};
             std::atomic<int> written{0};
             const auto work = [&](int count) {
                 for (; !done; written += count, std::this_thread::yield())
                     qInfo("text");
             };
             std::thread other(work, 0);
             std::thread interrupted(work, 1);
             for (int i = 0; i < Interrupts; ++i) {
                 ::pthread_kill(interrupted.native_handle(), SIGINT);
                 for (const int before = written; written < before + 2;) // the signal has been delivered by then
                     std::this_thread::yield();
             }
             done = true;
             other.join();
             interrupted.join();
         }))
        ++count[line];
    EXPECT_EQ(count["[INFO]: Quit the application (user request signal):2"], 1);
    EXPECT_EQ(count["[INFO]: Application terminated..."], Interrupts - 1);
    EXPECT_GT(count["[INFO]: text"], Interrupts);
    EXPECT_EQ(count.size(), 3u) << "a line is torn";
    const QList<QByteArray> lines = contentOf(log()).split('\n');
    EXPECT_TRUE(std::is_sorted(lines.begin(), lines.end() - 1,
        [](const QByteArray& left, const QByteArray& right) { return left.left(26) < right.left(26); })); // the times
}

#include "KnownAnswers.h"
#include "Log/LogTest.h"

#include <QCoreApplication>
#include <QTimer>

#include <ctime>
#include <map>

namespace {

class CrashHandlerTest : public LogTest {
protected:
    void setUp(bool hasShadow = false) const
    {
        manager(hasShadow).setCrashHandler(true);
        LogManager::instance().init();
    }

    /// What a child process writes to `file` that ends by the handler.
    std::string report(const QString& file, const std::function<void()>& crash) const
    {
        QFile::remove(file);
        EXPECT_EQ(runInChild(crash, output()).signal, SIGABRT);
        std::string text;
        for (const std::string& line : entries({file}))
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

void crashInsideMalloc()
{
    std::atomic<bool> isRunning{false};
    std::thread thread([&isRunning] {
        for (std::size_t size = 2000;; size = 2000 + size * 7 % 60000)
            isRunning = std::vector<char>(size).front() == 0;
    });
    while (!isRunning)
        std::this_thread::yield();
    ::pthread_kill(thread.native_handle(), SIGSEGV); // not always, but most of the time
    thread.join();
}

} // namespace

TEST_F(CrashHandlerTest, CrashesAreReported)
{
    int numbers[] = {1, 2};
    const volatile char first = 1;
    const std::tuple<int, std::function<void()>, const char*> rows[] = {
        {SIGFPE, [] { std::raise(SIGFPE); }, "[SIGFPE]"}, {SIGILL, [] { std::raise(SIGILL); }, "[SIGILL]"},
        {SIGSEGV, [&] { std::qsort(numbers, 2, sizeof(int), crashOnCompare); }, "qsort"},
        {SIGSEGV, [&] { std::exit(overflowStack(&first)); }, "    [63] "}};
    for (const auto& [signal, crash, part] : rows) {
        const auto work = [this, &crash = crash] {
            setUp();
            crash();
        };
        const std::string text = report(log(), work);
        EXPECT_THAT(text, testing::HasSubstr(part));
        EXPECT_EQ(text.find(m_expected) == 0, signal == SIGSEGV) << text;
    }
    for (int i = 0; i < 20; ++i) {
        const auto work = [this] {
            setUp();
            crashInsideMalloc();
        };
        ASSERT_THAT(report(log(), work), testing::StartsWith(m_expected));
    }
}

TEST_F(CrashHandlerTest, ReportsGoWhereEntriesGoAndToTheShadowLog)
{
    const auto echoed = [&] {
        manager().setOutToStream(true);
        manager().setRawOutput(true);
        setUp();
        std::raise(SIGSEGV);
    };
    EXPECT_THAT(report(log(), echoed), testing::StartsWith(m_expected));
    EXPECT_EQ(contentOf(output()).count("shut down unexpectedly"), 2) << "standard output and raw output";
    QFile::remove(log());
    const auto disabled = [&] {
        manager().setLogLevel(LogManager::Disabled);
        setUp(true);
        std::raise(SIGSEGV);
    };
    EXPECT_THAT(report(shadow(), disabled), testing::StartsWith(m_expected));
    EXPECT_EQ(contentOf(log()).size(), 0);

    const QByteArray pipe = QFile::encodeName(path("pipe"));
    ASSERT_EQ(::mkfifo(pipe, 0600), 0);
    const int reader = ::open(pipe, O_RDONLY | O_NONBLOCK); // ... that does not read
    const auto heldUp = [&] {
        ::dup2(::open(pipe, O_WRONLY), STDOUT_FILENO);
        manager().setOutToStream(true);
        setUp();
        std::thread([] { qInfo("%s", std::string(1 << 20, 'x').c_str()); }).detach();
        while (QFileInfo(log()).size() < 1 << 20) { }
        std::raise(SIGSEGV); // the other thread is in the log, and will not leave
    };
    EXPECT_THAT(report(log(), heldUp), testing::HasSubstr("x\n" + m_expected));
    ::close(reader);
}

TEST_F(CrashHandlerTest, FirstInterruptQuitsTheApplicationAndTheSecondEndsItWithAnError)
{
    const Lines expected = {
        "[INFO]: Quit the application (user request signal):2", "[INFO]: Application terminated..."};
    for (int times = 1; times <= 2; ++times) {
        const auto work = [this, times] {
            setUp();
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
        std::signal(SIGINT, SIG_DFL); // whoever started this may ignore it
        manager().init();
        std::raise(SIGINT);
    };
    EXPECT_EQ(runInChild(withoutHandler).signal, SIGINT);
}

TEST_F(CrashHandlerTest, InterruptsWhileThreadsLog)
{
    constexpr int Interrupts = 1000;
    std::map<std::string, int> count;
    for (const std::string& line : logged([&] {
             qputenv("TZ", "Asia/Kathmandu"); // entries of signal handlers have the local time as well
             ::tzset();
             setUp();
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
                 for (const int before = written; written < before + 2;) // the signal has arrived by then
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

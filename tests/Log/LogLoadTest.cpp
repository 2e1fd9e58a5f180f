#include "Log/LogTest.h"

namespace {

using LogLoad = LogTest;

constexpr int Threads = 16;
constexpr int LinesEach = ORV_LOAD_LINES / Threads;

} // namespace

TEST_F(LogLoad, NoLineIsLostAtRotations)
{
    for (const bool hasShadow : {false, true}) {
        for (const QString& file : logs())
            QFile::remove(file);
        expectInChild([&] {
            manager(hasShadow).init();
            inThreads(Threads, [](int thread) {
                for (int number = 0; number < LinesEach; ++number)
                    qInfo("%d %d end", thread, number);
            });
        });
        EXPECT_GE(logs().size(), 2);
        EXPECT_GE(QFileInfo(logs().first()).size(), 2097152);
        const Lines lines = entries(logs());
        std::vector<int> next(Threads, 0);
        for (const std::string& line : lines) {
            int thread = -1;
            int number = -1;
            char end = 0;
            std::sscanf(line.c_str(), "[INFO]: %d %d en%c", &thread, &number, &end);
            ASSERT_TRUE(end == 'd' && thread >= 0 && thread < Threads && number == next[size_t(thread)]++) << line;
        }
        EXPECT_THAT(next, testing::Each(LinesEach));
        EXPECT_TRUE(!hasShadow || entries({shadow()}) == lines) << "same order in both logs";
    }
}

TEST_F(LogLoad, ForkedProcessesLog)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's allocator may be locked in a forked process";
#endif
    constexpr int Children = ORV_LOAD_LINES / 1000;
    expectInChild([&] {
        manager().init();
        qInfo("first"); // initialises Qt: a fork during that would leave its locks taken
        OrvDebug("a").info() << "first";
        std::atomic<bool> done{false};
        inThreads(4, [&](int thread) {
            while (thread > 1 && !done)
                qInfo("text");
            while (thread == 1 && !done)
                std::thread([] { OrvDebug("a").info() << "text"; }).join(); // also locks the thread numbers
            for (int i = 0; thread == 0 && i < Children && !HasFailure(); ++i) {
                const Ending ending = runInChild([] {
                    OrvDebug("a").info() << "child";
                    ::_exit(0);
                });
                EXPECT_EQ(ending.exitCode, 0);
            }
            done = true;
        });
    });
    int children = 0;
    for (const std::string& line : entries(logs()))
        children += line.find("] child") != std::string::npos;
    EXPECT_EQ(children, Children);
}

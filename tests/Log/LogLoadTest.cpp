#include "Log/LogTest.h"

#include <algorithm>
#include <atomic>
#include <fstream>

namespace {

constexpr int Threads = 16;
constexpr int LinesEach = ORV_LOAD_LINES / Threads;

/// Without date and time, which each log takes for itself.
Lines linesWithoutTime(const QStringList& paths)
{
    constexpr std::size_t TimeSize = sizeof("2024-01-31 23:59:59,123456 ") - 1;
    Lines lines;
    for (const QString& path : paths) {
        std::ifstream file(path.toStdString());
        for (std::string line; std::getline(file, line);)
            lines.push_back(line.substr(std::min(TimeSize, line.size())));
    }
    return lines;
}

void expectOrderWithinEachThread(const Lines& lines)
{
    std::vector<int> next(Threads, 0);
    for (const std::string& line : lines) {
        int thread = -1;
        int number = -1;
        char end = 0;
        ASSERT_EQ(std::sscanf(line.c_str(), "[INFO]: %d %d en%c", &thread, &number, &end), 3) << line;
        ASSERT_TRUE(thread >= 0 && thread < Threads && end == 'd') << line;
        ASSERT_EQ(number, next[size_t(thread)]++) << line;
    }
    EXPECT_THAT(next, testing::Each(LinesEach));
}

} // namespace

using LogLoad = LogTest;

TEST_F(LogLoad, NoLineIsLostAtRotations)
{
    for (const bool hasShadow : {false, true}) {
        expectInChild([&] {
            (hasShadow ? managerWithShadow(QStringLiteral("both")) : manager()).init();
            inThreads(Threads, [](int thread) {
                for (int number = 0; number < LinesEach; ++number)
                    qInfo("%d %d end", thread, number);
            });
        });
        const QString folder = hasShadow ? QStringLiteral("both") : QString();
        EXPECT_GE(rotated(folder).size(), 1);
        const Lines lines = linesWithoutTime(rotated(folder) + QStringList(log(folder)));
        expectOrderWithinEachThread(lines);
        EXPECT_TRUE(!hasShadow || linesWithoutTime({shadow()}) == lines) << "both logs have the lines in one order";
    }
}

TEST_F(LogLoad, ForkedProcessesLog)
{
    constexpr int Children = ORV_LOAD_LINES / 1000;
    expectInChild([&] {
        manager().init();
        std::atomic<bool> done{false};
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&done] {
                while (!done)
                    std::thread([] { OrvDebug("a").info() << "text"; }).join(); // takes every lock of a line
            });
        }
        for (int i = 0; i < Children && !testing::Test::HasFailure(); ++i) {
            const pid_t child = ::fork();
            if (child == 0) {
                ::alarm(10);
                OrvDebug("a").info() << "child";
                ::_exit(0);
            }
            int status = 0;
            ::waitpid(child, &status, 0);
            EXPECT_EQ(status, 0);
        }
        done = true;
        for (std::thread& thread : threads)
            thread.join();
    });
    int children = 0;
    for (const std::string& line : linesWithoutTime(rotated() + QStringList(log())))
        children += line.substr(line.size() - std::min<std::size_t>(line.size(), 5)) == "child";
    EXPECT_EQ(children, Children);
}

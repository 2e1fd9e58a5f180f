#include "KnownAnswers.h"
#include "Log/ChildProcess.h"
#include "ScopedTimeZone.h"
#include "Utility/TimeDuration_p.h"

#include <Orv/Utility/TimeDuration.h>

#include <atomic>
#include <thread>

namespace {

/// Formats a duration in 16 concurrent threads. Returns the number of wrong results.
int wrongResultsOfThreads()
{
    constexpr int ThreadCount = 16;
    std::atomic<int> waiting{ThreadCount};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < ThreadCount; ++i) {
        threads.emplace_back([&waiting, &wrong] {
            for (--waiting; waiting > 0;)
                std::this_thread::yield();
            wrong += Orv::Utility::TimeDuration::toString(3661) != QLatin1String("01:01:01");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    return wrong;
}

} // namespace

// A race in the first use of Qt's calendars yielded an empty string in one of a few hundred processes. The death test
// restarts the test program, so no other test has used the calendars before.
TEST(TimeDurationDeathTest, FirstUseInSeveralThreads)
{
    if (ORV_FORKS == 0)
        GTEST_SKIP() << "the thread sanitizer does not see the lock of the C library";
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto isRightInEachProcess = [] {
        for (int i = 0; i < ORV_FORKS; ++i) {
            if (runInChild([] { ::_exit(wrongResultsOfThreads()); }).exitCode != 0)
                return false;
        }
        return true;
    };
    EXPECT_EXIT(::_exit(isRightInEachProcess() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(TimeDuration, Texts)
{
    for (const KnownAnswer& row : tableOfAnswers("durations.txt")) {
        SCOPED_TRACE(row["row"].constData());
        const auto zone = scopedTimeZone(row["zone"]);
        const QDateTime start = QDate::fromString(row["day"], Qt::ISODate).startOfDay();
        const int seconds = row["seconds"].toInt();
        EXPECT_EQ(Orv::Utility::durationText(start, seconds), row["text"]);
        if (row["zone"] == "UTC") { // every day has 24 hours
            EXPECT_EQ(Orv::Utility::TimeDuration::toString(seconds), row["text"]);
        }
    }
}

#include "ScopedTimeZone.h"
#include "Utility/TimeDuration_p.h"

#include <Orv/Utility/TimeDuration.h>

#include <gtest/gtest.h>

#include <limits>

using Orv::Utility::TimeDuration;

TEST(TimeDuration, WithoutDaylightSaving)
{
    const ScopedTimeZone zone("UTC");
    const std::pair<int, const char*> rows[] = {{0, "00:00:00"}, {59, "00:00:59"}, {3661, "01:01:01"},
        {86399, "23:59:59"}, {86400, "1.00:00:00"}, {90061, "1.01:01:01"}, {10 * 86400 - 1, "9.23:59:59"},
        {1000 * 86400, "1000.00:00:00"}, {-60, "23:59:00"}, {-86400, "00:00:00"}, {-86460, "23:59:00"},
        {std::numeric_limits<int>::max(), "24855.03:14:07"}, {std::numeric_limits<int>::min(), "20:45:52"}};
    for (const auto& [seconds, expected] : rows)
        EXPECT_EQ(TimeDuration::toString(seconds).toStdString(), expected) << seconds;
}

TEST(TimeDuration, DaysWithAChange)
{
    struct Row {
        const char* zone;
        QDate day;
        int seconds;
        const char* expected;
    };
    const QDate spring(2024, 3, 31);
    const QDate autumn(2024, 10, 27);
    const Row rows[] = {
        {"Europe/Berlin", spring, 3 * 3600, "03:00:00"},
        {"Europe/Berlin", spring, 23 * 3600 - 1, "22:59:59"},
        {"Europe/Berlin", spring, 23 * 3600, "1.00:00:00"}, // the day has no more
        {"Europe/Berlin", spring, 86400, "1.01:00:00"},
        {"Europe/Berlin", autumn, 86399, "23:59:59"},
        {"Europe/Berlin", autumn, 86400, "00:00:00"}, // the day's 25th hour goes round
        {"Europe/Berlin", autumn, 25 * 3600, "1.00:00:00"},
        {"America/Sao_Paulo", QDate(2018, 11, 4), 3661, "01:01:01"}, // a day that begins at one o'clock
        {"America/Sao_Paulo", QDate(2018, 11, 4), 23 * 3600, "1.00:00:00"},
        {"America/Sao_Paulo", QDate(2018, 11, 4), -60, "23:59:00"},
    };
    for (const Row& row : rows) {
        const ScopedTimeZone zone(row.zone);
        EXPECT_EQ(Orv::Utility::durationText(row.day.startOfDay(), row.seconds).toStdString(), row.expected)
            << row.zone << " " << row.day.toString().toStdString() << " " << row.seconds;
    }
}

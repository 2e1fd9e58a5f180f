#include "ScopedTimeZone.h"

#include <Orv/Utility/DateTimeCompare.h>

#include <gtest/gtest.h>

using Orv::Utility::DateTimeCompare;

TEST(DateTimeCompare, Precisions)
{
    const auto precise = DateTimeCompare::Precise;
    const auto seconds = DateTimeCompare::Seconds;
    const auto minutes = DateTimeCompare::Minutes;
    const auto unknown = static_cast<DateTimeCompare::Mode>(7);
    struct Row {
        DateTimeCompare::Mode mode;
        const char* a;
        const char* b;
        int order; // of a and b: -1, 0 or 1
    };
    const Row rows[] = {
        {precise, "10:00:00.000", "10:00:00.999", -1},
        {unknown, "10:00:00.000", "10:00:00.999", -1},
        {seconds, "10:00:00.000", "10:00:00.999", 0},
        {seconds, "10:00:00.000", "10:00:59.999", -1},
        {minutes, "10:00:00.000", "10:00:59.999", 0},
        {minutes, "10:01:00.000", "10:00:59.999", 1},
        {seconds, "10:00:01.000", "10:00:00.999", 1},
        {precise, "10:00:30.500", "11:00:30.500", -1},
        {seconds, "10:00:30.500", "11:00:30.500", -1},
        {minutes, "10:00:30.500", "11:00:30.500", -1},
        {precise, "10:00:30.500", "10:00:30.500", 0},
    };
    const ScopedTimeZone zone("Europe/Berlin");
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.a) + " " + row.b + " " + std::to_string(row.mode));
        const QDateTime a(QDate(2024, 1, 31), QTime::fromString(row.a), Qt::LocalTime);
        const QDateTime b = QDateTime(QDate(2024, 1, 31), QTime::fromString(row.b), Qt::LocalTime).toUTC();
        const DateTimeCompare compare(row.mode);
        EXPECT_EQ(compare.equal(a, b), row.order == 0);
        EXPECT_EQ(compare.notEqual(a, b), row.order != 0);
        EXPECT_EQ(compare.less(a, b, false), row.order < 0);
        EXPECT_EQ(compare.less(a, b, true), row.order <= 0);
        EXPECT_EQ(compare.greater(a, b, false), row.order > 0);
        EXPECT_EQ(compare.greater(a, b, true), row.order >= 0);
    }
}

TEST(DateTimeCompare, InvalidTimes)
{
    const QDateTime valid(QDate(2024, 1, 31), QTime(0, 0), Qt::UTC);
    for (const auto mode : {DateTimeCompare::Precise, DateTimeCompare::Seconds, DateTimeCompare::Minutes}) {
        EXPECT_TRUE(DateTimeCompare(mode).equal({}, {}));
        EXPECT_EQ(DateTimeCompare(mode).equal({}, valid), QDateTime() == valid);
    }
}

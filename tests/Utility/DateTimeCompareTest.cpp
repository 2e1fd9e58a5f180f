#include "KnownAnswers.h"
#include "ScopedTimeZone.h"

#include <Orv/Utility/DateTimeCompare.h>

using Orv::Utility::DateTimeCompare;

TEST(DateTimeCompare, Precisions)
{
    using Compare = DateTimeCompare;
    const QMap<QByteArray, Compare::Mode> modes = {{"precise", Compare::Precise}, {"seconds", Compare::Seconds},
        {"minutes", Compare::Minutes}, {"unknown", static_cast<Compare::Mode>(7)}};
    const auto zone = scopedTimeZone("Europe/Berlin");
    for (const KnownAnswer& row : tableOfAnswers("datetimes.txt")) {
        SCOPED_TRACE(row["row"].constData());
        const int order = row["order"].toInt();
        const QDateTime a(QDate(2024, 1, 31), QTime::fromString(row["a"]), Qt::LocalTime);
        const QDateTime b = QDateTime(QDate(2024, 1, 31), QTime::fromString(row["b"]), Qt::LocalTime).toUTC();
        const DateTimeCompare compare(modes[row["mode"]]);
        EXPECT_EQ(compare.equal(a, b), order == 0);
        EXPECT_EQ(compare.notEqual(a, b), order != 0);
        EXPECT_EQ(compare.less(a, b, false), order < 0);
        EXPECT_EQ(compare.less(a, b, true), order <= 0);
        EXPECT_EQ(compare.greater(a, b, false), order > 0);
        EXPECT_EQ(compare.greater(a, b, true), order >= 0);
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

#include "KnownAnswers.h"
#include "ScopedTimeZone.h"
#include "Utility/TimeDuration_p.h"

#include <Orv/Utility/TimeDuration.h>

#include <gtest/gtest.h>

TEST(TimeDuration, Texts)
{
    for (const KnownAnswer& row : tableOfAnswers("durations.txt")) {
        const ScopedTimeZone zone(row["zone"].constData());
        const QDateTime start = QDate::fromString(row["day"], Qt::ISODate).startOfDay();
        const int seconds = row["seconds"].toInt();
        EXPECT_EQ(Orv::Utility::durationText(start, seconds), QString(row["text"])) << row["zone"].constData();
        if (row["zone"] == "UTC") { // where no day is another
            EXPECT_EQ(Orv::Utility::TimeDuration::toString(seconds), QString(row["text"]));
        }
    }
}

#include "KnownAnswers.h"
#include "ScopedTimeZone.h"
#include "Utility/TimeDuration_p.h"

#include <Orv/Utility/TimeDuration.h>

TEST(TimeDuration, Texts)
{
    for (const KnownAnswer& row : tableOfAnswers("durations.txt")) {
        SCOPED_TRACE(row["row"].constData());
        const auto zone = scopedTimeZone(row["zone"]);
        const QDateTime start = QDate::fromString(row["day"], Qt::ISODate).startOfDay();
        const int seconds = row["seconds"].toInt();
        EXPECT_EQ(Orv::Utility::durationText(start, seconds), row["text"]);
        if (row["zone"] == "UTC") { // where no day is another
            EXPECT_EQ(Orv::Utility::TimeDuration::toString(seconds), row["text"]);
        }
    }
}

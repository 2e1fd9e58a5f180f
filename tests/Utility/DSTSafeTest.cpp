#include "DirectoryTest.h"
#include "KnownAnswers.h"
#include "ScopedTimeZone.h"

#include <Orv/Utility/DSTSafe.h>

#include <QTimeZone>

#include <utmpx.h>

using Orv::Utility::DSTSafe;

TEST(DSTSafe, TimesInAGap)
{
    for (const KnownAnswer& row : tableOfAnswers("dst.txt")) {
        SCOPED_TRACE(row["row"].constData());
        const auto zone = scopedTimeZone(row["zone"]);
        const QDate date = QDate::fromString(QString(row["time"]).left(10), Qt::ISODate);
        const QTime time = QTime::fromString(QString(row["time"]).mid(11), Qt::ISODateWithMs);
        const DSTSafe safe = DSTSafe(QDateTime(date, time, Qt::UTC));
        EXPECT_EQ(safe.toQDateTime().toString(Qt::ISODateWithMs), row["local"]);
        EXPECT_TRUE(safe.toQDateTime().isValid());
        EXPECT_EQ(safe.toQDateTime().timeSpec(), Qt::LocalTime);
        EXPECT_EQ(safe.toUTCQDateTime().toString(Qt::ISODateWithMs), row["time"] + "Z");
    }
}

TEST(DSTSafe, KeepsTheWallClock)
{
    const auto zone = scopedTimeZone("America/New_York");
    const QDateTime utc(QDate(2024, 7, 1), QTime(12, 34, 56, 789), Qt::UTC);
    EXPECT_EQ(DSTSafe(utc).toQDateTime(), QDateTime(utc.date(), utc.time()));
    EXPECT_EQ(DSTSafe::fromVariant(utc).toQDateTime(), QDateTime(utc.date(), utc.time()));
    DSTSafe safe(utc);
    EXPECT_EQ(&safe.setDate(QDate(2024, 3, 10)).setTime(QTime(2, 30)), &safe);
    EXPECT_EQ(safe.toQDateTime().toString(Qt::ISODateWithMs), "2024-03-10T03:30:00.000");

    const QDateTime zoned(QDate(2024, 3, 10), QTime(2, 30), QTimeZone("Asia/Kolkata"));
    EXPECT_EQ(DSTSafe::check(zoned), zoned) << "valid times are unchanged";
    EXPECT_EQ(DSTSafe::check(zoned).timeZone(), zoned.timeZone());

    const QDateTime before = QDateTime::currentDateTime();
    const QDateTime now = DSTSafe().toUTCQDateTime();
    const QDateTime after = QDateTime::currentDateTime();
    EXPECT_TRUE(DSTSafe(before).toUTCQDateTime() <= now && now <= DSTSafe(after).toUTCQDateTime());
}

TEST(DSTSafe, ShrinkSeconds)
{
    for (const Qt::TimeSpec kind : {Qt::LocalTime, Qt::UTC}) {
        QDateTime time(QDate(2024, 7, 1), QTime(10, 17, 59, 999), kind);
        EXPECT_EQ(&Orv::Utility::shrinkSeconds(time), &time);
        EXPECT_EQ(time, QDateTime(QDate(2024, 7, 1), QTime(10, 17), kind));
        EXPECT_EQ(time.timeSpec(), kind);
    }
}

using DateTimeBoot = DirectoryTest;

TEST_F(DateTimeBoot, ReadsTheNextRecord)
{
    const QString path = pathOf("utmp");
    QByteArray records;
    for (const auto& [type, seconds] :
        {std::pair(USER_PROCESS, 1), {BOOT_TIME, 1700000000}, {RUN_LVL, 2}, {BOOT_TIME, -1}}) {
        utmpx entry{};
        entry.ut_type = static_cast<short>(type);
        entry.ut_tv.tv_sec = seconds;
        records.append(reinterpret_cast<const char*>(&entry), sizeof entry);
    }
    writeFile(path, records);

    ::utmpxname(QFile::encodeName(path).constData());
    ::setutxent();
    EXPECT_EQ(Orv::Utility::dateTimeBoot(), QDateTime::fromSecsSinceEpoch(1700000000));
    EXPECT_EQ(Orv::Utility::dateTimeBoot(), QDateTime::fromSecsSinceEpoch(4294967295)) << "seconds are unsigned";
    EXPECT_FALSE(Orv::Utility::dateTimeBoot().isValid());
    ::endutxent();
}

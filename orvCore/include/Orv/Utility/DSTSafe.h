#pragma once

#include <Orv/Export.h>

#include <QDateTime>
#include <QVariant>

namespace Orv::Utility {

/// A local date and time of day that converts to a valid date-time, even if daylight saving skips that hour.
/// Resolution: milliseconds. The time zone is always the machine's.
class ORV_EXPORT DSTSafe {
public:
    /// The current date and time.
    DSTSafe();
    /// The wall-clock date and time of `dt`; its time zone is ignored. Implicit, so that a QDateTime can be passed.
    DSTSafe(const QDateTime& dt);
    /// Constructs from `v.toDateTime()`.
    static DSTSafe fromVariant(const QVariant& v);

    /// Returns `dt` if it is valid. Moves a time in a gap by the daylight-saving offset of the zone's next transition:
    /// 02:30 becomes 03:30 where 02:00 to 03:00 is skipped.
    ///
    /// This uses the DST offset, not the length of the gap; where they differ, the result is off by the difference. In
    /// zones with a negative DST offset in winter (Dublin, Casablanca), the time moves back an hour: 01:30 in Dublin on
    /// 2024-03-31 becomes 00:30. In a zone without further transitions, a time in a past gap moves 2^31 seconds (about
    /// 68 years) back. A null value yields a time around 1970 or around 1902.
    static QDateTime check(const QDateTime& dt);

    ///@{
    /// Replaces the time or the date. Returns the object.
    DSTSafe& setTime(const QTime& time);
    DSTSafe& setDate(const QDate& date);
    ///@}

    /// Returns the local time, adjusted by `check`.
    QDateTime toQDateTime() const;
    /// Returns the same wall-clock date and time, in UTC.
    QDateTime toUTCQDateTime() const;

private:
    QDate m_date;
    QTime m_time;
};

/// Sets the seconds and milliseconds of `dt` to 0. Returns `dt`.
ORV_EXPORT QDateTime& shrinkSeconds(QDateTime& dt);

/// Returns the system's boot time in local time, from the next boot record of the user-accounting database; invalid if
/// there is none. Reading continues at the process's current position in the database, so a second call returns the
/// next boot record, if there is one. Not safe if other code in the process uses `getutxent`.
ORV_EXPORT QDateTime dateTimeBoot();

} // namespace Orv::Utility

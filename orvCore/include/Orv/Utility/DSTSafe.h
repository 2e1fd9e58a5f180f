#pragma once

#include <Orv/Export.h>

#include <QDateTime>
#include <QVariant>

namespace Orv::Utility {

/// A date and a time of day in local time that becomes a valid date-time on demand, also when daylight saving skips
/// that hour of that day. Resolution: milliseconds. No zone is kept: it is always the machine's.
class ORV_EXPORT DSTSafe {
public:
    /// Now.
    DSTSafe();
    /// The wall-clock date and time of `dt`, whatever zone it is in. Implicit: the one stands for the other.
    DSTSafe(const QDateTime& dt);
    /// Of `v.toDateTime()`.
    static DSTSafe fromVariant(const QVariant& v);

    /// `dt` if it is valid. A time in a gap is moved by the daylight-saving offset of the zone's next change, and by
    /// nothing else: 02:30 becomes 03:30 where 02:00 to 03:00 is skipped.
    ///
    /// So the result is off where that offset is not the length of the gap. In zones whose winter time counts as the
    /// one with an offset, of minus an hour (Dublin, Casablanca), the time moves back an hour: 01:30 in Dublin on
    /// 2024-03-31 becomes 00:30. In a zone that has no further change, a gap of the past gives a time 2^31 seconds
    /// (about 68 years) earlier. A null value gives a time about 1970 or 68 years before it.
    static QDateTime check(const QDateTime& dt);

    ///@{
    /// Replaces one half. Returns the object.
    DSTSafe& setTime(const QTime& time);
    DSTSafe& setDate(const QDate& date);
    ///@}

    /// As local time, checked.
    QDateTime toQDateTime() const;
    /// The same wall-clock date and time, in UTC.
    QDateTime toUTCQDateTime() const;

private:
    QDate m_date;
    QTime m_time;
};

/// Sets seconds and milliseconds of `dt` to 0, and returns it.
ORV_EXPORT QDateTime& shrinkSeconds(QDateTime& dt);

/// When the system was booted, in local time: the next boot record of the user-accounting database, invalid if there is
/// none. The database is read on from where the process stands in it, so a second call looks for a further record.
/// Not safe against other users of `getutxent` in the process.
ORV_EXPORT QDateTime dateTimeBoot();

} // namespace Orv::Utility

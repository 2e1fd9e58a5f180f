#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// Formats durations for display. Stateless.
class ORV_EXPORT TimeDuration {
public:
    /// Returns a duration in seconds as "hh:mm:ss"; from one day on, preceded by the number of days: "1.01:01:01" for
    /// 90061.
    ///
    /// Days are counted in the local calendar from the start of today. On a day with a daylight-saving transition,
    /// durations of a day and more therefore differ from plain arithmetic by the hour that this day is longer or
    /// shorter. A negative duration yields the
    /// time of day that long before midnight: "23:59:00" for -60.
    static QString toString(int seconds);
};

} // namespace Orv::Utility

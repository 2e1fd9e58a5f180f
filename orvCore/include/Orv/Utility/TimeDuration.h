#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// Durations as texts for people. Stateless.
class ORV_EXPORT TimeDuration {
public:
    /// A duration in seconds as "hh:mm:ss", and from a day on with the number of days before it: "1.01:01:01" for
    /// 90061.
    ///
    /// Days and time are those of the local calendar, counted from the beginning of today. So on a day with a
    /// daylight-saving change, durations of a day and more differ from plain arithmetic by the hour that the day is
    /// longer or shorter. A negative duration gives the time of day that is so long before midnight: "23:59:00" for
    /// -60.
    static QString toString(int seconds);
};

} // namespace Orv::Utility

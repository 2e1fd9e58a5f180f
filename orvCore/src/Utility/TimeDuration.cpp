#include <Orv/Utility/TimeDuration.h>

#include "Utility/TimeDuration_p.h"

namespace Orv::Utility {

QString TimeDuration::toString(int seconds)
{
    // Not simply midnight: there are days without one, where daylight saving begins at that hour.
    return durationText(QDate::currentDate().startOfDay(), seconds);
}

} // namespace Orv::Utility

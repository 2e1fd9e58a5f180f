#include <Orv/Utility/TimeDuration.h>

#include "Utility/TimeDuration_p.h"

namespace Orv::Utility {

QString durationText(const QDateTime& startOfDay, int seconds)
{
    const QDateTime end = startOfDay.addSecs(seconds);
    const qint64 days = startOfDay.daysTo(end);
    const qint64 rest = startOfDay.date().addDays(days).startOfDay().secsTo(end);
    // An hour that a day has too many goes round, as on a clock.
    // Not by QTime::toString(), which may give nothing while other threads are setting up Qt's calendars.
    const QTime time = QTime(0, 0).addSecs(static_cast<int>(rest));
    const QString text = QStringLiteral("%1:%2:%3")
                             .arg(time.hour(), 2, 10, QLatin1Char('0'))
                             .arg(time.minute(), 2, 10, QLatin1Char('0'))
                             .arg(time.second(), 2, 10, QLatin1Char('0'));
    return days > 0 ? QStringLiteral("%1.%2").arg(days).arg(text) : text;
}

QString TimeDuration::toString(int seconds)
{
    // Not simply midnight: there are days without one, where daylight saving begins at that hour.
    return durationText(QDate::currentDate().startOfDay(), seconds);
}

} // namespace Orv::Utility

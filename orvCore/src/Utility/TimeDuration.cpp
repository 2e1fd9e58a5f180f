#include <Orv/Utility/TimeDuration.h>

#include "Utility/TimeDuration_p.h"

namespace Orv::Utility {

QString durationText(const QDateTime& startOfDay, int seconds)
{
    const QDateTime end = startOfDay.addSecs(seconds);
    const qint64 days = startOfDay.daysTo(end);
    const qint64 rest = startOfDay.date().addDays(days).startOfDay().secsTo(end);
    // On a 25-hour day the clock wraps at midnight.
    // QTime::toString() may return an empty string while other threads initialise Qt's calendars.
    const QTime time = QTime(0, 0).addSecs(static_cast<int>(rest));
    const QString text = QStringLiteral("%1:%2:%3")
                             .arg(time.hour(), 2, 10, QLatin1Char('0'))
                             .arg(time.minute(), 2, 10, QLatin1Char('0'))
                             .arg(time.second(), 2, 10, QLatin1Char('0'));
    return days > 0 ? QStringLiteral("%1.%2").arg(days).arg(text) : text;
}

QString TimeDuration::toString(int seconds)
{
    // startOfDay(), because some days have no midnight: daylight saving may start at that hour.
    return durationText(QDate::currentDate().startOfDay(), seconds);
}

} // namespace Orv::Utility

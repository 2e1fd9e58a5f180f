#pragma once

#include <QScopeGuard>

#include <ctime>

/// Sets the local time zone during the lifetime of the result.
[[nodiscard]] inline auto scopedTimeZone(const QByteArray& zone)
{
    const QByteArray before = qgetenv("TZ"); // null if unset
    qputenv("TZ", zone);
    ::tzset();
    return qScopeGuard([before] {
        before.isNull() ? qunsetenv("TZ") : qputenv("TZ", before);
        ::tzset();
    });
}

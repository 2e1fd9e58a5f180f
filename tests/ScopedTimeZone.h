#pragma once

#include <QScopeGuard>

#include <ctime>

/// Makes a zone the machine's local one while the result lives.
[[nodiscard]] inline auto scopedTimeZone(const QByteArray& zone)
{
    const QByteArray before = qgetenv("TZ"); // null if it is not set
    qputenv("TZ", zone);
    ::tzset();
    return qScopeGuard([before] {
        before.isNull() ? qunsetenv("TZ") : qputenv("TZ", before);
        ::tzset();
    });
}

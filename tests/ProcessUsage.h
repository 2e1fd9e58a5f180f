#pragma once

#include <QtGlobal>

#include <sys/resource.h>

/// The peak memory of the process so far, in bytes.
inline qint64 peakMemory()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return qint64(usage.ru_maxrss) * ORV_MAXRSS_UNIT;
}

#pragma once

#include <QtGlobal>

#include <sys/resource.h>

/// The most memory that the process has had so far, in bytes.
inline qint64 peakMemory()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return qint64(usage.ru_maxrss) * ORV_MAXRSS_UNIT;
}

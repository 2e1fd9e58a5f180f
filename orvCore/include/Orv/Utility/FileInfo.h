#pragma once

#include <Orv/Export.h>

#include <QDateTime>
#include <QString>

#include <chrono>

namespace Orv::Utility {

/// Sets the times of files, for example after a restore. Stateless.
class ORV_EXPORT FileInfo {
public:
    /// Sets the modification and access times of `path` to `time`, truncated to whole seconds. An invalid time, or one
    /// outside 1970 to 2106, sets the largest 32-bit time (in 2106). Links are followed. Errors are not reported. See
    /// `setLastModified` for the full range and a result.
    static void changeLastModefiedDate(const QString& path, const QDateTime& time);

    ///@{
    /// Sets only the modification time of `path`; if it is a link, of its target with `followLinks`, otherwise of the
    /// link itself. `time` is a date-time in milliseconds, or the nanoseconds since 1970, UTC. The file system may
    /// store it with less precision or a smaller range. Returns false on failure and sets `errno`; `EINVAL` for an
    /// invalid time.
    static bool setLastModified(const QString& path, const QDateTime& time, bool followLinks);
    static bool setLastModified(const QString& path, std::chrono::nanoseconds time, bool followLinks)
    {
        const auto seconds = std::chrono::floor<std::chrono::seconds>(time); // keeps the remainder positive before 1970
        return setModificationTime(path, seconds.count(), (time - seconds).count(), followLinks);
    }
    ///@}

private:
    static bool setModificationTime(const QString& path, qint64 seconds, qint64 nanoseconds, bool followLinks);
};

} // namespace Orv::Utility

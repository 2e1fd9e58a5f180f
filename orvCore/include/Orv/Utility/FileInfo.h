#pragma once

#include <Orv/Export.h>

#include <QDateTime>
#include <QString>

#include <chrono>

namespace Orv::Utility {

/// Sets a file's times, as a restore does. Stateless.
class ORV_EXPORT FileInfo {
public:
    /// Sets the times of the last modification and of the last access of `path` to `time`, in whole seconds from 1970
    /// to 2106; milliseconds are dropped. An invalid time, or another one, sets the last second of these. A link is
    /// followed. Failure is not reported. See `setLastModified` for all times and a result.
    static void changeLastModefiedDate(const QString& path, const QDateTime& time);

    ///@{
    /// Sets the time of the last modification of `path`, and nothing else: of the target of a link with `followLinks`,
    /// else of the link itself. `time` is an instant with milliseconds, or the nanoseconds since 1970, UTC; the file
    /// system may store it with less precision or a smaller range. Returns false on failure; `errno` then has the
    /// reason, `EINVAL` for an invalid time.
    static bool setLastModified(const QString& path, const QDateTime& time, bool followLinks);
    static bool setLastModified(const QString& path, std::chrono::nanoseconds time, bool followLinks)
    {
        const auto seconds = std::chrono::floor<std::chrono::seconds>(time); // the rest is positive before 1970 too
        return setModificationTime(path, seconds.count(), (time - seconds).count(), followLinks);
    }
    ///@}

private:
    static bool setModificationTime(const QString& path, qint64 seconds, qint64 nanoseconds, bool followLinks);
};

} // namespace Orv::Utility

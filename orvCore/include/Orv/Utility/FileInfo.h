#pragma once

#include <Orv/Export.h>

#include <QDateTime>
#include <QString>

namespace Orv::Utility {

/// Sets a file's times, as a restore does. Stateless.
class ORV_EXPORT FileInfo {
public:
    /// Sets the times of the last modification and of the last access of `path` to `time`, in whole seconds from 1970
    /// to 2106; milliseconds are dropped. An invalid time, or another one, sets the last second of these. A link is
    /// followed. Failure is not reported.
    static void changeLastModefiedDate(const QString& path, const QDateTime& time);
};

} // namespace Orv::Utility

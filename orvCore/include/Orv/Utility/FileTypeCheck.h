#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// Whether a file can be backed up.
enum FileTypeVerdict : int {
    StatFailed = 0,   ///< `stat` failed
    NotForBackup = 1, ///< a socket, FIFO, device, or unknown type
    Suitable = 2,     ///< a regular file or a directory with its data on disk
    Dataless = 3,     ///< the data is in a cloud service, not on disk
};

/// Checks whether the entry at `path` can be backed up; links are followed. Returns a `FileTypeVerdict`.
///
/// Unless the verdict is `Suitable`, sets `reason` to a message for the user, translated by the application's
/// translator. A failed `stat` is logged as an error, a data-less file as a warning. The path is encoded in the current
/// locale: in the C locale, non-ASCII names are not found. With Qt 6 it is always UTF-8. Thread-safe.
ORV_EXPORT int validateFileType(const QString& path, QString& reason);

/// Checks for the top-level system directories, which a backup treats as system and hidden: exactly "/Library" or
/// "/System". Other spellings of these paths do not match. Thread-safe.
class ORV_EXPORT CustomSystemAndHiddenCheck {
public:
    /// `path` is not copied: it has to outlive the object.
    explicit CustomSystemAndHiddenCheck(const QString& path) : m_path(path) { }
    /// Whether the current value of the path matches.
    bool is() const;

private:
    const QString& m_path;
};

} // namespace Orv::Utility

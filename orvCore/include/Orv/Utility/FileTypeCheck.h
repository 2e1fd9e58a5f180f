#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// Whether a file can be backed up.
enum FileTypeVerdict : int {
    StatFailed = 0,   ///< it could not be examined
    NotForBackup = 1, ///< a socket, a pipe, a device, or of an unknown type
    Suitable = 2,     ///< a regular file or a folder, the data of which is there
    Dataless = 3,     ///< its data is not on this disk, but with a cloud service
};

/// Says whether what is at `path`, or at the target of a link, is of a kind that can be backed up: a `FileTypeVerdict`.
///
/// `reason` is set for people, in the language of the application's translator, unless the verdict is `Suitable`. A
/// path that cannot be examined is logged as an error, a file without its data as a warning. The path is encoded for
/// the current locale: under the C locale, a name outside ASCII is not found. With Qt 6 it is always UTF-8.
/// Thread-safe.
ORV_EXPORT int validateFileType(const QString& path, QString& reason);

/// Whether a path is one of the system's own top folders, which a backup takes for system and hidden: exactly
/// "/Library" or "/System", without regard for other spellings of them. Thread-safe.
class ORV_EXPORT CustomSystemAndHiddenCheck {
public:
    /// `path` is not copied: it has to live as long as the object.
    explicit CustomSystemAndHiddenCheck(const QString& path) : m_path(path) { }
    /// The answer for the path as it is now.
    bool is() const;

private:
    const QString& m_path;
};

} // namespace Orv::Utility

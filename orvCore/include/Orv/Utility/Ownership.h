#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// Gives `path`, and its ancestors with the same owner, to the owner and group of the nearest ancestor with another
/// owner. So files that one user created in another user's directory become the other user's.
///
/// The topmost directory is changed first and `path` last; links are followed. If no ancestor has another owner,
/// nothing changes. Each step is logged as a debug message. Requires the privilege to change owners.
///
/// If a change fails, logs a warning and returns false; the directories and the file below keep their owner.
///
/// @warning Privileged callers: use the overload with `LinkPolicy::Refuse` if other users can write to a directory in
/// the path. With `restored -> ../etc` in a user's directory, this function gives that user the directory "etc".
ORV_EXPORT bool changeOwnershipForPath(const QString& path);

/// Handling of symbolic links in a path.
enum class LinkPolicy : qint32 {
    Follow = 0, ///< follow them
    Refuse = 1, ///< fail if the path or an ancestor is a link
};

/// Same, with a policy. With `LinkPolicy::Refuse`, each component is opened relative to its parent directory, so no
/// link can be inserted during the call. Logs a warning, returns false and changes nothing if the path contains a link
/// or "..", names a file with several hard links, or contains a directory that cannot be opened for reading. On macOS,
/// "/tmp", "/var" and "/etc" are links: pass the path below "/private".
ORV_EXPORT bool changeOwnershipForPath(const QString& path, LinkPolicy policy);

} // namespace Orv::Utility

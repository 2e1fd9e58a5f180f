#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// Gives `path`, and the folders above it that have the same owner, to the owner and the group of the nearest folder
/// above that has another owner. So what was made by one user in another user's folder becomes that user's.
///
/// The topmost of these folders is changed first and `path` last; a link is followed. If no folder up to the root has
/// another owner, nothing is changed. Every step is logged as debug. Needs the right to change owners.
///
/// Returns false at the first change that fails, with a warning logged: what lies below is then left as it was.
///
/// @warning Privileged callers: use the overload with `LinkPolicy::Refuse` wherever others can write to a folder on the
/// way. With `restored -> ../etc` in a user's folder, this function gives that user the folder "etc".
ORV_EXPORT bool changeOwnershipForPath(const QString& path);

/// What to do about symbolic links in a path.
enum class LinkPolicy : qint32 {
    Follow = 0, ///< as the system does
    Refuse = 1, ///< fail if the path or a folder above it is a link
};

/// The same with a policy. With `LinkPolicy::Refuse`, each name is opened in the folder before it, so that nobody can
/// put a link in place meanwhile. A link, a "..", a file with several hard links, or a folder that cannot be opened
/// for reading makes it return false, with a warning logged and nothing changed. On macOS "/tmp", "/var" and "/etc" are
/// links: give the path below "/private".
ORV_EXPORT bool changeOwnershipForPath(const QString& path, LinkPolicy policy);

} // namespace Orv::Utility

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
ORV_EXPORT bool changeOwnershipForPath(const QString& path);

} // namespace Orv::Utility

#pragma once

#include <Orv/Utility/FileTypeCheck.h>

#include <sys/stat.h>

namespace Orv::Utility {

/// Whether the file's data is with a cloud service and not on this disk.
bool isDataless(const struct stat& status);

/// The verdict on a file that could be examined; sets `reason` unless it is `Suitable`.
FileTypeVerdict fileTypeVerdict(mode_t mode, bool dataless, const QString& path, QString& reason);

} // namespace Orv::Utility

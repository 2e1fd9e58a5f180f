#pragma once

#include <Orv/Utility/FileTypeCheck.h>

#include <sys/stat.h>

namespace Orv::Utility {

/// Whether the file's data is in a cloud service and not on disk.
bool isDataless(const struct stat& status);

/// Returns the verdict on a file after a successful `stat`. Sets `reason` unless it is `Suitable`.
FileTypeVerdict fileTypeVerdict(mode_t mode, bool dataless, const QString& path, QString& reason);

} // namespace Orv::Utility

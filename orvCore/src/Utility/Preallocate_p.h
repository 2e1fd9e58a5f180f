#pragma once

#include <QtGlobal>

namespace Orv::Utility {

/// Reserves `size` bytes after the physical end of the file. Returns 0 or an error number: `ENOTSUP` if the file system
/// does not support it.
int reserveSpace(int fd, quint64 size);

} // namespace Orv::Utility

#pragma once

#include <QtGlobal>

namespace Orv::Utility {

/// Reserves `size` bytes behind the physical end of the file. Returns 0, or the system's error number: `ENOTSUP` if the
/// file system cannot.
int reserveSpace(int fd, quint64 size);

} // namespace Orv::Utility

#pragma once

#include <Orv/Export.h>

#include <QtGlobal>

namespace Orv::Utility {

/// Reserves disk space for `size` more bytes after the physical end of an open file, all of it or none, without
/// changing the file's size. So a restore can fail before it writes.
///
/// Returns true on success. If the file system does not support reservation, logs a warning and returns true too.
/// Returns false on any other failure, for example lack of space or a read-only descriptor; this is not logged. If
/// space or quota is insufficient, reservations of earlier calls may be released too. The file must not be written
/// during the call.
ORV_EXPORT bool preallocateFile(int fd, quint64 size);

} // namespace Orv::Utility

#pragma once

#include <Orv/Export.h>

#include <QtGlobal>

namespace Orv::Utility {

/// Reserves room on the disk for `size` more bytes behind the physical end of an open file, all of it or none; the
/// file's size does not change. So a restore can fail before it writes.
///
/// Returns true if the room is there, and also, with a warning logged, if the file system cannot reserve any. Returns
/// false on any other failure, for instance without enough space or with a descriptor that may not write; nothing is
/// logged then. Without enough space or quota, what earlier calls reserved for the file may be given back too. Nobody
/// else may write to the file meanwhile.
ORV_EXPORT bool preallocateFile(int fd, quint64 size);

} // namespace Orv::Utility

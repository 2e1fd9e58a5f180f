#pragma once

#include <Orv/Export.h>

#include <cstddef>

/// Renames a full log file: F/log_A.log becomes F/log_A_20240131235959.log, with the local time. The log calls it when
/// the file is full, unless there is a file of the new name already. `size` is not used.
///
/// The last four characters of the name are replaced whatever they are. A file of the new name is not overwritten:
/// then, and whenever else the renaming fails, the file stays as it is, and the log continues it.
ORV_EXPORT void logsRollout(const char* fileName, std::size_t size);

#pragma once

#include <Orv/Export.h>

#include <cstddef>

/// Rotates a log file by renaming it: D/log_A.log becomes D/log_A_20240131235959.log, with the local time. The log
/// calls it for a full file, unless the new name is taken. `size` is not used.
///
/// The last four characters of the name are replaced, whatever they are. An existing file is not overwritten: in that
/// case, or if the rename fails, the file is unchanged and the log keeps appending to it.
ORV_EXPORT void logsRollout(const char* fileName, std::size_t size);

#pragma once

#include <Orv/Export.h>

#include <cstddef>

/// Moves a full log file aside: F/log_A.log becomes F/log_A_20240131235959.log, with the local time. The back end calls
/// it just before it truncates the file. `size` is not used.
///
/// The last four characters of the name are replaced whatever they are. A file of the new name is not overwritten: on
/// a second roll-over within a second, and whenever else the renaming fails, the full file is lost.
ORV_EXPORT void logsRollout(const char* fileName, std::size_t size);

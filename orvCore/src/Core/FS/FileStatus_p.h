#pragma once

#include <QtGlobal>

#include <sys/stat.h>

namespace Orv::Core::FS {

/// What the system reports of an entry, links followed. Times are in ms since 1970, UTC; 0: not known.
struct FileStatus {
    mode_t mode = 0;
    qint64 size = 0; // bytes
    qint64 modified = 0;
    qint64 changed = 0; // of the entry itself
    qint64 born = 0;
};

/// One system call. False if there is nothing at `path`, in the system's encoding, or if it cannot be reached.
bool readStatus(const char* path, FileStatus& status);

} // namespace Orv::Core::FS

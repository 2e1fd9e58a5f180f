#pragma once

#include <QtGlobal>

#include <sys/stat.h>

namespace Orv::Core::FS {

/// The status of an entry; links are followed. Times are in milliseconds since 1970, UTC; 0 means unknown.
struct FileStatus {
    mode_t mode = 0;
    qint64 size = 0; // bytes
    qint64 modified = 0;
    qint64 changed = 0; // metadata
    qint64 born = 0;
};

/// Reads the status with one system call. `path` is in the system's encoding. False if it does not exist or cannot be
/// accessed.
bool readStatus(const char* path, FileStatus& status);

} // namespace Orv::Core::FS

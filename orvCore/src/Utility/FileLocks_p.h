#pragma once

#include <Orv/Utility/FileLocks.h>

#include <cstdio>

/// Whether a table in the format of "/proc/locks" lists a held write lock on the inode. Lines longer than the buffer
/// are processed as several lines.
bool listsWriteLock(std::FILE* table, quint64 inode);

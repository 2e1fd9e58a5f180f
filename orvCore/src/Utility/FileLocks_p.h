#pragma once

#include <Orv/Utility/FileLocks.h>

#include <cstdio>

/// Whether a table in the form of "/proc/locks" lists a held write lock on the inode number. What does not fit into the
/// buffer is taken for further lines.
bool listsWriteLock(std::FILE* table, quint64 inode);

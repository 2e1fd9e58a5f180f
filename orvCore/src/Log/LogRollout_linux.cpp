#include "Log/LogRollout_p.h"

#include <cerrno>

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

void renameUnlessTaken(const char* from, const char* to)
{
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0 || (errno != EINVAL && errno != ENOSYS))
        return;
    if (::access(to, F_OK) != 0) // the file system does not support RENAME_NOREPLACE
        ::rename(from, to);
}

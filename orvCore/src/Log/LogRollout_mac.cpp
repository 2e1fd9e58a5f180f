#include "Log/LogRollout_p.h"

#include <cerrno>

#include <stdio.h>
#include <unistd.h>

void renameUnlessTaken(const char* from, const char* to)
{
    if (::renamex_np(from, to, RENAME_EXCL) == 0 || errno != ENOTSUP)
        return;
    if (::access(to, F_OK) != 0) // the file system does not support RENAME_EXCL
        ::rename(from, to);
}

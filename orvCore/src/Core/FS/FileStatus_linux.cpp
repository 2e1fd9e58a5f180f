#include "Core/FS/FileStatus_p.h"

#include <fcntl.h>

namespace Orv::Core::FS {

namespace {

qint64 milliseconds(const statx_timestamp& time)
{
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

} // namespace

bool readStatus(const char* path, FileStatus& status)
{
    struct statx answer = {};
    if (::statx(AT_FDCWD, path, AT_NO_AUTOMOUNT, STATX_BASIC_STATS | STATX_BTIME, &answer) != 0)
        return false;
    status.mode = answer.stx_mode;
    status.size = qint64(answer.stx_size);
    status.modified = milliseconds(answer.stx_mtime);
    status.changed = milliseconds(answer.stx_ctime);
    status.born = (answer.stx_mask & STATX_BTIME) ? milliseconds(answer.stx_btime) : 0;
    return true;
}

} // namespace Orv::Core::FS

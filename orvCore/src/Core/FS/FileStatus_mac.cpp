#include "Core/FS/FileStatus_p.h"

namespace Orv::Core::FS {

namespace {

qint64 milliseconds(const timespec& time)
{
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

} // namespace

bool readStatus(const char* path, FileStatus& status)
{
    struct stat answer = {};
    if (::stat(path, &answer) != 0)
        return false;
    status.mode = answer.st_mode;
    status.size = answer.st_size;
    status.modified = milliseconds(answer.st_mtimespec);
    status.changed = milliseconds(answer.st_ctimespec);
    status.born = milliseconds(answer.st_birthtimespec);
    return true;
}

} // namespace Orv::Core::FS

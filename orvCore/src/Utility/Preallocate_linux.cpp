#include "Utility/Preallocate_p.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr off_t BlockSize = 512; // bytes; the unit of stat::st_blocks, whatever the file system's own
}

namespace {

/// Some file systems keep what they had got when the space ran out. There is no other way to give back what lies behind
/// a file's end than to set that end anew.
void giveBack(int fd)
{
    struct stat status = {};
    if (::fstat(fd, &status) == 0)
        (void)!::ftruncate(fd, status.st_size);
}

} // namespace

int Orv::Utility::reserveSpace(int fd, quint64 size)
{
    struct stat status = {};
    if (::fstat(fd, &status) != 0)
        return errno;
    if (size == 0)
        return 0; // which the call would refuse
    const off_t physicalEnd = std::max<off_t>(status.st_size, status.st_blocks * BlockSize);
    int error = 0;
    do
        error = ::fallocate(fd, FALLOC_FL_KEEP_SIZE, physicalEnd, static_cast<off_t>(size)) == 0 ? 0 : errno;
    while (error == EINTR);
    if (error == ENOSPC)
        giveBack(fd);
    return error == ENOSYS ? ENOTSUP : error; // some sandboxes do not know the call
}

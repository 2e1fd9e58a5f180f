#include "Utility/Preallocate_p.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {
constexpr off_t BlockSize = 512; // bytes; the unit of stat::st_blocks, whatever the file system's own
}

int Orv::Utility::reserveSpace(int fd, quint64 size)
{
    struct stat status = {};
    if (::fstat(fd, &status) != 0)
        return errno;
    if (size == 0)
        return 0; // which the call would refuse
    const off_t physicalEnd = std::max<off_t>(status.st_size, status.st_blocks * BlockSize);
    int result = 0;
    do
        result = ::fallocate(fd, FALLOC_FL_KEEP_SIZE, physicalEnd, static_cast<off_t>(size));
    while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}

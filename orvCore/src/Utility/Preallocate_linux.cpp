#include "Utility/Preallocate_p.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr off_t BlockSize = 512; // bytes; the unit of stat::st_blocks on every file system

/// Returns the end of the file's allocated space, which may be after its logical end.
///
/// Block counts are the fallback: they include blocks with extended attributes, such as an ACL, so the result may be
/// too large.
off_t physicalEnd(int fd, const struct stat& status)
{
    constexpr quint32 ExtentCount = 16;
    alignas(fiemap) std::array<char, sizeof(fiemap) + ExtentCount * sizeof(fiemap_extent)> buffer;
    auto* const map = reinterpret_cast<fiemap*>(buffer.data());
    off_t end = status.st_size;
    for (bool isLast = false; !isLast;) {
        buffer.fill(0);
        map->fm_start = static_cast<quint64>(end);
        map->fm_length = FIEMAP_MAX_OFFSET - map->fm_start;
        map->fm_extent_count = ExtentCount;
        if (::ioctl(fd, FS_IOC_FIEMAP, map) != 0)
            return std::max<off_t>(status.st_size, status.st_blocks * BlockSize);
        isLast = map->fm_mapped_extents == 0;
        for (quint32 i = 0; i < map->fm_mapped_extents; ++i) {
            const fiemap_extent& extent = map->fm_extents[i];
            end = std::max(end, static_cast<off_t>(extent.fe_logical + extent.fe_length));
            isLast = isLast || (extent.fe_flags & FIEMAP_EXTENT_LAST) != 0;
        }
    }
    return end;
}

/// Some file systems keep a partial allocation when space runs out. Truncating the file to its current size is the only
/// way to release the space after its end.
void releaseBehindEnd(int fd)
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
        return 0; // fallocate() rejects a size of 0
    const off_t end = physicalEnd(fd, status);
    int error = 0;
    do
        error = ::fallocate(fd, FALLOC_FL_KEEP_SIZE, end, static_cast<off_t>(size)) == 0 ? 0 : errno;
    while (error == EINTR);
    if (error == ENOSPC || error == EDQUOT)
        releaseBehindEnd(fd);
    return error == ENOSYS ? ENOTSUP : error; // some sandboxes do not implement fallocate()
}

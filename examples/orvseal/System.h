#pragma once

#include <QtGlobal>

#include <limits>
#include <sys/stat.h>

/// Platform-specific functions, defined in System_linux.cpp and System_mac.cpp.
namespace orvseal {

/// The modification time in ns since 1970, UTC, limited to what 64 bits hold: years 1677 to 2262.
qint64 modifiedTime(const struct stat& status);

///@{
/// Together these flush written files and their names to the disk: call `flushFile` for each file before it is closed,
/// then `flushVolume` once for a directory of the same file system. Where the system can flush a whole file system,
/// `flushFile` does nothing. False on failure, with the reason in `errno`.
bool flushFile(int descriptor);
bool flushVolume(int directoryDescriptor);
///@}

/// Attributes of an entry that a vault does not keep.
struct Extras {
    bool attributes = false; ///< extended attributes
    bool accessList = false; ///< an access control list
};
/// Does not follow a link. Neither, if the file system does not support them.
Extras extrasOf(const char* path);

/// From seconds and nanoseconds.
inline qint64 nanosecondsOf(const timespec& time)
{
    constexpr qint64 Second = 1000000000;
    constexpr qint64 Last = std::numeric_limits<qint64>::max() / Second - 1;
    return qBound(-Last, qint64(time.tv_sec), Last) * Second + time.tv_nsec;
}

} // namespace orvseal

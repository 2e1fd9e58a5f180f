#pragma once

#include <QtGlobal>

#include <limits>
#include <sys/stat.h>

/// What systems do in ways of their own; System_linux.cpp and System_mac.cpp define it.
namespace orvseal {

/// The modification time in ns since 1970, UTC; the first or last one that the number holds, from 1677 to 2262.
qint64 modifiedTime(const struct stat& status);

///@{
/// Together these bring to the disk what has been written: `flushFile` for each file before it is closed, then
/// `flushVolume` once for a folder of the same file system, names included. Where the system flushes a whole file
/// system at once, the first does nothing. False on failure, with the reason in `errno`.
bool flushFile(int descriptor);
bool flushVolume(int directoryDescriptor);
///@}

/// What an entry has beside what a vault keeps.
struct Extras {
    bool attributes = false; ///< extended attributes
    bool accessList = false; ///< an access control list
};
/// A link is not followed. Nothing where the file system knows no such things.
Extras extrasOf(const char* path);

/// From seconds and nanoseconds.
inline qint64 nanosecondsOf(const timespec& time)
{
    constexpr qint64 Second = 1000000000;
    constexpr qint64 Last = std::numeric_limits<qint64>::max() / Second - 1;
    return qBound(-Last, qint64(time.tv_sec), Last) * Second + time.tv_nsec;
}

} // namespace orvseal

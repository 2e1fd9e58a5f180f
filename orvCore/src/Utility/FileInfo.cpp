#include <Orv/Utility/FileInfo.h>

#include "Utility/NativePath_p.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utime.h>

namespace Orv::Utility {

namespace {

bool setModificationTime(const QString& path, const timespec& time, bool followLinks)
{
    const timespec times[] = {{0, UTIME_OMIT}, time}; // last access, last modification
    const int flags = followLinks ? 0 : AT_SYMLINK_NOFOLLOW;
    return ::utimensat(AT_FDCWD, nativePath(path.toUtf8()).constData(), times, flags) == 0;
}

/// Rounds the seconds down, so that the rest is positive before 1970 too.
template <class Duration> timespec toTimespec(Duration sinceEpoch)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    const std::chrono::nanoseconds rest = sinceEpoch - seconds;
    return {static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
}

} // namespace

void FileInfo::changeLastModefiedDate(const QString& path, const QDateTime& time)
{
    const time_t seconds = time.toUTC().toTime_t();
    const utimbuf times = {seconds, seconds};
    ::utime(nativePath(path.toUtf8()).constData(), &times);
}

bool FileInfo::setLastModified(const QString& path, const QDateTime& time, bool followLinks)
{
    if (!time.isValid()) {
        errno = EINVAL;
        return false;
    }
    const std::chrono::milliseconds sinceEpoch(time.toMSecsSinceEpoch());
    return setModificationTime(path, toTimespec(sinceEpoch), followLinks);
}

bool FileInfo::setLastModified(const QString& path, std::chrono::nanoseconds time, bool followLinks)
{
    return setModificationTime(path, toTimespec(time), followLinks);
}

} // namespace Orv::Utility

#include <Orv/Utility/FileInfo.h>

#include "Utility/NativePath_p.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <utime.h>

namespace Orv::Utility {

namespace {

/// The whole seconds since 1970; the largest unsigned 32-bit number for an invalid time or one out of range.
time_t secondsOf(const QDateTime& time)
{
    constexpr qint64 last = std::numeric_limits<quint32>::max();
    const qint64 seconds = time.toMSecsSinceEpoch() / 1000;
    return static_cast<time_t>(time.isValid() && seconds >= 0 ? std::min(seconds, last) : last);
}

} // namespace

void FileInfo::changeLastModefiedDate(const QString& path, const QDateTime& time)
{
    const time_t seconds = secondsOf(time);
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
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    const std::chrono::nanoseconds rest = sinceEpoch - seconds;
    return setModificationTime(path, seconds.count(), rest.count(), followLinks);
}

bool FileInfo::setModificationTime(const QString& path, qint64 seconds, qint64 nanoseconds, bool followLinks)
{
    const timespec times[] = {{0, UTIME_OMIT}, {static_cast<time_t>(seconds), static_cast<long>(nanoseconds)}};
    const int flags = followLinks ? 0 : AT_SYMLINK_NOFOLLOW;
    return ::utimensat(AT_FDCWD, nativePath(path.toUtf8()).constData(), times, flags) == 0;
}

} // namespace Orv::Utility

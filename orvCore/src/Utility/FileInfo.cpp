#include <Orv/Utility/FileInfo.h>

#include "Utility/NativePath_p.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utime.h>

namespace Orv::Utility {

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

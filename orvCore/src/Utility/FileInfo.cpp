#include <Orv/Utility/FileInfo.h>

#include "Utility/NativePath_p.h"

#include <utime.h>

void Orv::Utility::FileInfo::changeLastModefiedDate(const QString& path, const QDateTime& time)
{
    const time_t seconds = time.toUTC().toTime_t();
    const utimbuf times = {seconds, seconds};
    ::utime(nativePath(path.toUtf8()).constData(), &times);
}

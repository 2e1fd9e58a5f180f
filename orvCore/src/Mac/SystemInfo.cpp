#include <Orv/Mac/SystemInfo.h>

#include "Mac/SystemInfo_p.h"

namespace Orv::Utility {

QString SystemInfo::productVersion()
{
    return readMacOsVersion(QStringLiteral("/System/Library/CoreServices/")).toString();
}

QString SystemInfo::prettyProductName()
{
    return QStringLiteral("macOS %1").arg(productVersion());
}

} // namespace Orv::Utility

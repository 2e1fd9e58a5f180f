#include "Utility/FileTypeCheck_p.h"

#include "Utility/NativePath_p.h"

#include <QSet>

#include <cerrno>
#include <cstring>

namespace Orv::Utility {

int validateFileType(const QString& path, QString& reason)
{
    struct stat status = {};
    if (::stat(nativePath(path.toLocal8Bit()).constData(), &status) != 0) {
        reason = QString::fromLocal8Bit(std::strerror(errno));
        OrvDebug(CORE_MODULE_NAME).error() << "on init file stat:" << path << "message:" << reason;
        return StatFailed;
    }
    return fileTypeVerdict(status.st_mode, isDataless(status), path, reason);
}

bool CustomSystemAndHiddenCheck::is() const
{
    static const QSet<QString> systemPaths = {QStringLiteral("/Library"), QStringLiteral("/System")};
    return systemPaths.contains(m_path);
}

} // namespace Orv::Utility

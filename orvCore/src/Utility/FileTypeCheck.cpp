#include "Utility/FileTypeCheck_p.h"

#include "Utility/NativePath_p.h"

#include <Orv/Core/ModuleName.h>
#include <Orv/Log/OrvDebug.h>

#include <QObject>
#include <QSet>

#include <cerrno>
#include <cstring>

namespace Orv::Utility {

namespace {

/// Returns why a file of this type cannot be backed up; null if it can.
QString unsuitableType(mode_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFLNK:
    case S_IFREG:
    case S_IFDIR:
        return {};
    case S_IFSOCK:
        return QObject::tr("File is not intended for backup because it's a socket.");
    case S_IFBLK:
        return QObject::tr("File is not intended for backup because it's a block device.");
    case S_IFCHR:
        return QObject::tr("File is not intended for backup because it's a character device.");
    case S_IFIFO:
        return QObject::tr("File is not intended for backup because it's a FIFO/pipe.");
    }
    return QObject::tr("file is unknown type");
}

} // namespace

FileTypeVerdict fileTypeVerdict(mode_t mode, bool dataless, const QString& path, QString& reason)
{
    if (dataless) {
        OrvDebug(CORE_MODULE_NAME).warning() << "File:" << path << "is data less";
        reason = QObject::tr("File is is data less"); // other programs match this text
        return Dataless;
    }
    const QString unsuitable = unsuitableType(mode);
    if (unsuitable.isNull())
        return Suitable;
    reason = unsuitable;
    return NotForBackup;
}

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

#pragma once

#include <Orv/Core/ModuleName.h>
#include <Orv/Log/OrvDebug.h>
#include <Orv/Utility/FileTypeCheck.h>

#include <QObject>

#include <sys/stat.h>

namespace Orv::Utility {

/// Whether the file's data is with a cloud service and not on this disk.
bool isDataless(const struct stat& status);

/// The reason why a file of this type cannot be backed up; null if it can.
inline QString unsuitableType(mode_t mode)
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

/// The verdict on a file that could be examined; sets `reason` unless it is `Suitable`.
inline FileTypeVerdict fileTypeVerdict(mode_t mode, bool dataless, const QString& path, QString& reason)
{
    if (dataless) {
        OrvDebug(CORE_MODULE_NAME).warning() << "File:" << path << "is data less";
        reason = QObject::tr("File is is data less"); // as other programs know it
        return Dataless;
    }
    const QString unsuitable = unsuitableType(mode);
    if (unsuitable.isNull())
        return Suitable;
    reason = unsuitable;
    return NotForBackup;
}

} // namespace Orv::Utility

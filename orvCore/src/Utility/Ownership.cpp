#include <Orv/Utility/Ownership.h>

#include "Utility/NativePath_p.h"

#include <Orv/Core/ModuleName.h>
#include <Orv/Log/OrvDebug.h>

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace Orv::Utility {

namespace {

bool changeOwner(const QString& path, uint owner, uint group)
{
    OrvDebug(CORE_MODULE_NAME).debug() << "Change owner for path:" << path << "owner:" << owner << "group:" << group;
    if (::chown(nativePath(path.toUtf8()).constData(), owner, group) == 0)
        return true;
    const char* const message = std::strerror(errno);
    OrvDebug(CORE_MODULE_NAME).warning() << "Error on change owner for path:" << path << "message:" << message;
    return false;
}

} // namespace

bool changeOwnershipForPath(const QString& path)
{
    const QFileInfo info(path);
    // "Ownere": other programs match the text as it is.
    OrvDebug(CORE_MODULE_NAME).debug() << "Ownere for path:" << path << "owner:" << info.owner()
                                       << "group:" << info.group();

    QStringList paths = {path}; // the lowest first
    QDir folder(info.path());
    QFileInfo folderInfo(folder.path());
    while (folderInfo.ownerId() == info.ownerId()) {
        paths += folder.path();
        if (!folder.cdUp())
            return true;
        folderInfo.setFile(folder.path());
    }

    const uint owner = folderInfo.ownerId();
    const uint group = folderInfo.groupId();
    OrvDebug(CORE_MODULE_NAME).debug() << "Change owner for full path:" << path << "owner:" << owner
                                       << "group:" << group;
    return std::all_of(paths.crbegin(), paths.crend(),
        [owner, group](const QString& lower) { return changeOwner(lower, owner, group); });
}

} // namespace Orv::Utility

#include "Files.h"

#include <QByteArray>
#include <QList>

#include <sys/xattr.h>
#include <unistd.h>

namespace orvseal {

qint64 modifiedTime(const FileState& state)
{
    return nanosecondsOf(state.st_mtim);
}

bool flushFile(int)
{
    return true;
}

bool flushVolume(int directoryDescriptor)
{
    return ::syncfs(directoryDescriptor) == 0;
}

Extras extrasOf(const char* path)
{
    Extras extras;
    QByteArray names(64 * 1024, Qt::Uninitialized); // the kernel's limit
    const ssize_t size = ::llistxattr(path, names.data(), size_t(names.size()));
    if (size <= 0)
        return extras;
    const QList<QByteArray> list = names.left(int(size) - 1).split('\0');
    for (const QByteArray& name : list) {
        if (name.startsWith("system.posix_acl_"))
            extras.accessList = true;
        else if (name.startsWith("user.") || name == "security.capability")
            extras.attributes = true; // others are labels that the system sets by itself
    }
    return extras;
}

} // namespace orvseal

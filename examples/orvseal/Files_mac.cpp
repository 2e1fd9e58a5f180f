#include "Files.h"

#include <fcntl.h>
#include <sys/acl.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace orvseal {

qint64 modifiedTime(const FileState& state)
{
    return nanosecondsOf(state.st_mtimespec);
}

bool flushFile(int descriptor)
{
    return ::fsync(descriptor) == 0;
}

bool flushVolume(int directoryDescriptor)
{
    // fsync() leaves to the drive when it writes; network file systems know no more than that.
    return ::fcntl(directoryDescriptor, F_FULLFSYNC) == 0 || ::fsync(directoryDescriptor) == 0;
}

Extras extrasOf(const char* path)
{
    Extras extras;
    extras.attributes = ::listxattr(path, nullptr, 0, XATTR_NOFOLLOW) > 0;
    if (const acl_t list = ::acl_get_link_np(path, ACL_TYPE_EXTENDED)) {
        extras.accessList = true;
        ::acl_free(list);
    }
    return extras;
}

} // namespace orvseal

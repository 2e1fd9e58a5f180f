#include <Orv/Utility/Preallocate.h>

#include "Utility/Preallocate_p.h"

#include <Orv/Core/ModuleName.h>
#include <Orv/Log/OrvDebug.h>

#include <cerrno>

bool Orv::Utility::preallocateFile(int fd, quint64 size)
{
    const int error = reserveSpace(fd, size);
    if (error == ENOTSUP) {
        // "prealocate": other programs match this text.
        OrvDebug(CORE_MODULE_NAME).warning() << "Operation file prealocate not supported for this filesystem";
        return true;
    }
    return error == 0;
}

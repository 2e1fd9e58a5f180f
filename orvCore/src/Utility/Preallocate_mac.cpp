#include "Utility/Preallocate_p.h"

#include <cerrno>
#include <fcntl.h>

int Orv::Utility::reserveSpace(int fd, quint64 size)
{
    fstore_t request = {};
    request.fst_flags = F_ALLOCATEALL;
    request.fst_posmode = F_PEOFPOSMODE;
    request.fst_length = static_cast<off_t>(size);
    return ::fcntl(fd, F_PREALLOCATE, &request) == 0 ? 0 : errno;
}

#include "Log/ThreadNumber_p.h"

#include <sys/syscall.h>
#include <unistd.h>

quint64 systemThreadNumber()
{
    return static_cast<quint64>(::syscall(SYS_gettid));
}

#include "Log/ThreadNumber_p.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

thread_local quint64 number = 0; // asked for once a thread: a system call a log line would be dear

// The thread that forks has another number in the child.
[[maybe_unused]] const int registered = ::pthread_atfork(nullptr, nullptr, [] { number = 0; });

} // namespace

quint64 systemThreadNumber()
{
    if (number == 0)
        number = static_cast<quint64>(::syscall(SYS_gettid));
    return number;
}

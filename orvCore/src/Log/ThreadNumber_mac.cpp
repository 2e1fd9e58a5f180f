#include "Log/ThreadNumber_p.h"

#include <pthread.h>

quint64 systemThreadNumber()
{
    uint64_t number = 0;
    ::pthread_threadid_np(nullptr, &number);
    return number;
}

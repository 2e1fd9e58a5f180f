#include "Log/LogLock_p.h"

#include <atomic>

#include <pthread.h>
#include <time.h>

namespace {

// Signal handlers may call try_lock() in the thread that holds the lock, which is undefined for std::mutex.
pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
std::atomic<pthread_t> owner{};
std::atomic<void (*)()> deferredWork{nullptr};
std::atomic<int> deferred{0};
bool forkedInside = false; // protected by the lock

bool isMine()
{
    return owner.load(std::memory_order_relaxed) == ::pthread_self();
}

void acquire()
{
    ::pthread_mutex_lock(&mutex);
    owner.store(::pthread_self(), std::memory_order_relaxed);
}

bool tryAcquire()
{
    if (::pthread_mutex_trylock(&mutex) != 0)
        return false;
    owner.store(::pthread_self(), std::memory_order_relaxed);
    return true;
}

void release()
{
    owner.store(pthread_t(), std::memory_order_relaxed);
    ::pthread_mutex_unlock(&mutex);
}

/// Call after each release: a handler that found the lock taken relies on it. fetch_add(0) is a load that cannot be
/// reordered before the release.
void runDeferred()
{
    while (deferred.fetch_add(0) != 0 && tryAcquire()) {
        if (deferred.exchange(0) != 0)
            deferredWork.load()();
        release();
    }
}

void beforeFork()
{
    const bool inside = isMine();
    if (!inside)
        acquire();
    forkedInside = inside;
}

void afterForkInParent()
{
    if (forkedInside)
        return;
    release();
    runDeferred();
}

void afterForkInChild()
{
    deferred = 0; // the parent runs it
    ::pthread_mutex_unlock(&mutex);
    mutex = PTHREAD_MUTEX_INITIALIZER; // on some systems, the child cannot unlock it
    if (forkedInside)
        acquire();
    else
        owner = pthread_t();
}

} // namespace

LogLock::LogLock() : m_isOuter(!isMine())
{
    [[maybe_unused]] static const int registered = ::pthread_atfork(beforeFork, afterForkInParent, afterForkInChild);
    if (!m_isOuter)
        return;
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_cancelState);
    acquire();
}

LogLock::~LogLock()
{
    if (!m_isOuter)
        return;
    release();
    runDeferred();
    ::pthread_setcancelstate(m_cancelState, nullptr);
}

void LogLock::callWhenFree(void (*work)())
{
    deferredWork = work;
    deferred.exchange(1);
    runDeferred();
}

void LogLock::takeIfPossible()
{
    constexpr timespec Millisecond{0, 1000000};
    for (int i = 0; i < 500 && !isMine() && !tryAcquire(); ++i)
        ::nanosleep(&Millisecond, nullptr);
}

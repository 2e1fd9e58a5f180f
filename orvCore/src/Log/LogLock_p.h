#pragma once

/// Holds the process-wide lock of the log, which protects the log files, the back end and its configuration. Recursive,
/// because writing an entry may log another one. `fork()` acquires it, so the lock is free and the log consistent in
/// the child. A cancelled thread (`QThread::terminate()`) releases it before it ends.
class LogLock {
public:
    LogLock();
    ~LogLock();
    LogLock(const LogLock&) = delete;
    LogLock& operator=(const LogLock&) = delete;

    ///@{
    /// For signal handlers, which must not block on a lock that the interrupted thread may hold.

    /// Calls `work` with the lock held: immediately if the lock is free, otherwise right after its release, usually in
    /// its holder's thread: so in a signal handler or in an ordinary thread. Repeated calls before `work` has run count
    /// as one.
    static void callWhenFree(void (*work)());
    /// Acquires the lock permanently, unless that takes more than half a second or the calling thread already holds it.
    static void takeIfPossible();
    ///@}

private:
    bool m_isOuter;
    int m_cancelState = 0;
};

#pragma once

/// Holds the log's one lock, which protects the log files, the back end and its configuration. Recursive, since writing
/// an entry may log something else. A `fork()` waits for it, so that the child finds it free and the log consistent; a
/// thread that is cancelled (`QThread::terminate()`) ends after it has released it.
class LogLock {
public:
    LogLock();
    ~LogLock();
    LogLock(const LogLock&) = delete;
    LogLock& operator=(const LogLock&) = delete;

    ///@{
    /// For signal handlers, which must not wait for a lock that the interrupted thread may hold.

    /// Calls `work` with the lock held: at once if the lock is free, otherwise as soon as its holder has released it.
    /// `work` may run in either context. Repeated calls before it ran count as one.
    static void callWhenFree(void (*work)());
    /// Takes the lock for good if that is possible within half a second, or if the calling thread has it already.
    static void takeIfPossible();
    ///@}

private:
    bool m_isOuter;
    int m_cancelState = 0;
};

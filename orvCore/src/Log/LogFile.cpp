#include "Log/LogFile_p.h"

#include "Log/LogRollout_p.h"

#include <Orv/Log/LogRollout.h>

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <csignal>
#include <optional>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Does not block if the path is a FIFO, and never uses the descriptor of a closed standard stream.
int openForAppending(const std::string& path)
{
    int descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666);
    if (descriptor < 0 || descriptor > STDERR_FILENO)
        return descriptor;
    const int higher = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(descriptor);
    return higher;
}

bool hasPartialLine(const std::string& path, off_t size)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    char last = '\n';
    if (descriptor < 0 || ::pread(descriptor, &last, 1, size - 1) != 1)
        last = '\n'; // assume a complete last line if the file is not readable
    if (descriptor >= 0)
        ::close(descriptor);
    return last != '\n';
}

/// Suppresses the signals of a failed write (SIGPIPE, SIGXFSZ), so that only write() reports the error.
class WriteSignalGuard {
public:
    WriteSignalGuard()
    {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : Signals)
            sigaddset(&signals, signal);
        ::pthread_sigmask(SIG_BLOCK, &signals, &m_maskBefore);
        ::sigpending(&m_pendingBefore);
    }
    ~WriteSignalGuard()
    {
        sigset_t pending;
        ::sigpending(&pending);
        for (const int signal : Signals) {
            if (!sigismember(&pending, signal) || sigismember(&m_pendingBefore, signal))
                continue;
            sigset_t one;
            sigemptyset(&one);
            sigaddset(&one, signal);
            int received = 0;
            ::sigwait(&one, &received);
        }
        ::pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
    }
    WriteSignalGuard(const WriteSignalGuard&) = delete;
    WriteSignalGuard& operator=(const WriteSignalGuard&) = delete;

private:
    static constexpr int Signals[] = {SIGPIPE, SIGXFSZ};
    sigset_t m_maskBefore;
    sigset_t m_pendingBefore;
};

} // namespace

LogFile::LogFile(std::string path, std::size_t maxSize) : m_path(std::move(path)), m_maxSize(maxSize)
{
    if (open() && isFull())
        rotate();
}

LogFile::~LogFile()
{
    close();
}

void LogFile::append(std::string_view entry)
{
    if (m_descriptor < 0 && !open())
        return;
    if (isFull())
        rotate();
    const bool wasFull = isFull();
    if (!appendOnly(entry))
        close();
    else if (isFull() && !wasFull)
        rotate();
}

bool LogFile::appendOnly(std::string_view entry)
{
    return (m_descriptor >= 0 || openInDirectory()) && (!m_hasPartialLine || write("\n")) && write(entry);
}

bool LogFile::open()
{
    if (openInDirectory())
        return true;
    return errno == ENOENT && QDir().mkpath(QFileInfo(QString::fromStdString(m_path)).path()) && openInDirectory();
}

/// Keeps the current file if the new one cannot be opened. Async-signal-safe.
bool LogFile::openInDirectory()
{
    const int descriptor = openForAppending(m_path);
    if (descriptor < 0)
        return false;
    close();
    struct stat status { };
    const bool isRegular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    rlimit sizeLimit{};
    m_mayRaiseSignals =
        !isRegular || (::getrlimit(RLIMIT_FSIZE, &sizeLimit) == 0 && sizeLimit.rlim_cur != RLIM_INFINITY);
    m_limit = isRegular ? m_maxSize : 0;
    m_size = isRegular ? static_cast<std::size_t>(status.st_size) : 0;
    m_hasPartialLine = m_size > 0 && hasPartialLine(m_path, status.st_size);
    m_descriptor = descriptor;
    return true;
}

void LogFile::close()
{
    const int descriptor = m_descriptor.exchange(-1);
    if (descriptor >= 0)
        ::close(descriptor);
}

void LogFile::rotate()
{
    const std::time_t now = std::time(nullptr);
    if (now == m_takenSecond)
        return;
    if (isAtPath()) {
        if (::access(rotatedName(QString::fromStdString(m_path)).toUtf8(), F_OK) == 0) {
            m_takenSecond = now;
            return;
        }
        logsRollout(m_path.c_str(), m_size);
        if (isAtPath())
            return;
    }
    open();
}

/// Whether the path still names the open file.
bool LogFile::isAtPath() const
{
    struct stat named { };
    struct stat opened { };
    return ::stat(m_path.c_str(), &named) == 0 && ::fstat(m_descriptor, &opened) == 0 &&
        named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

bool LogFile::write(std::string_view text)
{
    std::optional<WriteSignalGuard> guard;
    if (m_mayRaiseSignals)
        guard.emplace();
    while (!text.empty()) {
        const ssize_t written = ::write(m_descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        m_size += static_cast<std::size_t>(written);
        m_hasPartialLine = text[static_cast<std::size_t>(written) - 1] != '\n';
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

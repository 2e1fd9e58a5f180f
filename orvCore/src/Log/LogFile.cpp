#include "Log/LogFile_p.h"

#include "Log/LogRollout_p.h"

#include <Orv/Log/LogRollout.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Without waiting for a reader, should it be a pipe, and never as one of the standard streams, should one be closed.
int openForAppending(const std::string& path)
{
    int descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666);
    if (descriptor < 0 || descriptor > STDERR_FILENO)
        return descriptor;
    const int higher = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(descriptor);
    return higher;
}

bool endsInALine(const std::string& path, off_t size)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    char last = '\n';
    if (descriptor < 0 || ::pread(descriptor, &last, 1, size - 1) != 1)
        last = '\n'; // a file that we may not read is taken for whole
    if (descriptor >= 0)
        ::close(descriptor);
    return last != '\n';
}

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
    return m_descriptor >= 0 && (!m_endsInALine || write("\n")) && write(entry);
}

/// Leaves the file that is open as it is if no other can be opened.
bool LogFile::open()
{
    int descriptor = openForAppending(m_path);
    if (descriptor < 0 && errno == ENOENT) {
        QDir().mkpath(QFileInfo(QString::fromStdString(m_path)).path());
        descriptor = openForAppending(m_path);
    }
    if (descriptor < 0)
        return false;
    close();
    struct stat status { };
    const bool isRegular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    m_limit = isRegular ? m_maxSize : 0;
    m_size = isRegular ? static_cast<std::size_t>(status.st_size) : 0;
    m_endsInALine = m_size > 0 && endsInALine(m_path, status.st_size);
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
    if (isInPlace()) {
        if (QFile::exists(rotatedName(QString::fromStdString(m_path)))) {
            m_takenSecond = now;
            return;
        }
        logsRollout(m_path.c_str(), m_size);
        if (isInPlace())
            return;
    }
    open();
}

/// Whether the open file is the one that has the name.
bool LogFile::isInPlace() const
{
    struct stat named { };
    struct stat opened { };
    return ::stat(m_path.c_str(), &named) == 0 && ::fstat(m_descriptor, &opened) == 0 &&
        named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

bool LogFile::write(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = ::write(m_descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        m_size += static_cast<std::size_t>(written);
        m_endsInALine = text[static_cast<std::size_t>(written) - 1] != '\n';
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

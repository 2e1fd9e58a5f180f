#include "Files.h"

#include "Console.h"
#include "Work.h"

#include <Orv/Utility/Preallocate.h>

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using Orv::Exception::Base;

namespace fs = std::filesystem;

namespace orvseal {

namespace {

/// Where a folder is or would be, with all links on the way resolved; empty if its parent does not exist.
QString canonicalPath(const QString& path)
{
    const QFileInfo info(QDir::cleanPath(path));
    if (info.exists())
        return info.canonicalFilePath();
    const QString parent = QFileInfo(info.absolutePath()).canonicalFilePath();
    return parent.isEmpty() ? parent : QDir::cleanPath(parent + '/' + info.fileName());
}

bool isInside(const QString& inner, const QString& outer)
{
    return inner == outer || inner.startsWith(outer.endsWith('/') ? outer : outer + '/');
}

// POSIX calls the member st_mtim, macOS st_mtimespec.
template <class Status> auto modificationTime(const Status& status, int) -> decltype(status.st_mtim)
{
    return status.st_mtim;
}

template <class Status> auto modificationTime(const Status& status, long) -> decltype(status.st_mtimespec)
{
    return status.st_mtimespec;
}

FileState toState(const struct stat& status)
{
    // Not from Qt, which takes it through local time: where a zone once put its clocks back for good, an hour is lost.
    const timespec modified = modificationTime(status, 0);
    const mode_t nineBits = S_IRWXU | S_IRWXG | S_IRWXO;
    FileState state;
    // The sticky bit of a folder keeps its users from removing each other's files. The bits that lend a program the
    // rights of its owner are left out: what is opened may belong to somebody else, who lent nothing.
    state.permissions = int(status.st_mode & (S_ISDIR(status.st_mode) ? nineBits | S_ISVTX : nineBits));
    state.size = status.st_size;
    state.modified = qint64(modified.tv_sec) * 1000 + modified.tv_nsec / 1000000;
    return state;
}

} // namespace

fs::path nativePath(const QString& path)
{
    return fs::path(path.toStdString());
}

bool prepareEmptyFolder(const QString& path, const QString& source)
{
    if (isInside(canonicalPath(path), canonicalPath(source)))
        throw Base(QStringLiteral("%1 is in %2, from which it would be filled").arg(path, source));

    std::error_code error;
    if (fs::symlink_status(nativePath(path), error).type() == fs::file_type::not_found) {
        makeFolder(path);
        return true;
    }
    if (!fs::is_directory(nativePath(path), error) || !fs::is_empty(nativePath(path), error) || error)
        throw Base(QStringLiteral("%1 exists and is not an empty folder").arg(path));
    return false;
}

void makeFolder(const QString& path)
{
    if (::mkdir(nativePath(path).c_str(), S_IRWXU) != 0)
        throw Base(QStringLiteral("the folder %1 cannot be made: %2").arg(path, qt_error_string(errno)));
}

FileState stateOf(const QString& path)
{
    struct stat status = {};
    if (::lstat(nativePath(path).c_str(), &status) != 0)
        throw Base(qt_error_string(errno));
    return toState(status);
}

FileState stateOf(const QFile& file)
{
    struct stat status = {};
    if (::fstat(file.handle(), &status) != 0)
        throw Base(qt_error_string(errno));
    return toState(status);
}

FileState openToRead(QFile& file, const QString& prefix)
{
    const int descriptor = ::open(nativePath(file.fileName()).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    const QString notRegular = prefix + QStringLiteral("not a regular file");
    if (descriptor < 0)
        throw Base(errno == ELOOP ? notRegular : prefix + qt_error_string(errno)); // ELOOP: a link
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
        !file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle)) {
        ::close(descriptor);
        throw Base(notRegular);
    }
    return toState(status);
}

void setPermissions(const QString& path, int permissions)
{
    std::error_code error;
    fs::permissions(nativePath(path), fs::perms(permissions), error);
    if (error)
        throw Base(QStringLiteral("its permissions cannot be set: ") + QString::fromStdString(error.message()));
}

void setModified(const QString& path, qint64 modified)
{
    // Rounded down, so that the rest is positive also before 1970.
    const std::chrono::milliseconds time(modified);
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const std::chrono::nanoseconds rest = time - seconds;
    timespec times[2] = {};
    times[0].tv_nsec = UTIME_OMIT; // the time of the last access
    times[1].tv_sec = seconds.count();
    times[1].tv_nsec = rest.count();
    if (::utimensat(AT_FDCWD, nativePath(path).c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        throw Base(QStringLiteral("its modification time cannot be set: ") + qt_error_string(errno));
}

qint64 HashingFile::readData(char* data, qint64 maxSize)
{
    const qint64 size = QFile::readData(data, maxSize);
    if (size > 0)
        m_hash.addData(data, size);
    return size;
}

NewFile::NewFile(const QString& path) : m_file(path)
{
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        m_kept = true; // whatever has that name is not ours
        fail();
    }
}

NewFile::~NewFile()
{
    if (!m_kept)
        m_file.remove();
}

void NewFile::reserve(qint64 size)
{
    if (!Orv::Utility::preallocateFile(m_file.handle(), quint64(size)))
        throw CannotGoOn(QStringLiteral("%1 cannot be written: no room for %2").arg(m_file.fileName(), sizeText(size)));
}

void NewFile::write(const char* data, qint64 size)
{
    // A disk that runs full takes a part first, and gives the reason only when it is asked to take the rest.
    while (size > 0) {
        const qint64 written = m_file.write(data, size);
        if (written <= 0)
            fail();
        data += written;
        size -= written;
    }
}

void NewFile::close()
{
    m_file.close();
    if (m_file.error() != QFile::NoError)
        fail();
}

void NewFile::keepAs(const QString& path)
{
    std::error_code error;
    if (fs::symlink_status(nativePath(path), error).type() != fs::file_type::not_found)
        throw Base(QStringLiteral("there is something of that name already"));
    fs::rename(nativePath(m_file.fileName()), nativePath(path), error);
    if (error)
        throw Base(QString::fromStdString(error.message()));
    m_kept = true;
}

void NewFile::fail() const
{
    throw CannotGoOn(QStringLiteral("%1 cannot be written: %2").arg(m_file.fileName(), m_file.errorString()));
}

} // namespace orvseal

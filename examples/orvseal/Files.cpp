#include "Files.h"

#include "System.h"
#include "Work.h"

#include <Orv/Utility/FileInfo.h>

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
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

FileState toState(const struct stat& status)
{
    const mode_t nineBits = S_IRWXU | S_IRWXG | S_IRWXO;
    FileState state;
    if (S_ISREG(status.st_mode))
        state.type = FileState::File;
    else if (S_ISDIR(status.st_mode))
        state.type = FileState::Folder;
    else if (S_ISLNK(status.st_mode))
        state.type = FileState::Link;
    // The sticky bit of a folder keeps its users from removing each other's files. The bits that lend a program the
    // rights of its owner are left out: what is opened may belong to somebody else, who lent nothing.
    state.permissions = int(status.st_mode & (S_ISDIR(status.st_mode) ? nineBits | S_ISVTX : nineBits));
    state.lendsRights = (status.st_mode & (S_ISUID | S_ISGID)) != 0;
    state.size = status.st_size;
    state.modified = modifiedTime(status);
    state.owner = qint64(status.st_uid);
    state.group = qint64(status.st_gid);
    state.device = quint64(status.st_dev);
    state.inode = quint64(status.st_ino);
    state.names = quint64(status.st_nlink);
    return state;
}

bool isZero(const char* data, qint64 size)
{
    return data[0] == 0 && std::memcmp(data, data + 1, std::size_t(size - 1)) == 0;
}

} // namespace

fs::path nativePath(const QString& path)
{
    return fs::path(path.toStdString());
}

void requireOutside(const QString& path, const QString& source)
{
    if (isInside(canonicalPath(path), canonicalPath(source)))
        throw Base(QStringLiteral("%1 is in %2, from which it would be filled").arg(path, source));
}

void prepareEmptyFolder(const QString& path, const QString& source)
{
    requireOutside(path, source);
    std::error_code error;
    if (fs::symlink_status(nativePath(path), error).type() == fs::file_type::not_found)
        makeFolder(path);
    else if (!fs::is_directory(nativePath(path), error) || !fs::is_empty(nativePath(path), error) || error)
        throw Base(QStringLiteral("%1 exists and is not an empty folder").arg(path));
}

void makeFolder(const QString& path)
{
    if (::mkdir(nativePath(path).c_str(), S_IRWXU) != 0)
        throw Base(QStringLiteral("the folder %1 cannot be made: %2").arg(path, qt_error_string(errno)));
}

void flushFolder(const QString& path)
{
    const int descriptor = ::open(nativePath(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool flushed = descriptor >= 0 && flushVolume(descriptor);
    const int reason = errno;
    if (descriptor >= 0)
        ::close(descriptor);
    if (!flushed)
        throw CannotGoOn(QStringLiteral("%1 cannot be brought to the disk: %2").arg(path, qt_error_string(reason)));
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
    if (!Orv::Utility::FileInfo::setLastModified(path, std::chrono::nanoseconds(modified), false))
        throw Base(QStringLiteral("its modification time cannot be set: ") + qt_error_string(errno));
}

bool setOwner(const QString& path, qint64 owner, qint64 group)
{
    const FileState state = stateOf(path);
    if (state.owner == owner && state.group == group)
        return true;
    const fs::path place = nativePath(path);
    if (::lchown(place.c_str(), uid_t(owner), gid_t(group)) == 0)
        return true;
    // A group of one's own may be given without the right to change owners.
    const bool groupGiven = ::lchown(place.c_str(), uid_t(-1), gid_t(group)) == 0;
    return groupGiven && state.owner == owner;
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

void NewFile::write(const char* data, qint64 size)
{
    // A disk that runs full takes a part first, and gives the reason only when it is asked to take the rest.
    while (size > 0) {
        const qint64 written = m_file.write(data, size);
        if (written <= 0)
            fail();
        data += written;
        size -= written;
        m_size += written;
    }
}

void NewFile::writeSparse(const char* data, qint64 size)
{
    static constexpr qint64 BlockSize = 4096; // bytes; of the file systems in use
    const char* const end = data + size;
    while (data < end) {
        const char* next = data;
        bool isHole = false;
        while (next < end) { // as far as the blocks are alike
            const qint64 position = m_size + (next - data);
            const qint64 block = std::min<qint64>(end - next, BlockSize - position % BlockSize);
            const bool zero = isZero(next, block);
            if (next == data)
                isHole = zero;
            else if (zero != isHole)
                break;
            next += block;
        }
        if (!isHole) {
            write(data, next - data);
        } else {
            m_size += next - data;
            if (!m_file.seek(m_size))
                fail();
        }
        data = next;
    }
}

void NewFile::rewrite(const QByteArray& beginning)
{
    if (!m_file.seek(0) || m_file.write(beginning) != beginning.size())
        fail();
}

void NewFile::close()
{
    if (m_file.size() < m_size && !m_file.resize(m_size)) // it ends in a hole
        fail();
    if (!flushFile(m_file.handle()))
        fail(qt_error_string(errno));
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

void NewFile::replace(const QString& path)
{
    std::error_code error;
    fs::rename(nativePath(m_file.fileName()), nativePath(path), error);
    if (error)
        fail(QString::fromStdString(error.message()));
    m_kept = true;
}

void NewFile::fail() const
{
    fail(m_file.errorString());
}

void NewFile::fail(const QString& reason) const
{
    throw CannotGoOn(QStringLiteral("%1 cannot be written: %2").arg(m_file.fileName(), reason));
}

} // namespace orvseal

#include "Files.h"

#include "System.h"
#include "Work.h"

#include <Orv/Utility/FileInfo.h>

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using Orv::Exception::Base;

namespace fs = std::filesystem;

namespace orvseal {

namespace {

bool isZero(const char* begin, const char* end)
{
    return *begin == 0 && std::memcmp(begin, begin + 1, std::size_t(end - begin - 1)) == 0;
}

/// Removes a file of that name: a run that was killed may have left one.
QString temporaryName(const QString& path)
{
    const QString temporary = path + QStringLiteral(".new");
    QFile::remove(temporary);
    return temporary;
}

} // namespace

fs::path nativePath(const QString& path)
{
    return fs::path(path.toStdString());
}

fs::file_type typeOf(const QString& path)
{
    std::error_code error;
    const fs::file_type type = fs::symlink_status(nativePath(path), error).type();
    if (type == fs::file_type::none)
        throw Base(QStringLiteral("%1: %2").arg(path, QString::fromStdString(error.message())));
    return type;
}

void throwIf(const std::error_code& error)
{
    if (error)
        throw Base(QString::fromStdString(error.message()));
}

void requireOutside(const QString& path, const QString& directory)
{
    std::error_code error; // leaves an empty path, which is inside of nothing
    const fs::path inner = fs::weakly_canonical(nativePath(path), error);
    const fs::path relative = inner.lexically_relative(fs::weakly_canonical(nativePath(directory), error));
    if (!relative.empty() && *relative.begin() != "..")
        throw Base(QStringLiteral("%1 must not be inside %2").arg(path, directory));
}

void prepareEmptyDirectory(const QString& path, const QString& source)
{
    requireOutside(path, source);
    std::error_code error;
    if (typeOf(path) == fs::file_type::not_found)
        makeDirectory(path);
    else if (!fs::is_directory(nativePath(path), error) || !fs::is_empty(nativePath(path), error) || error)
        throw Base(QStringLiteral("%1 exists and is not an empty directory").arg(path));
}

void makeDirectory(const QString& path)
{
    if (::mkdir(nativePath(path).c_str(), S_IRWXU) != 0)
        throw Base(QStringLiteral("the directory %1 cannot be created: %2").arg(path, qt_error_string(errno)));
}

void flushDirectory(const QString& path)
{
    const int descriptor = ::open(nativePath(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool flushed = descriptor >= 0 && flushVolume(descriptor);
    const int reason = errno;
    if (descriptor >= 0)
        ::close(descriptor);
    if (!flushed)
        throw CannotGoOn(QStringLiteral("%1 cannot be flushed to the disk: %2").arg(path, qt_error_string(reason)));
}

FileState stateOf(const QString& path)
{
    FileState state = {};
    if (::lstat(nativePath(path).c_str(), &state) != 0)
        throw Base(qt_error_string(errno));
    return state;
}

FileState stateOf(const QFile& file)
{
    FileState state = {};
    if (::fstat(file.handle(), &state) != 0)
        throw Base(qt_error_string(errno));
    return state;
}

int permissionsOf(const FileState& state)
{
    // The sticky bit of a directory keeps its users from removing each other's files. The bits that lend a program its
    // owner's rights are left out: the restored file may have another owner.
    const mode_t nineBits = S_IRWXU | S_IRWXG | S_IRWXO;
    return int(state.st_mode & (S_ISDIR(state.st_mode) ? nineBits | S_ISVTX : nineBits));
}

bool isSameContent(const FileState& a, const FileState& b)
{
    return a.st_size == b.st_size && modifiedTime(a) == modifiedTime(b);
}

FileState openToRead(QFile& file, const QString& prefix)
{
    const int descriptor = ::open(nativePath(file.fileName()).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    const QString notRegular = prefix + QStringLiteral("not a regular file");
    if (descriptor < 0 && (errno == EMFILE || errno == ENFILE))
        throw CannotGoOn(prefix + qt_error_string(errno)); // the next file would fail as well
    if (descriptor < 0)
        throw Base(errno == ELOOP ? notRegular : prefix + qt_error_string(errno)); // ELOOP: a link
    FileState state = {};
    if (::fstat(descriptor, &state) != 0 || !S_ISREG(state.st_mode) ||
        !file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle)) {
        ::close(descriptor);
        throw Base(notRegular);
    }
    return state;
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
    if (state.st_uid == owner && state.st_gid == group)
        return true;
    const fs::path place = nativePath(path);
    if (::lchown(place.c_str(), uid_t(owner), gid_t(group)) == 0)
        return true;
    // A user may give files to his groups without the right to change owners.
    const bool groupGiven = ::lchown(place.c_str(), uid_t(-1), gid_t(group)) == 0;
    return groupGiven && state.st_uid == owner;
}

NewFile::NewFile(const QString& path) : m_file(path)
{
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        m_kept = true; // an existing file of that name is not ours
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
    // A disk that becomes full accepts a part first, and gives the reason only when the rest is written.
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
    static constexpr qint64 BlockSize = 4096; // bytes, as in most file systems
    const char* const end = data + size;
    const auto blockEnd = [&](const char* from) { // blocks are those of the file
        const qint64 position = m_size + (from - data);
        return from + std::min<qint64>(end - from, BlockSize - position % BlockSize);
    };
    while (data < end) {
        const char* next = blockEnd(data);
        const bool isHole = isZero(data, next);
        while (next < end && isZero(next, blockEnd(next)) == isHole)
            next = blockEnd(next);
        const qint64 written = next - data;
        if (!isHole)
            write(data, written);
        else if (m_file.seek(m_size + written))
            m_size += written;
        else
            fail();
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
    if (typeOf(path) != fs::file_type::not_found)
        throw Base(QStringLiteral("something of that name exists already"));
    std::error_code error;
    fs::rename(nativePath(m_file.fileName()), nativePath(path), error);
    throwIf(error);
    keep();
}

void NewFile::fail(QString reason) const
{
    if (reason.isNull())
        reason = m_file.errorString();
    throw CannotGoOn(QStringLiteral("%1 cannot be written: %2").arg(m_file.fileName(), reason));
}

Replacement::Replacement(const QString& path) : NewFile(temporaryName(path)), m_path(path)
{
}

void Replacement::prepare()
{
    close();
    flushDirectory(QFileInfo(m_path).path());
}

void Replacement::commit()
{
    std::error_code error;
    fs::rename(nativePath(m_file.fileName()), nativePath(m_path), error);
    if (error)
        fail(QString::fromStdString(error.message()));
    keep();
}

} // namespace orvseal

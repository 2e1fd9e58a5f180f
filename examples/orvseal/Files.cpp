#include "Files.h"

#include "Work.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

namespace fs = std::filesystem;

namespace orvseal {

namespace {

bool isZero(const char* begin, const char* end)
{
    return *begin == 0 && std::memcmp(begin, begin + 1, std::size_t(end - begin - 1)) == 0;
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
        fail("%1: %2", path, QString::fromStdString(error.message()));
    return type;
}

bool exists(const QString& path)
{
    return typeOf(path) != fs::file_type::not_found;
}

void throwIf(const std::error_code& error)
{
    if (error)
        throw Orv::Exception::Base(QString::fromStdString(error.message()));
}

void requireOutside(const QString& path, const QString& directory)
{
    std::error_code error; // leaves an empty path, which is inside of nothing
    const fs::path inner = fs::weakly_canonical(nativePath(path), error);
    const fs::path relative = inner.lexically_relative(fs::weakly_canonical(nativePath(directory), error));
    if (!relative.empty() && *relative.begin() != "..")
        fail("%1 must not be inside %2", path, directory);
}

void makeDirectory(const QString& path)
{
    if (::mkdir(nativePath(path).c_str(), S_IRWXU) != 0)
        fail("the directory %1 cannot be created: %2", path, qt_error_string(errno));
}

void flushDirectory(const QString& path)
{
    const int descriptor = ::open(nativePath(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool flushed = descriptor >= 0 && flushVolume(descriptor);
    const int reason = errno;
    if (descriptor >= 0)
        ::close(descriptor);
    if (!flushed)
        fail<FatalError>("%1 cannot be flushed to the disk: %2", path, qt_error_string(reason));
}

FileState stateOf(const QString& path)
{
    FileState state = {};
    if (::lstat(nativePath(path).c_str(), &state) != 0)
        throw Orv::Exception::Base(qt_error_string(errno));
    return state;
}

FileState stateOf(const QFile& file)
{
    FileState state = {};
    if (::fstat(file.handle(), &state) != 0)
        throw Orv::Exception::Base(qt_error_string(errno));
    return state;
}

FileState openToRead(QFile& file, const QString& prefix)
{
    const int descriptor = ::open(nativePath(file.fileName()).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0 && (errno == EMFILE || errno == ENFILE))
        throw FatalError(prefix + qt_error_string(errno)); // the next file would fail as well
    if (descriptor < 0 && errno != ELOOP)                  // ELOOP: a link
        throw Orv::Exception::Base(prefix + qt_error_string(errno));
    FileState state = {};
    if (::fstat(descriptor, &state) != 0 || !S_ISREG(state.st_mode) ||
        !file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle)) {
        ::close(descriptor);
        throw Orv::Exception::Base(prefix + "not a regular file");
    }
    return state;
}

QString temporaryName(const QString& path)
{
    QFile::remove(path + ".new");
    return path + ".new";
}

NewFile::NewFile(const QString& path) : m_file(path)
{
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        m_kept = true; // an existing file of that name is not ours
        refuse(m_file.errorString());
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
            refuse(m_file.errorString());
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
            refuse(m_file.errorString());
        data = next;
    }
}

void NewFile::rewrite(const QByteArray& beginning)
{
    if (!m_file.seek(0) || m_file.write(beginning) != beginning.size())
        refuse(m_file.errorString());
}

void NewFile::close()
{
    if (m_file.size() < m_size && !m_file.resize(m_size)) // it ends in a hole
        refuse(m_file.errorString());
    if (!flushFile(m_file.handle()))
        refuse(qt_error_string(errno));
    m_file.close();
    if (m_file.error() != QFile::NoError)
        refuse(m_file.errorString());
}

void NewFile::keepAs(const QString& path)
{
    if (exists(path))
        fail("something of that name exists already");
    std::error_code error;
    fs::rename(nativePath(m_file.fileName()), nativePath(path), error);
    throwIf(error);
    keep();
}

void NewFile::refuse(const QString& reason) const
{
    fail<FatalError>("%1 cannot be written: %2", m_file.fileName(), reason);
}

void NewFile::replace(const QString& path)
{
    std::error_code error;
    fs::rename(nativePath(m_file.fileName()), nativePath(path), error);
    if (error)
        refuse(QString::fromStdString(error.message()));
    keep();
}

qint64 nanosecondsOf(const timespec& time)
{
    constexpr qint64 Second = 1000000000;
    constexpr qint64 Last = std::numeric_limits<qint64>::max() / Second - 1;
    return qBound(-Last, qint64(time.tv_sec), Last) * Second + time.tv_nsec;
}

} // namespace orvseal

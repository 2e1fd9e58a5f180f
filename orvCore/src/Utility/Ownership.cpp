#include <Orv/Utility/Ownership.h>

#include "Utility/NativePath_p.h"

#include <Orv/Core/ModuleName.h>
#include <Orv/Log/OrvDebug.h>

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Orv::Utility {

namespace {

void logRequest(const QString& path, const QFileInfo& info)
{
    // "Ownere": other programs match this text.
    OrvDebug(CORE_MODULE_NAME).debug() << "Ownere for path:" << path << "owner:" << info.owner()
                                       << "group:" << info.group();
}

void logNewOwner(const QString& path, uint owner, uint group)
{
    OrvDebug(CORE_MODULE_NAME).debug() << "Change owner for full path:" << path << "owner:" << owner
                                       << "group:" << group;
}

bool failed(const QString& path, int error)
{
    const char* const message = std::strerror(error);
    OrvDebug(CORE_MODULE_NAME).warning() << "Error on change owner for path:" << path << "message:" << message;
    return false;
}

/// `change` makes the system call and returns its result: 0 on success.
template <class Change> bool changeOwner(const QString& path, uint owner, uint group, Change change)
{
    OrvDebug(CORE_MODULE_NAME).debug() << "Change owner for path:" << path << "owner:" << owner << "group:" << group;
    return change() == 0 || failed(path, errno);
}

/// A directory, open during the lifetime of the object.
class OpenDirectory {
public:
    /// Opens `name` relative to the descriptor `parent`, or an absolute path. Fails if it is a link.
    OpenDirectory(int parent, const QString& name, const QString& path)
        : m_descriptor(
              ::openat(parent, nativePath(name.toUtf8()).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)),
          m_path(path)
    {
        if (m_descriptor == -1 || ::fstat(m_descriptor, &m_status) != 0)
            m_error = errno;
        else if (!S_ISDIR(m_status.st_mode))
            m_error = ENOTDIR;
    }
    OpenDirectory(OpenDirectory&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1)), m_path(std::move(other.m_path)),
          m_status(other.m_status), m_error(other.m_error)
    {
    }
    ~OpenDirectory()
    {
        if (m_descriptor != -1)
            ::close(m_descriptor);
    }
    OpenDirectory& operator=(OpenDirectory&&) = delete;

    int descriptor() const { return m_descriptor; }
    const QString& path() const { return m_path; }
    const struct stat& status() const { return m_status; }
    int error() const { return m_error; }

private:
    int m_descriptor;
    QString m_path;
    struct stat m_status = {};
    int m_error = 0;
};

bool changeWithoutLinks(const QString& path)
{
    const QString absolutePath = QDir::isAbsolutePath(path) ? path : QDir::currentPath() + QLatin1Char('/') + path;
    QStringList names = absolutePath.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    names.removeAll(QStringLiteral("."));
    if (path.isEmpty() || names.isEmpty() || names.contains(QStringLiteral("..")))
        return failed(path, EINVAL);
    const QString lastName = names.takeLast();

    std::vector<OpenDirectory> directories; // root first
    directories.emplace_back(AT_FDCWD, QStringLiteral("/"), QStringLiteral("/"));
    for (const QString& name : names) {
        if (directories.back().error() != 0)
            break;
        const QString parentPath = directories.back().path();
        const QString directoryPath = QDir(parentPath).filePath(name);
        directories.emplace_back(directories.back().descriptor(), name, directoryPath);
    }
    if (directories.back().error() != 0)
        return failed(directories.back().path(), directories.back().error());

    const QByteArray nativeName = nativePath(lastName.toUtf8());
    struct stat status = {};
    if (::fstatat(directories.back().descriptor(), nativeName.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return failed(path, errno);
    if (S_ISLNK(status.st_mode))
        return failed(path, ELOOP);
    if (!S_ISDIR(status.st_mode) && status.st_nlink > 1)
        return failed(path, EMLINK); // its other names may belong to another user

    const auto other = std::find_if(directories.rbegin(), directories.rend(),
        [&status](const OpenDirectory& directory) { return directory.status().st_uid != status.st_uid; });
    if (other == directories.rend())
        return true;
    const uint owner = other->status().st_uid;
    const uint group = other->status().st_gid;
    logNewOwner(path, owner, group);
    for (auto directory = other.base(); directory != directories.end(); ++directory) {
        if (!changeOwner(
                directory->path(), owner, group, [&] { return ::fchown(directory->descriptor(), owner, group); }))
            return false;
    }
    return changeOwner(path, owner, group, [&] {
        return ::fchownat(directories.back().descriptor(), nativeName.constData(), owner, group, AT_SYMLINK_NOFOLLOW);
    });
}

} // namespace

bool changeOwnershipForPath(const QString& path)
{
    const QFileInfo info(path);
    logRequest(path, info);

    QStringList paths = {path}; // deepest first
    QDir ancestor(info.path());
    QFileInfo ancestorInfo(ancestor.path());
    while (ancestorInfo.ownerId() == info.ownerId()) {
        paths += ancestor.path();
        if (!ancestor.cdUp())
            return true;
        ancestorInfo.setFile(ancestor.path());
    }

    const uint owner = ancestorInfo.ownerId();
    const uint group = ancestorInfo.groupId();
    logNewOwner(path, owner, group);
    return std::all_of(paths.crbegin(), paths.crend(), [owner, group](const QString& lower) {
        return changeOwner(
            lower, owner, group, [&] { return ::chown(nativePath(lower.toUtf8()).constData(), owner, group); });
    });
}

bool changeOwnershipForPath(const QString& path, LinkPolicy policy)
{
    if (policy == LinkPolicy::Follow)
        return changeOwnershipForPath(path);
    logRequest(path, QFileInfo(path));
    return changeWithoutLinks(path);
}

} // namespace Orv::Utility

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
    // "Ownere": other programs match the text as it is.
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

/// `change` is the system call, which returns 0 on success.
template <class Change> bool changeOwner(const QString& path, uint owner, uint group, Change change)
{
    OrvDebug(CORE_MODULE_NAME).debug() << "Change owner for path:" << path << "owner:" << owner << "group:" << group;
    return change() == 0 || failed(path, errno);
}

/// A folder that is held open while the object lives.
class OpenFolder {
public:
    /// `name` in `parent`, or an absolute path. A link is not opened.
    OpenFolder(int parent, const QString& name, const QString& path)
        : m_descriptor(
              ::openat(parent, nativePath(name.toUtf8()).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)),
          m_path(path)
    {
        if (m_descriptor == -1 || ::fstat(m_descriptor, &m_status) != 0)
            m_error = errno;
        else if (!S_ISDIR(m_status.st_mode))
            m_error = ENOTDIR;
    }
    OpenFolder(OpenFolder&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1)), m_path(std::move(other.m_path)),
          m_status(other.m_status), m_error(other.m_error)
    {
    }
    ~OpenFolder()
    {
        if (m_descriptor != -1)
            ::close(m_descriptor);
    }
    OpenFolder& operator=(OpenFolder&&) = delete;

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

    std::vector<OpenFolder> folders; // from the root on
    folders.emplace_back(AT_FDCWD, QStringLiteral("/"), QStringLiteral("/"));
    for (const QString& name : names) {
        if (folders.back().error() != 0)
            break;
        const QString parentPath = folders.back().path();
        const QString folderPath = QDir(parentPath).filePath(name);
        folders.emplace_back(folders.back().descriptor(), name, folderPath);
    }
    if (folders.back().error() != 0)
        return failed(folders.back().path(), folders.back().error());

    const QByteArray nativeName = nativePath(lastName.toUtf8());
    struct stat status = {};
    if (::fstatat(folders.back().descriptor(), nativeName.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return failed(path, errno);
    if (S_ISLNK(status.st_mode))
        return failed(path, ELOOP);
    if (!S_ISDIR(status.st_mode) && status.st_nlink > 1)
        return failed(path, EMLINK); // whose file it is by its other names is not known

    const auto other = std::find_if(folders.rbegin(), folders.rend(),
        [&status](const OpenFolder& folder) { return folder.status().st_uid != status.st_uid; });
    if (other == folders.rend())
        return true;
    const uint owner = other->status().st_uid;
    const uint group = other->status().st_gid;
    logNewOwner(path, owner, group);
    for (auto folder = other.base(); folder != folders.end(); ++folder) {
        if (!changeOwner(folder->path(), owner, group, [&] { return ::fchown(folder->descriptor(), owner, group); }))
            return false;
    }
    return changeOwner(path, owner, group, [&] {
        return ::fchownat(folders.back().descriptor(), nativeName.constData(), owner, group, AT_SYMLINK_NOFOLLOW);
    });
}

} // namespace

bool changeOwnershipForPath(const QString& path)
{
    const QFileInfo info(path);
    logRequest(path, info);

    QStringList paths = {path}; // the lowest first
    QDir folder(info.path());
    QFileInfo folderInfo(folder.path());
    while (folderInfo.ownerId() == info.ownerId()) {
        paths += folder.path();
        if (!folder.cdUp())
            return true;
        folderInfo.setFile(folder.path());
    }

    const uint owner = folderInfo.ownerId();
    const uint group = folderInfo.groupId();
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

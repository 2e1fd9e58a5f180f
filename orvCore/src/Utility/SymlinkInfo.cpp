#include <Orv/Utility/SymlinkInfo.h>

#include "Utility/NativePath_p.h"

#include <Orv/Core/ModuleName.h>
#include <Orv/Log/OrvDebug.h>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace Orv::Utility {

namespace {

using StatCall = int (*)(const char* path, struct stat* status);

bool callStat(StatCall call, const QString& path, struct stat& status)
{
    return call(nativePath(path.toUtf8()).constData(), &status) != -1;
}

QDateTime modificationTime(const struct stat& status)
{
    return QDateTime::fromSecsSinceEpoch(static_cast<quint32>(status.st_mtime));
}

} // namespace

SymlinkInfo::SymlinkInfo(const QFileInfo& info) : m_path(info.isSymLink() ? info.filePath() : QString())
{
}

QDateTime SymlinkInfo::lastModified() const
{
    if (!isValid())
        return {};
    struct stat status = {};
    if (callStat(::lstat, m_path, status))
        return modificationTime(status);
    const char* const message = std::strerror(errno);
    // " ;stat:": other programs match this text.
    OrvDebug(CORE_MODULE_NAME).error() << "SymlinkInfo: on init file ;stat:" << m_path << "message:" << message;
    return {};
}

bool SymlinkInfo::exist(const QString& path)
{
    struct stat status = {};
    if (callStat(::stat, path, status))
        return true;
    const char* message = std::strerror(errno);
    OrvDebug(CORE_MODULE_NAME).info() << "SymlinkInfo: check file stat:" << path << "message:" << message;
    if (callStat(::lstat, path, status))
        return true;
    message = std::strerror(errno);
    OrvDebug(CORE_MODULE_NAME).info() << "SymlinkInfo: check file lstat:" << path << "errno:" << message;
    return false;
}

QDateTime lastModified(const Core::FS::FileInfo& info, bool noFollow)
{
    const QString path = info.isSymLink() ? info.filePath() : info.absoluteFilePath();
    struct stat status = {};
    if (callStat(noFollow ? ::lstat : ::stat, path, status))
        return modificationTime(status);
    const char* const message = std::strerror(errno);
    OrvDebug(CORE_MODULE_NAME).error() << "on init file stat:" << path;
    OrvDebug(CORE_MODULE_NAME).error() << "Error message:" << message;
    return {};
}

QDateTime symlinkLastModified(const Core::FS::FileInfo& info)
{
    if (info.isSymLink())
        return lastModified(info, true);
    OrvDebug(CORE_MODULE_NAME).error() << "file is not symlink, path:" << info.filePath();
    return {};
}

} // namespace Orv::Utility

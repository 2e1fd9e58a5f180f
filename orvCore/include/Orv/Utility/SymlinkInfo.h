#pragma once

#include <Orv/Core/FS/FileInfo.h>
#include <Orv/Export.h>

#include <QDateTime>
#include <QFileInfo>
#include <QString>

namespace Orv::Utility {

/// Properties of a symbolic link itself, where `QFileInfo` reports those of its target. Const functions are
/// thread-safe.
class ORV_EXPORT SymlinkInfo {
public:
    /// Refers to the link at `path`. Does not access the file system, and does not check that `path` is a link.
    explicit SymlinkInfo(const QString& path) : m_path(path) { }
    /// Refers to the link `info`. Invalid if `info` is not a link.
    explicit SymlinkInfo(const QFileInfo& info);

    /// Whether the object has a path.
    bool isValid() const { return !m_path.isEmpty(); }
    /// Returns the modification time of the link itself, in local time and whole seconds. Null if the object is
    /// invalid; null with an error logged if nothing exists at the path.
    QDateTime lastModified() const;

    /// Whether an entry exists at `path`; a dangling link counts. Logs each failed `stat` at info level: once for a
    /// dangling link, twice if nothing exists.
    static bool exist(const QString& path);

private:
    QString m_path;
};

/// Returns the modification time of a file, in local time and whole seconds; with `noFollow`, of a link itself instead
/// of its target. On failure, logs two errors and returns a null value.
ORV_EXPORT QDateTime lastModified(const Core::FS::FileInfo& info, bool noFollow);

/// Returns the modification time of a link itself, like `lastModified` with `noFollow`. If `info` is not a link, logs
/// an error and returns a null value.
ORV_EXPORT QDateTime symlinkLastModified(const Core::FS::FileInfo& info);

} // namespace Orv::Utility

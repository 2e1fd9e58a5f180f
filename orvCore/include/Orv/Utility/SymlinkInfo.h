#pragma once

#include <Orv/Core/FS/FileInfo.h>
#include <Orv/Export.h>

#include <QDateTime>
#include <QFileInfo>
#include <QString>

namespace Orv::Utility {

/// A symbolic link itself, where `QFileInfo` answers for what it points to. Thread-safe as far as it is not changed.
class ORV_EXPORT SymlinkInfo {
public:
    /// The link at `path`, which is neither read nor checked to be one.
    explicit SymlinkInfo(const QString& path) : m_path(path) { }
    /// The link of `info`; not valid if that is none.
    explicit SymlinkInfo(const QFileInfo& info);

    /// Whether the object has a path.
    bool isValid() const { return !m_path.isEmpty(); }
    /// When the link itself was changed, in local time, in whole seconds. Null if the object is not valid, or, with an
    /// error logged, if there is nothing at the path.
    QDateTime lastModified() const;

    /// Whether there is anything at `path`, also a link without a target. Logs each failed look as information: one
    /// for a link without a target, two for nothing.
    static bool exist(const QString& path);

private:
    QString m_path;
};

/// When a file was changed, in local time, in whole seconds; with `noFollow`, a link itself and not its target. Null,
/// with two errors logged, if that cannot be found out.
ORV_EXPORT QDateTime lastModified(const Core::FS::FileInfo& info, bool noFollow);

/// When a link itself was changed, as `lastModified` with `noFollow`. Null, with an error logged, if it is no link.
ORV_EXPORT QDateTime symlinkLastModified(const Core::FS::FileInfo& info);

} // namespace Orv::Utility

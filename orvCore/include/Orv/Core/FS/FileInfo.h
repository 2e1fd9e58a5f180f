#pragma once

#include <Orv/Export.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QString>

namespace Orv::Core::FS {

/// A snapshot of a file-system entry. Type, size, times and permissions are read once, when the object is constructed
/// or refreshed. Existence, readability, hidden and link state are queried on every call; name and suffix come from the
/// path. Links are followed, except by `isSymLink()`.
///
/// Times are in UTC, so snapshots compare across time zones and daylight-saving changes. Errors are not reported: a
/// missing entry yields an empty snapshot, a dangling link one with null times and no permissions. A Finder alias is a
/// regular file, but `isSymLink()` is true for it. All values are those of QFileInfo. Const functions are thread-safe
/// while no other thread modifies the object.
class ORV_EXPORT FileInfo {
public:
    /// An empty snapshot; does not access the file system.
    FileInfo() = default;
    ///@{
    /// Reads a snapshot of the entry.
    explicit FileInfo(const QString& path);
    explicit FileInfo(const QFileInfo& info);
    ///@}

    /// Reads the snapshot of the entry at `path`. A dangling link counts as existing. If nothing exists, everything but
    /// the two paths is reset; so the paths stay empty if nothing existed at construction.
    void refresh(const QString& path);
    /// Calls `refresh(absoluteFilePath())`.
    void refresh();

    /// Whether the entry exists now. False for a dangling link.
    bool isExist() const;
    /// Whether it was a directory.
    bool isDir() const { return m_isDir; }
    /// Whether it was a regular file.
    bool isFile() const { return m_isFile; }
    /// Whether it is a symbolic link now.
    bool isSymLink() const;
    /// Whether the user of the process may read it now.
    bool isReadable() const;
    /// Whether its name begins with a dot or the system hides it.
    bool isHidden() const;

    /// The last part of the path.
    QString fileName() const;
    /// The part of the file name after the last dot.
    QString suffix() const;
    /// The absolute path, without ".", ".." and redundant slashes; links are not resolved.
    const QString& absoluteFilePath() const { return m_absoluteFilePath; }
    /// The path as passed to `refresh`; absolute after construction.
    const QString& filePath() const { return m_filePath; }

    /// The modification time.
    const QDateTime& lastModified() const { return m_lastModified; }
    /// The creation time; the metadata change time if the file system does not store creation times.
    const QDateTime& birthTime() const { return m_birthTime; }
    /// The size in bytes.
    qint64 size() const { return m_size; }
    /// The permissions of owner, group and others, and those of the user of the process.
    QFile::Permissions permissions() const { return m_permissions; }

private:
    void refreshThroughQt(const QFileInfo& info);
    void reset();

    QString m_absoluteFilePath;
    QString m_filePath;
    bool m_isDir = false;
    bool m_isFile = false;
    QDateTime m_lastModified;
    QDateTime m_birthTime;
    qint64 m_size = 0;
    QFile::Permissions m_permissions;
};

} // namespace Orv::Core::FS

#pragma once

#include <Orv/Export.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QString>

namespace Orv::Core::FS {

/// What a file-system entry looked like at one moment: type, size, times and permissions are taken once, when the
/// object is made or refreshed, and then stay. Existence, link, readability, name and suffix are asked anew on every
/// call. Links are followed, but for `isSymLink()`.
///
/// Times are in UTC, so that snapshots compare across zones and daylight-saving changes. Nothing is reported: an entry
/// that is gone gives an empty snapshot, and a dangling link one with null times and no permissions. A Finder alias is
/// a regular file here, but `isSymLink()` is true for it. All answers are those of QFileInfo. May be read by several
/// threads while none changes it.
class ORV_EXPORT FileInfo {
public:
    /// Stands for nothing; does not ask the file system.
    FileInfo() = default;
    ///@{
    /// The snapshot of what is there now.
    explicit FileInfo(const QString& path);
    explicit FileInfo(const QFileInfo& info);
    ///@}

    /// Takes the snapshot anew, from what is at `path`; a link without a target is something. If there is nothing,
    /// size, types, times and permissions are reset and both paths stay as they are: so they are empty in an object
    /// that was made of a path with nothing there.
    void refresh(const QString& path);
    /// The same from `absoluteFilePath()`.
    void refresh();

    /// Whether there is something at the path, and at the target of a link, now.
    bool isExist() const;
    /// Whether it is a folder.
    bool isDir() const { return m_isDir; }
    /// Whether it is a regular file.
    bool isFile() const { return m_isFile; }
    /// Whether it is a symbolic link.
    bool isSymLink() const;
    /// Whether the user of the process may read it.
    bool isReadable() const;
    /// Whether its name begins with a dot, or the system hides it in another way.
    bool isHidden() const;

    /// The last part of the path.
    QString fileName() const;
    /// What follows the last dot of the file name.
    QString suffix() const;
    /// The absolute path, cleaned of ".", ".." and needless slashes; links are not resolved.
    const QString& absoluteFilePath() const { return m_absoluteFilePath; }
    /// The path as it was given to `refresh`; the constructors give an absolute one.
    const QString& filePath() const { return m_filePath; }

    /// The time of the last change of the content.
    const QDateTime& lastModified() const { return m_lastModified; }
    /// The time of creation; where the file system does not keep one, that of the last change of the entry itself.
    const QDateTime& birthTime() const { return m_birthTime; }
    /// In bytes.
    qint64 size() const { return m_size; }
    /// The rights of owner, group and others, and those of the user of the process.
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

#include <Orv/Core/FS/FileInfo.h>

namespace Orv::Core::FS {

namespace {

QDateTime createdOrChanged(const QFileInfo& info)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED // its successor gives no time where the file system does not keep that of creation
        return info.created();
    QT_WARNING_POP
}

} // namespace

FileInfo::FileInfo(const QString& path) : FileInfo(QFileInfo(path))
{
}

FileInfo::FileInfo(const QFileInfo& info)
{
    refresh(info.absoluteFilePath());
}

void FileInfo::refresh(const QString& path)
{
    const QFileInfo info(path); // all questions to one object, which keeps what the system answered
    if (!info.exists() && !info.isSymLink()) {
        m_isDir = false;
        m_isFile = false;
        m_lastModified = QDateTime();
        m_birthTime = QDateTime();
        m_size = 0;
        m_permissions = {};
        return;
    }
    m_absoluteFilePath = info.absoluteFilePath();
    m_filePath = info.filePath();
    m_isDir = info.isDir();
    m_isFile = info.isFile();
    m_lastModified = info.lastModified().toUTC();
    m_birthTime = createdOrChanged(info).toUTC();
    m_size = info.size();
    m_permissions = info.permissions();
}

void FileInfo::refresh()
{
    refresh(m_absoluteFilePath);
}

bool FileInfo::isExist() const
{
    return QFileInfo::exists(m_absoluteFilePath);
}

bool FileInfo::isSymLink() const
{
    return QFileInfo(m_absoluteFilePath).isSymLink();
}

bool FileInfo::isReadable() const
{
    return QFileInfo(m_absoluteFilePath).isReadable();
}

bool FileInfo::isHidden() const
{
    return QFileInfo(m_absoluteFilePath).isHidden();
}

QString FileInfo::fileName() const
{
    return QFileInfo(m_absoluteFilePath).fileName();
}

QString FileInfo::suffix() const
{
    return QFileInfo(m_absoluteFilePath).suffix();
}

} // namespace Orv::Core::FS

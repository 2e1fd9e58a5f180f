#include "PrivateMount.h"

#include <QFile>

#include <cerrno>
#include <cstdlib>
#include <sched.h>
#include <sys/mount.h>

namespace {

bool leaveTheSharedMounts()
{
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

} // namespace

PrivateMount::PrivateMount(qint64 size, const char* type) : m_path(m_folder.filePath(QStringLiteral("mounted")))
{
    const QString image = m_folder.filePath(QStringLiteral("image"));
    const QString text = QLatin1String(type) == QLatin1String("tmpfs")
        ? QStringLiteral("mkdir %1 && mount -t tmpfs -o size=%2 none %1").arg(m_path).arg(size)
        : QStringLiteral("mkdir %1 && truncate -s %2 %3 && /sbin/mkfs.%4 -q %3 && mount -o loop %3 %1")
              .arg(m_path)
              .arg(size)
              .arg(image, QLatin1String(type));
    if (!leaveTheSharedMounts() ||
        std::system((QStringLiteral("(%1) >/dev/null 2>&1").arg(text)).toUtf8().constData()) != 0)
        m_reason = QStringLiteral("cannot mount %1 here").arg(QLatin1String(type));
}

PrivateMount::PrivateMount(const QString& readOnlyFolder) : m_path(readOnlyFolder)
{
    const QByteArray place = QFile::encodeName(m_path);
    if (!leaveTheSharedMounts() || ::mount(place, place, nullptr, MS_BIND, nullptr) != 0 ||
        ::mount("none", place, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) != 0)
        m_reason = QStringLiteral("cannot make a folder read-only here: ") + qt_error_string(errno);
}

PrivateMount::~PrivateMount()
{
    if (m_reason.isNull())
        ::umount2(QFile::encodeName(m_path), MNT_DETACH);
}

#include "PrivateMount.h"

#include <QFile>

#include <cstdlib>
#include <sched.h>
#include <sys/mount.h>
#include <sys/xattr.h>

PrivateMount::PrivateMount(qint64 size, const char* type) : m_path(m_folder.filePath(QStringLiteral("mounted")))
{
    const QString text = QLatin1String(type) == QLatin1String("tmpfs")
        ? QStringLiteral("mount -t %3 -o size=%2 none %1")
        : QStringLiteral("truncate -s %2 %1.image && /sbin/mkfs.%3 -q %1.image && mount -o loop %1.image %1");
    const QString command = QStringLiteral("(mkdir %1 && %4) >/dev/null 2>&1").replace("%4", text).arg(m_path);
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        std::system(command.arg(size).arg(type).toUtf8().constData()) != 0)
        m_reason = QStringLiteral("cannot mount %1 here").arg(QLatin1String(type));
}

PrivateMount::~PrivateMount()
{
    if (m_reason.isNull())
        ::umount2(QFile::encodeName(m_path), MNT_DETACH);
}

bool PrivateMount::addLargeAttribute(const QFile& file)
{
    const QByteArray value(600, 'x');
    return ::fsetxattr(file.handle(), "user.large", value.constData(), size_t(value.size()), 0) == 0;
}

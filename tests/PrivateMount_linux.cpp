#include "PrivateMount.h"

#include <QFile>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

bool quotaUsedUp = false;

} // namespace

/// Replaces the C library's function.
extern "C" int fallocate(int fd, int mode, off_t offset, off_t size)
{
    if (!quotaUsedUp)
        return static_cast<int>(::syscall(SYS_fallocate, fd, mode, offset, size));
    (void)!::syscall(SYS_fallocate, fd, mode, offset, size / 2);
    errno = EDQUOT;
    return -1;
}

PrivateMount::PrivateMount(qint64 size, const char* type) : m_path(m_directory.filePath(QStringLiteral("mounted")))
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
    quotaUsedUp = false;
    if (m_reason.isNull())
        ::umount2(QFile::encodeName(m_path), MNT_DETACH);
}

bool PrivateMount::addLargeAttribute(const QFile& file)
{
    const QByteArray value(600, 'x');
    return ::fsetxattr(file.handle(), "user.large", value.constData(), size_t(value.size()), 0) == 0;
}

void PrivateMount::useUpQuota()
{
    quotaUsedUp = true;
}

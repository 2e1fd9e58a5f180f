#include "PrivateMount.h"

#include <QFile>

#include <cerrno>
#include <sched.h>
#include <sys/mount.h>

namespace {

bool leaveTheSharedMounts()
{
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

} // namespace

PrivateMount::PrivateMount(qint64 size) : m_path(m_folder.path())
{
    const QByteArray options = "mode=700,size=" + QByteArray::number(size);
    if (!leaveTheSharedMounts() || ::mount("none", QFile::encodeName(m_path), "tmpfs", 0, options.constData()) != 0)
        m_reason = QStringLiteral("cannot mount a file system here: ") + qt_error_string(errno);
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

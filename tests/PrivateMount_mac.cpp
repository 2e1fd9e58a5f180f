#include "PrivateMount.h"

PrivateMount::PrivateMount(qint64, const char*) : m_reason(QStringLiteral("no process has mounts of its own on macOS"))
{
}

PrivateMount::~PrivateMount() = default;

bool PrivateMount::addLargeAttribute(const QFile&)
{
    return false;
}

void PrivateMount::useUpQuota()
{
}

#include "PrivateMount.h"

PrivateMount::PrivateMount(qint64, const char*) : m_reason(QStringLiteral("macOS has no private mounts"))
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

#include "PrivateMount.h"

PrivateMount::PrivateMount(qint64) : m_reason(QStringLiteral("no process has mounts of its own on macOS"))
{
}

PrivateMount::PrivateMount(const QString&) : PrivateMount(0)
{
}

PrivateMount::~PrivateMount() = default;

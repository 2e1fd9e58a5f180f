#pragma once

#include <QByteArray>
#include <QList>

namespace Orv::Utitlity {

/// Whether a chain leads from the first certificate (DER) to one of the system's trust anchors; the other certificates
/// may be intermediates. Checks validity dates, but no purpose. False for an empty list or an invalid certificate.
bool isTrustedChain(const QList<QByteArray>& certificates);

} // namespace Orv::Utitlity

#pragma once

#include <QByteArray>
#include <QList>

namespace Orv::Utitlity {

/// Whether the first certificate (DER) leads to one of the system's anchors, with the help of the others. Validity
/// dates count, no purpose is demanded. Not without a certificate, nor with one that is none.
bool isTrustedChain(const QList<QByteArray>& certificates);

} // namespace Orv::Utitlity

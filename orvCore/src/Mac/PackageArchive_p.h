#pragma once

#include <QByteArray>
#include <QList>

namespace Orv::Utitlity {

/// What a xar archive tells of its first signature.
struct PackageSignature {
    enum State {
        Good,
        NotOpened,             ///< not an archive, or a damaged one
        NotSigned,             ///< an archive without a signature
        UnreadableCertificate, ///< a signature, one of whose certificates cannot be taken out
    };
    State state = NotOpened;
    QList<QByteArray> certificates; ///< DER, in the order of the signature, the signer's first; empty unless `Good`
};

/// Opens the archive with this path, in bytes as the system's calls take them.
PackageSignature readPackageSignature(const QByteArray& path);

} // namespace Orv::Utitlity

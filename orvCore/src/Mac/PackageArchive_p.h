#pragma once

#include <QByteArray>
#include <QList>

namespace Orv::Utitlity {

/// The first signature of a xar archive.
struct PackageSignature {
    enum State {
        Good,
        NotOpened,             ///< not an archive, or damaged
        NotSigned,             ///< no signature
        UnreadableCertificate, ///< a certificate of the signature is unreadable
    };
    State state = NotOpened;
    QList<QByteArray> certificates; ///< DER, in the order of the signature, signer first; empty unless `Good`
};

/// Reads the archive's first signature. `path` is in the system's encoding.
PackageSignature readPackageSignature(const QByteArray& path);

} // namespace Orv::Utitlity

#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

namespace Orv::Utitlity {

/// Says whether an installer package, a xar archive (https://github.com/mackyle/xar/wiki/xarformat), is signed by
/// somebody the system trusts.
///
/// It judges the certificates in the archive's signature, not the signature itself: that the package is what was signed
/// is for the installer to check.
///
/// Nothing is thrown. The packages may come from anywhere: whatever is in the file, one of the results below comes
/// back. An archive that cannot be used is logged as a warning with its path.
class ORV_EXPORT CheckPackageSignature {
public:
    /// What is found out about a package.
    enum Result : qint32 {
        Trusted = 0,        ///< there are certificates, and their chain is trusted
        NoPackage = 1,      ///< there is no regular file with this path; not logged
        SignatureError = 2, ///< no archive, no signature, or a certificate that cannot be taken out
        NotTrusted = 3,     ///< there are certificates, and their chain is not trusted
    };

    /// The path of the package. The archive is looked for under the path's Latin-1 form: one with other characters
    /// cannot be opened.
    explicit CheckPackageSignature(const QString& path) : m_path(path) { }

    /// The certificates of the archive's first signature, as it lists them, the signer's first: each one's DER bytes,
    /// in spite of the name. `Trusted` when they could be taken out, even if there are none, without a word about
    /// trust; any other result comes with an empty list.
    QPair<Result, QList<QByteArray>> getPemList() const;

    /// Whether the chain of these certificates leads to one of the system's anchors today: on macOS by the Security
    /// framework under the basic X.509 policy, elsewhere by OpenSSL with its default anchors and no purpose demanded. A
    /// user's own "always trust" does not count. The verdict is logged as a debug record. If they could not be taken
    /// out, the result is that of `getPemList()`.
    ///
    /// On macOS the calling thread may be blocked by the network.
    Result check_();

private:
    QString m_path;
};

} // namespace Orv::Utitlity

#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

namespace Orv::Utitlity {

/// Checks whether an installer package, a xar archive (https://github.com/mackyle/xar/wiki/xarformat), is signed by a
/// trusted party.
///
/// @warning Only the certificates in the archive's signature are checked, not the signature itself. The installer has
/// to verify that the package matches its signature.
///
/// Does not throw. Packages may be untrusted: every input yields one of the results below. An unusable archive is
/// logged as a warning with its path.
class ORV_EXPORT CheckPackageSignature {
public:
    /// The result of a check.
    enum Result : qint32 {
        Trusted = 0,        ///< the certificate chain is trusted
        NoPackage = 1,      ///< no regular file at this path; not logged
        SignatureError = 2, ///< not an archive, no signature, or an unreadable certificate
        NotTrusted = 3,     ///< the certificate chain is not trusted
    };

    /// `path` is the path of the package. It is encoded as Latin-1: a path with other characters cannot be opened.
    explicit CheckPackageSignature(const QString& path) : m_path(path) { }

    /// Returns the certificates of the archive's first signature in their order, the signer's first; in DER, despite
    /// the function's name. `Trusted` only means that they could be read, even if there are none: their trust is not
    /// checked. With any other result, the list is empty.
    QPair<Result, QList<QByteArray>> getPemList() const;

    /// Checks whether the chain of these certificates currently leads to one of the system's trust anchors: on macOS
    /// with the Security framework and the basic X.509 policy, elsewhere with OpenSSL, its default anchors and no
    /// required purpose. Trust settings of the user do not count. The result is logged as a debug message. If the
    /// certificates cannot be read, returns the result of `getPemList()`.
    ///
    /// On macOS, network access may block the calling thread.
    Result check_();

private:
    QString m_path;
};

} // namespace Orv::Utitlity

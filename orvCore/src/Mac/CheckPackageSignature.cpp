#include <Orv/Mac/CheckPackageSignature.h>

#include "Mac/CertificateTrust_p.h"
#include "Mac/PackageArchive_p.h"

#include <Orv/Core/ModuleName.h>
#include <Orv/Log/OrvDebug.h>

#include <QFileInfo>

namespace Orv::Utitlity {

namespace {

PackageSignature signatureOf(const QString& path)
{
    const QByteArray name = path.toLatin1();
    // toLatin1() replaces other characters by "?", which could name another package.
    if (QString::fromLatin1(name) != path)
        return {};
    return readPackageSignature(name);
}

const char* warningOf(PackageSignature::State state)
{
    switch (state) {
    case PackageSignature::NotOpened:
        return "MacPackageSignature: error opening Xar in path:";
    case PackageSignature::NotSigned:
        return "MacPackageSignature: error getting xar signature in path:";
    case PackageSignature::UnreadableCertificate:
        return "MacPackageSignature: Unable to extract certificate data. xar signature in path:";
    case PackageSignature::Good:
        break;
    }
    return nullptr;
}

} // namespace

QPair<CheckPackageSignature::Result, QList<QByteArray>> CheckPackageSignature::getPemList() const
{
    if (!QFileInfo(m_path).isFile())
        return {NoPackage, {}};
    const PackageSignature signature = signatureOf(m_path);
    if (const char* warning = warningOf(signature.state)) {
        OrvDebug(CORE_MODULE_NAME).warning() << warning << m_path;
        return {SignatureError, {}};
    }
    return {Trusted, signature.certificates};
}

CheckPackageSignature::Result CheckPackageSignature::check_()
{
    const auto [result, certificates] = getPemList();
    if (result != Trusted)
        return result;
    const bool isTrusted = isTrustedChain(certificates);
    OrvDebug(CORE_MODULE_NAME).debug() << (isTrusted ? "Trusted certificate" : "Don't trust the certificate");
    return isTrusted ? Trusted : NotTrusted;
}

} // namespace Orv::Utitlity

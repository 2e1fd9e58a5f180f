#include "Mac/CertificateTrust_p.h"

#include <CoreFoundation/CoreFoundation.h>
#include <Security/Security.h>

#include <memory>
#include <type_traits>

namespace Orv::Utitlity {

namespace {

struct Releaser {
    void operator()(CFTypeRef object) const { ::CFRelease(object); }
};
/// An owned reference.
template <typename Reference> using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, Releaser>;

/// Parses the certificates; null if one of them is invalid.
Owned<CFMutableArrayRef> parse(const QList<QByteArray>& chain)
{
    Owned<CFMutableArrayRef> certificates(::CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    for (const QByteArray& der : chain) {
        const Owned<CFDataRef> data(der.toCFData());
        const Owned<SecCertificateRef> certificate(::SecCertificateCreateWithData(nullptr, data.get()));
        if (!certificate)
            return nullptr;
        ::CFArrayAppendValue(certificates.get(), certificate.get()); // retains it
    }
    return certificates;
}

/// Null if `certificates` is empty.
Owned<SecTrustRef> makeTrust(CFArrayRef certificates)
{
    const Owned<SecPolicyRef> policy(::SecPolicyCreateBasicX509());
    SecTrustRef trust = nullptr;
    ::SecTrustCreateWithCertificates(certificates, policy.get(), &trust);
    return Owned<SecTrustRef>(trust);
}

OSStatus evaluate(SecTrustRef trust, SecTrustResultType& result)
{
    // Its successor, SecTrustEvaluateWithError(), also accepts anchors that a user trusts.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
    return ::SecTrustEvaluate(trust, &result);
#pragma clang diagnostic pop
}

} // namespace

bool isTrustedChain(const QList<QByteArray>& chain)
{
    const auto certificates = parse(chain);
    if (!certificates)
        return false;
    const auto trust = makeTrust(certificates.get());
    SecTrustResultType result = kSecTrustResultInvalid;
    return trust && evaluate(trust.get(), result) == errSecSuccess && result == kSecTrustResultUnspecified;
}

} // namespace Orv::Utitlity

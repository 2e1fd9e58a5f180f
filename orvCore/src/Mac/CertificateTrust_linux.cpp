#include "Mac/CertificateTrust_p.h"

#include <memory>
#include <numeric>

#include <openssl/err.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

namespace Orv::Utitlity {

namespace {

// Bounds the search for a chain; as many as OpenSSL's default maximum depth.
constexpr int MostCertificates = 100;
// A parsed certificate may need fifty times its size in memory. Real ones have a few KiB.
constexpr int LargestChain = 256 * 1024; // bytes

template <auto Free> struct Freer {
    template <typename Object> void operator()(Object* object) const { Free(object); }
};

void freeAll(STACK_OF(X509) * certificates)
{
    sk_X509_pop_free(certificates, X509_free);
}

using Certificate = std::unique_ptr<X509, Freer<X509_free>>;
using Certificates = std::unique_ptr<STACK_OF(X509), Freer<freeAll>>;
using Store = std::unique_ptr<X509_STORE, Freer<X509_STORE_free>>;
using Verification = std::unique_ptr<X509_STORE_CTX, Freer<X509_STORE_CTX_free>>;

/// Restores the thread's OpenSSL error queue, which the client may use too.
class ErrorMark {
public:
    ErrorMark() { ERR_set_mark(); }
    ~ErrorMark() { ERR_pop_to_mark(); }
    ErrorMark(const ErrorMark&) = delete;
    ErrorMark& operator=(const ErrorMark&) = delete;
};

/// Null if an element is not exactly one certificate.
Certificates parse(const QList<QByteArray>& chain)
{
    Certificates certificates(sk_X509_new_null());
    for (const QByteArray& der : chain) {
        const auto* next = reinterpret_cast<const unsigned char*>(der.constData());
        const auto* end = next + der.size();
        Certificate certificate(d2i_X509(nullptr, &next, der.size()));
        if (!certificate || next != end || sk_X509_push(certificates.get(), certificate.get()) == 0)
            return nullptr;
        static_cast<void>(certificate.release()); // owned by the stack now
    }
    return certificates;
}

} // namespace

bool isTrustedChain(const QList<QByteArray>& chain)
{
    const int size =
        std::accumulate(chain.begin(), chain.end(), 0, [](int sum, const QByteArray& der) { return sum + der.size(); });
    if (chain.isEmpty() || chain.size() > MostCertificates || size > LargestChain)
        return false;
    const ErrorMark mark;
    const Certificates certificates = parse(chain);
    const Store anchors(X509_STORE_new());
    const Verification verification(X509_STORE_CTX_new());
    if (!certificates || X509_STORE_set_default_paths(anchors.get()) != 1)
        return false;
    X509* leaf = sk_X509_value(certificates.get(), 0);
    return X509_STORE_CTX_init(verification.get(), anchors.get(), leaf, certificates.get()) == 1 &&
        X509_verify_cert(verification.get()) == 1;
}

} // namespace Orv::Utitlity

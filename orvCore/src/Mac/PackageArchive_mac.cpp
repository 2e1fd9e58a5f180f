#include "Mac/PackageArchive_p.h"

#include <xar/xar.h>

namespace Orv::Utitlity {

namespace {

xar_t openArchive(const QByteArray& path)
{
    // Deprecated without a replacement; the system installer still uses it.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
    return ::xar_open(path.constData(), READ);
#pragma clang diagnostic pop
}

} // namespace

PackageSignature readPackageSignature(const QByteArray& path)
{
    // Deliberately never closed: packages are untrusted, and freeing an archive with a damaged table may not be safe.
    // Few packages are checked per process, so the leak is small.
    const xar_t archive = openArchive(path);
    if (!archive)
        return {PackageSignature::NotOpened, {}};
    const xar_signature_t first = ::xar_signature_first(archive);
    if (!first)
        return {PackageSignature::NotSigned, {}};

    PackageSignature signature{PackageSignature::Good, {}};
    const int32_t count = ::xar_signature_get_x509certificate_count(first);
    for (int32_t index = 0; index < count; ++index) {
        const uint8_t* data = nullptr;
        uint32_t size = 0;
        if (::xar_signature_get_x509certificate_data(first, index, &data, &size) == -1)
            return {PackageSignature::UnreadableCertificate, {}};
        signature.certificates += QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size));
    }
    return signature;
}

} // namespace Orv::Utitlity

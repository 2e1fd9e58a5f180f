#include "Fuzz.h"

#include "Mac/PackageArchive_p.h"
#include "Mac/XarArchive.h"

#include <QTemporaryDir>

using Orv::Utitlity::PackageSignature;
using Orv::Utitlity::readPackageSignature;

namespace {

PackageSignature signatureOf(const QByteArray& content)
{
    static const QTemporaryDir directory; // tools/fuzz.sh places it in memory
    static const QString path = directory.filePath(QStringLiteral("package"));
    writeFile(path, content);
    const PackageSignature signature = readPackageSignature(QFile::encodeName(path));
    require(signature.state == PackageSignature::Good || signature.certificates.isEmpty(),
        "certificates are returned only for a good signature");
    for (const QByteArray& certificate : signature.certificates)
        require(!certificate.isEmpty(), "certificates are not empty");
    return signature;
}

/// Arbitrary file content.
void checkFile(FuzzedDataProvider& input)
{
    const QByteArray content = restOf(input);
    const PackageSignature signature = signatureOf(content);
    require(signature.state == PackageSignature::NotOpened ||
            signatureOf(content + "more").certificates == signature.certificates,
        "trailing data is ignored");
}

/// An arbitrary table in an otherwise valid archive.
void checkTable(FuzzedDataProvider& input)
{
    XarArchive archive;
    archive.header["algorithm"] = input.ConsumeIntegralInRange(0u, 2u);
    archive.table = restOf(input);
    if (!signatureOf(archive.bytes()).certificates.isEmpty())
        require(
            signatureOf(archive.bytes().chopped(1)).certificates.isEmpty(), "a signature needs a complete checksum");
}

} // namespace

/// Damaged archives yield no certificates.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    input.ConsumeBool() ? checkFile(input) : checkTable(input);
    return 0;
}

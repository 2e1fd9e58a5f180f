#include "Fuzz.h"

#include "Mac/PackageArchive_p.h"
#include "Mac/XarArchive.h"

#include <QTemporaryDir>

using Orv::Utitlity::PackageSignature;
using Orv::Utitlity::readPackageSignature;

namespace {

PackageSignature signatureOf(const QByteArray& content)
{
    static const QTemporaryDir folder; // tools/fuzz.sh has it in memory
    static const QString path = folder.filePath(QStringLiteral("package"));
    writeFile(path, content);
    const PackageSignature signature = readPackageSignature(QFile::encodeName(path));
    require(signature.state == PackageSignature::Good || signature.certificates.isEmpty(),
        "there are no certificates without a good signature");
    for (const QByteArray& certificate : signature.certificates)
        require(!certificate.isEmpty(), "a certificate is not empty");
    return signature;
}

/// Anything at all.
void checkFile(FuzzedDataProvider& input)
{
    const QByteArray content = restOf(input);
    const PackageSignature signature = signatureOf(content);
    require(signature.state == PackageSignature::NotOpened ||
            signatureOf(content + "more").certificates == signature.certificates,
        "what is behind everything else does not count");
}

/// Any table, in an archive that is good but for that.
void checkTable(FuzzedDataProvider& input)
{
    XarArchive archive;
    archive.header["algorithm"] = input.ConsumeIntegralInRange(0u, 2u);
    archive.table = restOf(input);
    if (!signatureOf(archive.bytes()).certificates.isEmpty())
        require(signatureOf(archive.bytes().chopped(1)).certificates.isEmpty(), "a signature needs a whole checksum");
}

} // namespace

/// Out of what is no good archive nothing comes.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    input.ConsumeBool() ? checkFile(input) : checkTable(input);
    return 0;
}

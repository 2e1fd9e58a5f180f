#include "Fuzz.h"

#include "Mac/PackageArchive_p.h"
#include "Mac/XarArchive.h"

#include <QTemporaryDir>

#include <array>

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

bool isSame(const PackageSignature& one, const PackageSignature& other)
{
    return one.state == other.state && one.certificates == other.certificates;
}

/// Anything at all.
void checkFile(FuzzedDataProvider& input)
{
    const QByteArray content = restOf(input);
    const PackageSignature signature = signatureOf(content);
    require(isSame(signatureOf(content), signature), "the same file says the same");
    if (signature.state != PackageSignature::NotOpened)
        require(isSame(signatureOf(content + "more"), signature), "what is behind everything else does not count");
}

/// Any table, in an archive that is good but for that.
void checkTable(FuzzedDataProvider& input)
{
    XarArchive archive;
    const auto algorithm = input.ConsumeIntegralInRange(0u, 2u);
    archive.header["algorithm"] = algorithm;
    const int checksumSize = algorithm == 2 ? 16 : 20;
    const int damagedByte = input.ConsumeIntegralInRange(1, checksumSize); // from the end
    archive.table = restOf(input);
    const PackageSignature signature = signatureOf(archive.bytes());
    int size = 0;
    for (const QByteArray& certificate : signature.certificates)
        size += certificate.size();
    require(size <= archive.table.size() / 4 * 3, "certificates are no larger than their Base64");
    if (signature.state == PackageSignature::NotOpened || signature.state == PackageSignature::NotSigned)
        return;

    QByteArray damaged = archive.bytes();
    const int at = damaged.size() - damagedByte;
    damaged[at] = static_cast<char>(damaged[at] ^ 1);
    require(signatureOf(damaged).state == PackageSignature::NotOpened, "a signature needs the right checksum");
}

/// Certificates in an archive as installers come.
void checkCertificates(FuzzedDataProvider& input)
{
    const bool isSignedTwice = input.ConsumeBool();
    QList<QByteArray> certificates;
    while (input.remaining_bytes() > 0) {
        const QByteArray certificate = QByteArray::fromStdString(input.ConsumeRandomLengthString());
        if (!certificate.isEmpty())
            certificates += certificate;
    }
    QByteArray signatures = signatureElement(certificateElements(certificates));
    if (isSignedTwice)
        signatures += signatureElement(certificateElements({"another"}));
    XarArchive archive;
    archive.table = tableOf(ChecksumElement + signatures);
    const PackageSignature signature = signatureOf(archive.bytes());
    require(signature.state == PackageSignature::Good, "the archive is good");
    require(signature.certificates == certificates, "the certificates are those of the first signature");
}

} // namespace

/// Certificates come out of an archive as they went in; out of what is no good archive nothing comes.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const std::array checks = {checkFile, checkTable, checkCertificates};
    checks[input.ConsumeIntegralInRange<std::size_t>(0, 2)](input);
    return 0;
}

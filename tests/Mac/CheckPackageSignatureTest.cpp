#include "DirectoryTest.h"
#include "Mac/XarArchive.h"

#include <Orv/Mac/CheckPackageSignature.h>

using Orv::Utitlity::CheckPackageSignature;
using CheckPackage = DirectoryTest;

TEST_F(CheckPackage, NoPackage)
{
    for (const QString& path : {m_directory.path(), pathOf("missing"), QString()}) {
        EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::NoPackage);
        EXPECT_EQ(CheckPackageSignature(path).getPemList().first, CheckPackageSignature::NoPackage);
    }
    EXPECT_EQ(logged.take(), QStringList());
}

TEST_F(CheckPackage, NameOutsideLatin1)
{
    // In Latin-1 the name would become "a?": another package, which must not be read instead.
    const QString path = pathOf(QString::fromUtf8(u8"a\u03a9"));
    writeFile(path, signedArchive({"leaf"}).bytes());
    writeFile(pathOf("a?"), signedArchive({"leaf"}).bytes());
    EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::SignatureError);
    EXPECT_EQ(logged.take(), QStringList("warning: MacPackageSignature: error opening Xar in path: " + path));
}

TEST_F(CheckPackage, CertificatesAreUnchanged)
{
    const QByteArray large = QByteArray("\0\x7f\x80\xff", 4).repeated(1250);
    const QString path = pathOf("package");
    for (const QList<QByteArray>& stored : {QList<QByteArray>({"leaf", large, QByteArray("\0root", 5)}), {}}) {
        writeFile(path, signedArchive(stored).bytes());
        const auto [result, certificates] = CheckPackageSignature(path).getPemList();
        EXPECT_EQ(result, CheckPackageSignature::Trusted);
        EXPECT_EQ(certificates, stored);
        EXPECT_EQ(logged.take(), QStringList());
        // Neither invalid certificates nor an empty list are trusted.
        EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::NotTrusted);
        EXPECT_EQ(logged.take(), QStringList(QStringLiteral("debug: Don't trust the certificate")));
    }
}

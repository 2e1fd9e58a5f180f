#include "FolderTest.h"
#include "Mac/XarArchive.h"

#include <Orv/Mac/CheckPackageSignature.h>

using Orv::Utitlity::CheckPackageSignature;
using CheckPackage = FolderTest;

TEST_F(CheckPackage, NoPackage)
{
    for (const QString& path : {m_folder.path(), placeOf("missing"), QString()}) {
        EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::NoPackage);
        EXPECT_EQ(CheckPackageSignature(path).getPemList().first, CheckPackageSignature::NoPackage);
    }
    EXPECT_EQ(logged.take(), QStringList());
}

TEST_F(CheckPackage, NameOutsideLatin1)
{
    // The name in bytes is another one, "a?", and this package must not pass for that.
    const QString path = placeOf(QString::fromUtf8(u8"a\u03a9"));
    writeFile(path, signedArchive({"leaf"}).bytes());
    writeFile(placeOf("a?"), signedArchive({"leaf"}).bytes());
    EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::SignatureError);
    EXPECT_EQ(logged.take(), QStringList("warning: MacPackageSignature: error opening Xar in path: " + path));
}

TEST_F(CheckPackage, CertificatesComeOutAsTheyAre)
{
    const QByteArray large = QByteArray("\0\x7f\x80\xff", 4).repeated(1250);
    const QString path = placeOf("package");
    for (const QList<QByteArray>& stored : {QList<QByteArray>({"leaf", large, QByteArray("\0root", 5)}), {}}) {
        writeFile(path, signedArchive(stored).bytes());
        const auto [result, certificates] = CheckPackageSignature(path).getPemList();
        EXPECT_EQ(result, CheckPackageSignature::Trusted);
        EXPECT_EQ(certificates, stored);
        EXPECT_EQ(logged.take(), QStringList());
        // They are no certificates, and nobody trusts a chain of none.
        EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::NotTrusted);
        EXPECT_EQ(logged.take(), QStringList(QStringLiteral("debug: Don't trust the certificate")));
    }
}

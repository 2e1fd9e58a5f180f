#include "Log/LoggedLines.h"
#include "Mac/XarArchive.h"

#include <Orv/Mac/CheckPackageSignature.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

using Orv::Utitlity::CheckPackageSignature;

TEST(CheckPackageSignature, NoPackage)
{
    const QTemporaryDir folder;
    LoggedLines log;
    for (const QString& path : {folder.path(), folder.filePath(QStringLiteral("missing")), QString()}) {
        EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::NoPackage);
        EXPECT_EQ(CheckPackageSignature(path).getPemList().first, CheckPackageSignature::NoPackage);
    }
    EXPECT_EQ(log.take(), QStringList());
}

TEST(CheckPackageSignature, NameOutsideLatin1)
{
    // The name in bytes is another one, "a?", and this package must not pass for that.
    const QTemporaryDir folder;
    const QString path = folder.filePath(QString::fromUtf8(u8"a\u03a9"));
    writeFile(path, signedArchive({"leaf"}).bytes());
    writeFile(folder.filePath(QStringLiteral("a?")), signedArchive({"leaf"}).bytes());
    LoggedLines log;
    EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::SignatureError);
    EXPECT_EQ(log.take(), QStringList("warning: MacPackageSignature: error opening Xar in path: " + path));
}

TEST(CheckPackageSignature, CertificatesComeOutAsTheyAre)
{
    QByteArray large(5000, '\0');
    for (int i = 0; i < large.size(); ++i)
        large[i] = static_cast<char>(i * 7);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("package"));
    for (const QList<QByteArray>& stored : {QList<QByteArray>({"leaf", large, QByteArray("\0root", 5)}), {}}) {
        writeFile(path, signedArchive(stored).bytes());
        LoggedLines log;
        const auto [result, certificates] = CheckPackageSignature(path).getPemList();
        EXPECT_EQ(result, CheckPackageSignature::Trusted);
        EXPECT_EQ(certificates, stored);
        EXPECT_EQ(log.take(), QStringList());
        // They are no certificates, and nobody trusts a chain of none.
        EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::NotTrusted);
        EXPECT_EQ(log.take(), QStringList(QStringLiteral("debug: Don't trust the certificate")));
    }
}

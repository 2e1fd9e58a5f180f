#include "Log/LoggedLines.h"
#include "Mac/XarArchive.h"

#include <Orv/Mac/CheckPackageSignature.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

using Orv::Utitlity::CheckPackageSignature;

namespace {

const QString OPENING = QStringLiteral("warning: MacPackageSignature: error opening Xar in path: ");
const QString GETTING = QStringLiteral("warning: MacPackageSignature: error getting xar signature in path: ");

} // namespace

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

TEST(CheckPackageSignature, ArchivesWithoutAUsableSignature)
{
    XarArchive notSigned = signedArchive({});
    notSigned.table = tableOf(checksumElement("sha1", 20));
    struct Row {
        const char* fileName;
        QByteArray content;
        QString warning;
    };
    const Row rows[] = {
        {"a text", "not an archive", OPENING},
        {"nothing", "", OPENING},
        {"not signed", notSigned.bytes(), GETTING},
        // The name in bytes is another one, "a?", and this package must not pass for that.
        {u8"a\u03a9", signedArchive({"leaf"}).bytes(), OPENING},
    };
    const QTemporaryDir folder;
    writeFile(folder.filePath(QStringLiteral("a?")), signedArchive({"leaf"}).bytes());
    for (const Row& row : rows) {
        const QString path = folder.filePath(QString::fromUtf8(row.fileName));
        writeFile(path, row.content);
        LoggedLines log;
        const auto [result, certificates] = CheckPackageSignature(path).getPemList();
        EXPECT_EQ(result, CheckPackageSignature::SignatureError) << row.fileName;
        EXPECT_TRUE(certificates.isEmpty()) << row.fileName;
        EXPECT_EQ(CheckPackageSignature(path).check_(), CheckPackageSignature::SignatureError) << row.fileName;
        EXPECT_EQ(log.take(), QStringList({row.warning + path, row.warning + path}));
    }
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

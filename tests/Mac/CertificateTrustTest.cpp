#include "DirectoryTest.h"
#include "KnownAnswers.h"
#include "Log/ChildProcess.h"
#include "Mac/XarArchive.h"

#include <Orv/Mac/CheckPackageSignature.h>

#include <QDir>
#include <QProcess>
#include <QVector>

using Orv::Utitlity::CheckPackageSignature;

namespace {

/// Generates certificates with the openssl program, in a temporary directory.
class CertificateTrustTest : public DirectoryTest {
protected:
    void SetUp() override
    {
        QProcess script;
        script.setWorkingDirectory(m_directory.path());
        script.start("bash", {dataPath("certificates.sh")});
        ASSERT_TRUE(script.waitForFinished());
        ASSERT_EQ(script.exitCode(), 0) << script.readAllStandardError().toStdString();
        for (const QString& name : QDir(m_directory.path()).entryList({"*.der"}))
            m_stored[name.chopped(4).toUtf8()] = contentOf(pathOf(name));
        const QByteArray direct = m_stored["direct"];
        m_stored["text"] = "no certificate";
        m_stored["cut"] = direct.chopped(1);
        m_stored["tail"] = direct + '\0';
        m_stored["forged"] = direct.chopped(1) + static_cast<char>(direct.back() ^ 1);
        m_stored["large"] = QByteArray::fromHex("3082ffff") + QByteArray(65535, '\x30');
    }

    CheckPackageSignature::Result resultFor(const QList<QByteArray>& certificates) const
    {
        writeFile(pathOf("package"), signedArchive(certificates).bytes());
        return CheckPackageSignature(pathOf("package")).check_();
    }

    /// Sets the system's trust anchors for OpenSSL: one file, no directory.
    void setAnchors(const QString& name) const
    {
        qputenv("SSL_CERT_FILE", QFile::encodeName(pathOf(name)));
        qputenv("SSL_CERT_DIR", "/dev/null");
    }

    KnownAnswer m_stored;
};

} // namespace

TEST_F(CertificateTrustTest, Chains)
{
    // In a child process, because the anchors are set in the environment
    expectInChild(
        [this] {
            for (const KnownAnswer& row : tableOfAnswers("chains.txt")) {
                const bool isTrusted = row["trusted"] == "yes";
                setAnchors(row["anchors"]);
                QList<QByteArray> certificates;
                for (const QByteArray& name : row["chain"].split(' '))
                    certificates += m_stored[name];
                EXPECT_EQ(resultFor(certificates) == CheckPackageSignature::Trusted, isTrusted)
                    << row["row"].constData();
                EXPECT_EQ(logged.take(),
                    QStringList(isTrusted ? "debug: Trusted certificate" : "debug: Don't trust the certificate"));
            }
            setAnchors("root");
            for (const int size : {100, 101}) {
                const QList<QByteArray> certificates = QVector<QByteArray>(size, m_stored["direct"]).toList();
                EXPECT_EQ(resultFor(certificates) == CheckPackageSignature::Trusted, size == 100) << size;
            }
        },
        pathOf("output"));
}

#include "KnownAnswers.h"
#include "Log/ChildProcess.h"
#include "Log/LoggedLines.h"
#include "Mac/XarArchive.h"

#include <Orv/Mac/CheckPackageSignature.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QVector>

#include <gtest/gtest.h>

using Orv::Utitlity::CheckPackageSignature;

namespace {

/// Certificates of the openssl program, in a folder of their own.
class CertificateTrustTest : public testing::Test {
protected:
    void SetUp() override
    {
        for (const char* const name : {"index", "none"})
            writeFile(path(name), {});
        for (const KnownAnswer& row : tableOfAnswers("certificates.txt")) {
            make(row);
            m_stored[row["name"]] = run({"x509", "-in", row["name"], "-outform", "DER"});
        }
        writeFile(path("huge.cnf"), "[huge]\nnsComment=" + QByteArray(300000, 'x') + '\n');
        run({"x509", "-req", "-in", "direct.csr", "-CA", "root", "-CAkey", "root.key", "-days", "1000", "-extfile",
            "huge.cnf", "-extensions", "huge", "-out", "huge"});
        m_stored["huge"] = run({"x509", "-in", "huge", "-outform", "DER"}); // more than one can be
        const QByteArray direct = m_stored["direct"];
        m_stored["text"] = "no certificate";
        m_stored["cut"] = direct.chopped(1);
        m_stored["tail"] = direct + '\0';
        m_stored["forged"] = direct.chopped(1) + static_cast<char>(direct.back() ^ 1);
        m_stored["large"] = QByteArray::fromHex("3082ffff") + QByteArray(65535, '\x30');
    }

    QString path(const QString& name) const { return m_folder.filePath(name); }

    CheckPackageSignature::Result resultFor(const QList<QByteArray>& certificates) const
    {
        writeFile(path("package"), signedArchive(certificates).bytes());
        return CheckPackageSignature(path("package")).check_();
    }

    /// The system's anchors, as OpenSSL sees them: one file and no folder.
    void setAnchors(const QString& name) const
    {
        qputenv("SSL_CERT_FILE", QFile::encodeName(path(name)));
        qputenv("SSL_CERT_DIR", "/dev/null");
    }

    KnownAnswer m_stored;

private:
    void make(const KnownAnswer& row) const
    {
        const QString config = dataPath("ca.cnf");
        const QString name = row["name"];
        const QString issuer = row["issuer"];
        QStringList request = {"req", "-config", config, "-subj", "/CN=" + name, "-newkey", "ec", "-pkeyopt",
            "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", name + ".key", "-out"};
        if (issuer == "itself") {
            run(request + QStringList({name, "-x509", "-days", "1000", "-extensions", row["section"]}));
            return;
        }
        run(request + QStringList(name + ".csr"));
        run({"ca", "-batch", "-config", config, "-extensions", row["section"], "-startdate", row["from"], "-enddate",
            row["to"], "-notext", "-cert", issuer, "-keyfile", issuer + ".key", "-in", name + ".csr", "-out", name});
    }

    QByteArray run(const QStringList& arguments) const
    {
        QProcess openssl;
        openssl.setWorkingDirectory(m_folder.path());
        openssl.start("openssl", arguments);
        if (!openssl.waitForFinished() || openssl.exitCode() != 0)
            ADD_FAILURE() << arguments.join(' ') << openssl.readAllStandardError().toStdString();
        return openssl.readAllStandardOutput();
    }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(CertificateTrustTest, Chains)
{
    // In a process of its own, whose environment may have other anchors
    expectInChild(
        [this] {
            for (const KnownAnswer& row : tableOfAnswers("chains.txt")) {
                const bool isTrusted = row["trusted"] == "yes";
                setAnchors(row["anchors"]);
                QList<QByteArray> certificates;
                for (const QByteArray& name : row["chain"].split(' '))
                    certificates += m_stored[name];
                LoggedLines log;
                EXPECT_EQ(resultFor(certificates) == CheckPackageSignature::Trusted, isTrusted)
                    << row["chain"].constData() << " by " << row["anchors"].constData();
                EXPECT_EQ(log.take(),
                    QStringList(isTrusted ? "debug: Trusted certificate" : "debug: Don't trust the certificate"));
            }
            setAnchors("root");
            for (const int size : {100, 101}) {
                const QList<QByteArray> certificates = QVector<QByteArray>(size, m_stored["direct"]).toList();
                EXPECT_EQ(resultFor(certificates) == CheckPackageSignature::Trusted, size == 100) << size;
            }
        },
        path("output"));
}

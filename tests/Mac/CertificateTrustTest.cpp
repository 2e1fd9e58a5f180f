#include "Log/LoggedLines.h"
#include "Mac/XarArchive.h"

#include <Orv/Mac/CheckPackageSignature.h>

#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QVector>

#include <gtest/gtest.h>

using Orv::Utitlity::CheckPackageSignature;

namespace {

/// Certificates of the openssl program, in a folder of their own.
class Authority {
public:
    Authority()
    {
        write("ca.cnf",
            "[ca]\ndefault_ca=d\n[d]\ndatabase=index\nnew_certs_dir=.\nrand_serial=yes\ndefault_md=sha256\n"
            "policy=p\nunique_subject=no\n[p]\ncommonName=supplied\n"
            "[req]\ndistinguished_name=n\n[n]\n"
            "[root]\nbasicConstraints=critical,CA:true\n"
            "[authority]\nbasicConstraints=critical,CA:true\nkeyUsage=critical,keyCertSign\n"
            "[leaf]\nbasicConstraints=critical,CA:false\n"
            "[purpose]\nbasicConstraints=critical,CA:false\nkeyUsage=critical,digitalSignature\n"
            "extendedKeyUsage=critical,codeSigning\n");
        write("index", "");
        write("none", "");
    }

    QString path(const QString& name) const { return m_folder.filePath(name); }

    void selfSigned(const QString& name, const QString& section)
    {
        run({"req", "-x509", "-config", "ca.cnf", "-extensions", section, "-subj", "/CN=" + name, "-days", "1000",
            "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", name + ".key", "-out",
            name});
    }

    void issue(const QString& name, const QString& issuer, const QString& section,
        const QString& start = "20200101000000Z", const QString& end = "21200101000000Z")
    {
        run({"req", "-config", "ca.cnf", "-subj", "/CN=" + name, "-newkey", "ec", "-pkeyopt",
            "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", name + ".key", "-out", name + ".csr"});
        run({"ca", "-batch", "-config", "ca.cnf", "-extensions", section, "-startdate", start, "-enddate", end,
            "-notext", "-cert", issuer, "-keyfile", issuer + ".key", "-in", name + ".csr", "-out", name});
    }

    QByteArray der(const QString& name) const { return run({"x509", "-in", name, "-outform", "DER"}); }

private:
    void write(const char* name, const QByteArray& content) { writeFile(path(name), content); }

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

/// The system's anchors, as OpenSSL sees them, while it lives: one file and no folder.
class ScopedAnchors {
public:
    explicit ScopedAnchors(const QString& path)
    {
        qputenv("SSL_CERT_FILE", QFile::encodeName(path));
        qputenv("SSL_CERT_DIR", "/dev/null");
    }
    ~ScopedAnchors()
    {
        restore("SSL_CERT_FILE", m_file);
        restore("SSL_CERT_DIR", m_folder);
    }
    ScopedAnchors(const ScopedAnchors&) = delete;
    ScopedAnchors& operator=(const ScopedAnchors&) = delete;

private:
    static void restore(const char* name, const QByteArray& value)
    {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value);
    }

    const QByteArray m_file = qgetenv("SSL_CERT_FILE");
    const QByteArray m_folder = qgetenv("SSL_CERT_DIR");
};

} // namespace

TEST(CertificateTrust, Chains)
{
    Authority authority;
    authority.selfSigned("root", "root");
    authority.selfSigned("alone", "leaf");
    authority.selfSigned("foreign", "root");
    authority.issue("direct", "root", "leaf");
    authority.issue("middle", "root", "authority");
    authority.issue("low", "middle", "authority");
    authority.issue("leaf", "low", "leaf");
    authority.issue("purpose", "middle", "purpose");
    authority.issue("expired", "root", "leaf", "20000101000000Z", "20010101000000Z");
    authority.issue("early", "root", "leaf", "21000101000000Z", "21200101000000Z");
    authority.issue("oldMiddle", "root", "authority", "20000101000000Z", "20010101000000Z");
    authority.issue("underOld", "oldMiddle", "leaf");
    authority.issue("byLeaf", "direct", "leaf");
    authority.issue("unknown", "foreign", "leaf");

    QMap<QString, QByteArray> stored;
    for (const char* name : {"root", "alone", "foreign", "direct", "middle", "low", "leaf", "purpose", "expired",
             "early", "oldMiddle", "underOld", "byLeaf", "unknown"})
        stored[name] = authority.der(name);
    stored["text"] = "no certificate";
    stored["cut"] = stored["direct"].chopped(1);
    stored["tail"] = stored["direct"] + '\0';
    stored["forged"] = stored["direct"];
    stored["forged"].back() = static_cast<char>(stored["forged"].back() ^ 1);
    stored["large"] = QByteArray::fromHex("3082ffff") + QByteArray(65535, '\x30');

    struct Row {
        const char* chain;
        bool isTrusted;
        const char* anchors = "root";
    };
    const Row rows[] = {
        {"direct", true},
        {"direct root", true},
        {"leaf low middle", true},
        {"leaf middle low", true},
        {"leaf foreign low unknown middle root", true},
        {"purpose middle", true},
        {"root", true},
        {"direct root", false, "none"},
        {"direct root", false, "foreign"},
        {"direct root", false, "missing"},
        {"leaf low middle", false, "middle"}, // an authority, but no anchor
        {"alone", false},
        {"foreign", false},
        {"unknown foreign", false},
        {"unknown root", false},
        {"leaf middle", false},
        {"leaf low root", false},
        {"expired", false},
        {"early", false},
        {"underOld oldMiddle", false},
        {"byLeaf direct", false},
        {"forged", false},
        {"text", false},
        {"cut", false},
        {"tail", false},
        {"large", false},
        {"direct text", false},
    };
    const QString package = authority.path("package");
    for (const Row& row : rows) {
        const ScopedAnchors anchors(authority.path(row.anchors));
        QList<QByteArray> certificates;
        for (const QString& name : QString(row.chain).split(' '))
            certificates += stored[name];
        writeFile(package, signedArchive(certificates).bytes());
        LoggedLines log;
        const auto result = CheckPackageSignature(package).check_();
        EXPECT_EQ(result, row.isTrusted ? CheckPackageSignature::Trusted : CheckPackageSignature::NotTrusted)
            << row.chain << " by " << row.anchors;
        EXPECT_EQ(log.take(),
            QStringList(row.isTrusted ? "debug: Trusted certificate" : "debug: Don't trust the certificate"));
    }

    const ScopedAnchors anchors(authority.path("root"));
    for (const int size : {100, 101}) {
        writeFile(package, signedArchive(QVector<QByteArray>(size, stored["direct"]).toList()).bytes());
        EXPECT_EQ(CheckPackageSignature(package).check_() == CheckPackageSignature::Trusted, size == 100) << size;
    }
}

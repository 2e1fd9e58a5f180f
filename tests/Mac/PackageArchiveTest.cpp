#include "KnownAnswers.h"
#include "Log/ChildProcess.h"
#include "Log/LoggedLines.h"
#include "Mac/XarArchive.h"

#include <Orv/Mac/CheckPackageSignature.h>

#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ctime>

#include <malloc.h>
#include <sys/resource.h>

using Orv::Utitlity::CheckPackageSignature;

namespace {

const QList<QByteArray> CHAIN = {"leaf", "authority"};
const QByteArray SIGNATURE = signatureElement(certificateElements(CHAIN));

const char* const OPENED = "";
const char* const NOT_OPENED = "MacPackageSignature: error opening Xar in path: ";
const char* const NOT_SIGNED = "MacPackageSignature: error getting xar signature in path: ";
const char* const UNREADABLE = "MacPackageSignature: Unable to extract certificate data. xar signature in path: ";

QString packagePath()
{
    static const QTemporaryDir folder;
    return folder.filePath(QStringLiteral("package"));
}

/// The warning without the path, and whether result and list go with it.
std::string warningFor(const QByteArray& content)
{
    const QString path = packagePath();
    writeFile(path, content);
    LoggedLines log;
    const auto [result, certificates] = CheckPackageSignature(path).getPemList();
    const QString warning = log.take().join(QLatin1Char('\n'));
    EXPECT_EQ(result, warning.isEmpty() ? CheckPackageSignature::Trusted : CheckPackageSignature::SignatureError);
    EXPECT_EQ(certificates, warning.isEmpty() ? CHAIN : QList<QByteArray>());
    return QString(warning).remove(QLatin1String("warning: ")).remove(path).toStdString();
}

template <typename Change> QByteArray changed(Change change)
{
    XarArchive archive = signedArchive(CHAIN);
    change(archive);
    return archive.bytes();
}

QByteArray withTable(const QByteArray& table)
{
    return changed([&](XarArchive& a) { a.table = table; });
}

/// The archive of a row of packages.txt.
QByteArray archiveOf(const KnownAnswer& row)
{
    static const QRegularExpression checksum("&(\\w+) (\\d+) (\\d+);");
    XarArchive archive;
    for (const QByteArray& field : row["header"].split(' '))
        archive.header[field.left(field.indexOf('='))] = field.mid(field.indexOf('=') + 1).toULongLong(nullptr, 0);
    archive.afterHeader = QByteArray::fromPercentEncoding(row["after it"]);
    archive.heapStart = QByteArray(int(archive.header["heap"]), 'h');
    QString contents = row["table"];
    contents.replace(checksum, "<checksum style='\\1'><offset>\\3</offset><size>\\2</size></checksum>");
    archive.table = tableOf(contents.replace("&signature;", SIGNATURE).toUtf8());
    return archive.bytes();
}

struct Usage {
    qint64 peakMemory; // bytes
    double seconds;    // of the processor
};

Usage usage()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return {qint64(usage.ru_maxrss) * ORV_MAXRSS_UNIT, double(std::clock()) / CLOCKS_PER_SEC};
}

} // namespace

TEST(PackageArchive, HeaderChecksumAndSignature)
{
    static const QMap<QByteArray, const char*> warnings = {
        {"opened", OPENED}, {"not opened", NOT_OPENED}, {"not signed", NOT_SIGNED}, {"unreadable", UNREADABLE}};
    for (const KnownAnswer& row : tableOfAnswers("packages.txt"))
        EXPECT_EQ(warningFor(archiveOf(row)), warnings[row["result"]]) << row["case"].constData();
}

TEST(PackageArchive, DamagedTables)
{
    const std::pair<const char*, QByteArray> archives[] = {
        {"a byte less", changed([](XarArchive& a) { a.header["table"] = a.table.size() - 1; })},
        {"a byte more", changed([](XarArchive& a) { a.header["table"] = a.table.size() + 1; })},
        {"not compressed", changed([](XarArchive& a) { a.compressed = a.table; })},
        {"a byte behind", changed([](XarArchive& a) { a.compressed = qCompress(a.table).mid(4) + 'x'; })},
        {"another checksum", changed([](XarArchive& a) { a.checksum = QByteArray(20, 'x'); })},
    };
    for (const auto& [name, archive] : archives)
        EXPECT_EQ(warningFor(archive), NOT_OPENED) << name;

    const QByteArray good = signedArchive(CHAIN).table;
    const QByteArray entities = "<!DOCTYPE xar [<!ENTITY a 'ha'><!ENTITY b '&a;&a;'>]>";
    const std::pair<const char*, QByteArray> tables[] = {
        {"empty", ""},
        {"no XML", "table of contents"},
        {"cut", good.left(good.size() - 10)},
        {"something behind", good + "<xar/>"},
        {"a zero byte behind", good + '\0'},
        {"an unknown entity", QByteArray(good).replace("Distribution", "&b;")},
        {"entities", QByteArray(good).replace("<xar>", entities + "<xar>")},
        {"entities behind an encoding that is not the table's",
            QByteArray(good).replace("UTF-8", "UTF-16").replace("<xar>", entities + "<xar>")},
        {"entities in UTF-16",
            QByteArray(reinterpret_cast<const char*>(u"\ufeff<!DOCTYPE xar [<!ENTITY a 'ha'>]><xar>&a;</xar>"), 94)},
    };
    for (const auto& [name, table] : tables)
        EXPECT_EQ(warningFor(withTable(table)), NOT_OPENED) << name;
}

TEST(PackageArchive, EveryTruncationAndEveryWrongByteIsNoticed)
{
    const QByteArray whole = signedArchive(CHAIN).bytes();
    for (int size = 0; size < whole.size(); ++size)
        ASSERT_EQ(warningFor(whole.left(size)), NOT_OPENED) << size;
    for (int i = 0; i < whole.size(); ++i) {
        QByteArray damaged = whole;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x10);
        ASSERT_EQ(warningFor(damaged), NOT_OPENED) << i;
    }
}

// Each of these would take minutes or gigabytes if it were read to its end by the book.
TEST(PackageArchive, BoundedMemoryAndTime)
{
    const int room = (4 << 20) - 2048;
    const auto filled = [&](const QByteArray& piece, const QByteArray& before = "", const QByteArray& after = "") {
        return withTable(tableOf(ChecksumElement + SIGNATURE + before +
            piece.repeated((room - before.size() - after.size()) / piece.size()) + after));
    };
    const auto numbered = [](const QByteArray& prefix, int from, int to) {
        QByteArray attributes;
        for (int i = from; i < to; ++i)
            attributes += ' ' + prefix + QByteArray::number(i, 36) + "=''";
        return attributes;
    };
    const auto certified = [](const QByteArray& certificates) {
        return withTable(tableOf(ChecksumElement + signatureElement(certificates)));
    };
    QByteArray prefixes;
    for (int depth = 0; depth < 900; ++depth)
        prefixes += "<a" + numbered("xmlns:n", depth * 90, depth * 90 + 90) + '>';
    const QByteArray bomb(64 << 20, ' ');
    struct Row {
        const char* name;
        const char* warning;
        QByteArray content;
    };
    const Row rows[] = {
        {"a table of the largest size", OPENED, filled("<file id='2'/>")},
        {"the smallest elements", OPENED, filled("<a/>")},
        {"elements with many attributes", OPENED, filled("<a" + numbered("a", 0, 90) + "/>")},
        {"one with more", NOT_OPENED, withTable(tableOf("<a" + numbered("a", 0, 400000) + "/>"))},
        {"many prefixes", OPENED, filled("<a/>", prefixes, QByteArray("</a>").repeated(900))},
        {"elements in elements", NOT_OPENED, filled("<a>")},
        {"a long text", OPENED, filled("x")},
        {"a long text outside ASCII", OPENED, filled(u8"\u0391")},
        {"a long name", NOT_OPENED, filled("x", "<a", "/>")},
        {"a long attribute", OPENED, filled("x", "<a b='", "'/>")},
        {"a long certificate", UNREADABLE,
            certified("<X509Certificate>" + QByteArray(room, 'A') + "=</X509Certificate>")},
        {"many certificates", UNREADABLE,
            certified(
                QByteArray("<X509Certificate>AA==</X509Certificate>").repeated(room / 39) + "<X509Certificate/>")},
        {"a bomb", NOT_OPENED, withTable(bomb)},
        {"a bomb that hides its size", NOT_OPENED, changed([&](XarArchive& a) {
             a.header["table"] = a.table.size();
             a.compressed = qCompress(bomb).mid(4);
         })},
        {"a large file behind", OPENED, signedArchive(CHAIN).bytes() + bomb},
    };
    for (const Row& row : rows) {
        // In a process of its own, whose peak is that of this row.
        const Ending ending = runInChild([&row] {
            ::malloc_trim(0); // memory that is at hand already would not count
            QFile peak(QStringLiteral("/proc/self/clear_refs"));
            if (peak.open(QIODevice::WriteOnly))
                peak.write("5"); // nor would what the tests before had: the peak begins anew
            peak.close();
            const Usage before = usage();
            const bool isExpected = warningFor(row.content) == row.warning;
            CheckPackageSignature(packagePath()).check_();
            const Usage after = usage();
            const bool isSmall = after.peakMemory - before.peakMemory < qint64(ORV_MEMORY_LIMIT) << 20;
            const bool isFast = after.seconds - before.seconds < ORV_TIME_LIMIT;
            std::_Exit(!isExpected ? 1 : !isSmall ? 2 : !isFast ? 3 : 0);
        });
        EXPECT_EQ(ending.exitCode, 0) << row.name;
    }
}

#include "Log/ChildProcess.h"
#include "Log/LoggedLines.h"
#include "Mac/XarArchive.h"

#include <Orv/Mac/CheckPackageSignature.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ctime>

#include <malloc.h>
#include <sys/resource.h>

using Orv::Utitlity::CheckPackageSignature;

namespace {

const QList<QByteArray> CHAIN = {"leaf", "authority"};
constexpr quint64 HUGE_SIZE = quint64(1) << 62;

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
std::string warningFor(const QByteArray& content, const QList<QByteArray>& expected = CHAIN)
{
    const QString path = packagePath();
    writeFile(path, content);
    LoggedLines log;
    const auto [result, certificates] = CheckPackageSignature(path).getPemList();
    const QString warning = log.take().join(QLatin1Char('\n'));
    EXPECT_EQ(result, warning.isEmpty() ? CheckPackageSignature::Trusted : CheckPackageSignature::SignatureError);
    EXPECT_EQ(certificates, warning.isEmpty() ? expected : QList<QByteArray>());
    return QString(warning).remove(QLatin1String("warning: ")).remove(path).toStdString();
}

template <typename Change> QByteArray changed(Change change)
{
    XarArchive archive = signedArchive(CHAIN);
    change(archive);
    return archive.bytes();
}

/// An archive with this algorithm in its header and these elements in its table.
QByteArray archive(quint32 algorithm, const QByteArray& elements, const QByteArray& afterHeader = QByteArray())
{
    XarArchive archive;
    archive.algorithm = algorithm;
    archive.afterHeader = afterHeader;
    archive.headerSize = static_cast<quint16>(28 + afterHeader.size());
    archive.table = tableOf(elements);
    return archive.bytes();
}

QByteArray signature()
{
    return signatureElement(certificateElements(CHAIN));
}

QByteArray withTable(const QByteArray& table)
{
    return changed([&](XarArchive& a) { a.table = table; });
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

TEST(PackageArchive, Header)
{
    struct Row {
        const char* name;
        const char* warning;
        QByteArray content;
    };
    const QByteArray sha256(QByteArray("sha256\0\0", 8));
    const Row rows[] = {
        {"good", OPENED, changed([](XarArchive&) {})},
        {"magic", NOT_OPENED, changed([](XarArchive& a) { a.magic = "xar?"; })},
        {"version", NOT_OPENED, changed([](XarArchive& a) { a.version = 2; })},
        {"a longer header", OPENED, archive(1, checksumElement("sha1", 20) + signature(), "more")},
        {"a shorter one", NOT_OPENED, changed([](XarArchive& a) { a.headerSize = 27; })},
        {"one beyond the file", NOT_OPENED, changed([](XarArchive& a) { a.headerSize = 65535; })},
        {"compressed size", NOT_OPENED, changed([](XarArchive& a) { a.compressedSize = HUGE_SIZE; })},
        {"largest compressed size", NOT_OPENED, changed([](XarArchive& a) { a.compressedSize = ~quint64(0); })},
        {"no compressed size", NOT_OPENED, changed([](XarArchive& a) { a.compressedSize = 0; })},
        {"table size", NOT_OPENED, changed([](XarArchive& a) { a.tableSize = HUGE_SIZE; })},
        {"no table size", NOT_OPENED, changed([](XarArchive& a) { a.tableSize = 0; })},
        {"a byte less", NOT_OPENED, changed([](XarArchive& a) { a.tableSize = a.table.size() - 1; })},
        {"a byte more", NOT_OPENED, changed([](XarArchive& a) { a.tableSize = a.table.size() + 1; })},
        {"not compressed", NOT_OPENED, changed([](XarArchive& a) { a.compressed = a.table; })},
        {"a byte after the table", NOT_OPENED,
            changed([](XarArchive& a) { a.compressed = qCompress(a.table).mid(4) + 'x'; })},
        {"MD5", OPENED, archive(2, checksumElement("md5", 16) + signature())},
        {"letter case", OPENED, archive(2, checksumElement("MD5", 16) + signature())},
        {"named", OPENED, archive(3, checksumElement("sha256", 32) + signature(), sha256)},
        {"no name", NOT_OPENED, archive(3, checksumElement("sha256", 32) + signature())},
        {"a name without end", NOT_OPENED, archive(3, checksumElement("sha256", 32) + signature(), "sha256")},
        {"an unknown name", NOT_OPENED, archive(3, checksumElement("sha3", 32) + signature(), QByteArray("sha3\0", 5))},
        {"an unknown algorithm", NOT_OPENED, archive(4, checksumElement("sha512", 64) + signature())},
        {"header says MD5, table SHA-1", NOT_OPENED, archive(2, checksumElement("sha1", 20) + signature())},
        {"header says none, table SHA-1", NOT_OPENED, archive(0, checksumElement("sha1", 20) + signature())},
        {"header says SHA-1, table none", NOT_OPENED, archive(1, checksumElement("none", 0) + signature())},
        {"header says SHA-1, table nothing", NOT_OPENED, archive(1, signature())},
        {"header says SHA-1, table nothing, and not signed", NOT_OPENED, archive(1, "")},
        {"signed without a checksum", NOT_OPENED, archive(0, signature())},
        {"signed with an empty checksum", NOT_OPENED, archive(0, checksumElement("none", 0) + signature())},
        {"not signed and no checksum", NOT_SIGNED, archive(0, "")},
        {"not signed and an empty checksum", NOT_SIGNED, archive(0, checksumElement("none", 0))},
    };
    for (const Row& row : rows)
        EXPECT_EQ(warningFor(row.content), row.warning) << row.name;
}

TEST(PackageArchive, Checksum)
{
    struct Row {
        const char* name;
        const char* warning;
        QByteArray element;
        int before = 7; // bytes in the heap
    };
    const auto element = [](const QByteArray& children) {
        return "<checksum style='sha1'>" + children + "</checksum>";
    };
    const Row rows[] = {
        {"where the table says", OPENED, checksumElement("sha1", 20, 7)},
        {"one byte before", NOT_OPENED, checksumElement("sha1", 20, 6)},
        {"beyond the heap", NOT_OPENED, checksumElement("sha1", 20, 8)},
        {"far beyond it", NOT_OPENED, checksumElement("sha1", 20, HUGE_SIZE)},
        {"all around", NOT_OPENED, checksumElement("sha1", 20, ~quint64(0) - 20)},
        {"too short", NOT_OPENED, checksumElement("sha1", 19, 7)},
        {"too long", NOT_OPENED, checksumElement("sha1", HUGE_SIZE, 7)},
        {"no offset", NOT_OPENED, element("<size>20</size>"), 0},
        {"no size", NOT_OPENED, element("<offset>7</offset>")},
        {"negative", NOT_OPENED, element("<offset>-1</offset><size>20</size>"), 0},
        {"no number", NOT_OPENED, element("<offset>zero</offset><size>20</size>"), 0},
    };
    for (const Row& row : rows) {
        XarArchive archive;
        archive.table = tableOf(row.element + signature());
        archive.heapStart = QByteArray(row.before, 'h');
        EXPECT_EQ(warningFor(archive.bytes()), row.warning) << row.name;
    }
    EXPECT_EQ(warningFor(changed([](XarArchive& a) { a.checksum = QByteArray(20, 'x'); })), NOT_OPENED);
}

TEST(PackageArchive, WhichSignature)
{
    struct Row {
        const char* name;
        const char* warning;
        QByteArray elements;
    };
    const QByteArray other = signatureElement(certificateElements({"other"}));
    const Row rows[] = {
        {"the first one", OPENED, signature() + other},
        {"after another kind", OPENED, signatureElement(certificateElements({"other"}), "x-signature") + signature()},
        {"another kind alone", NOT_SIGNED, signatureElement(certificateElements(CHAIN), "x-signature")},
        {"a file's", NOT_SIGNED, "<file id='2'>" + other + "</file>"},
        {"one with a prefix", NOT_SIGNED, signatureElement(certificateElements(CHAIN), "x:signature")},
        {"certificates elsewhere", OPENED,
            signature().replace("<KeyInfo", certificateElements({"other"}) + "<KeyInfo")},
        {"an empty first one", UNREADABLE, signatureElement(certificateElements({""})) + other},
        {"not Base64", UNREADABLE, signatureElement("<X509Certificate>!!!!</X509Certificate>")},
        {"outside Latin-1", UNREADABLE, signatureElement(u8"<X509Certificate>AAA\u0391</X509Certificate>")},
        {"the second of two", UNREADABLE,
            signatureElement(certificateElements(CHAIN) + "<X509Certificate>A</X509Certificate>")},
        {"an element in a certificate", NOT_OPENED, signatureElement("<X509Certificate><a/></X509Certificate>")},
    };
    for (const Row& row : rows)
        EXPECT_EQ(warningFor(archive(1, checksumElement("sha1", 20) + row.elements)), row.warning) << row.name;
    EXPECT_EQ(warningFor(archive(1, checksumElement("sha1", 20) + signatureElement("")), {}), OPENED)
        << "no certificates";
}

TEST(PackageArchive, DamagedTables)
{
    const QByteArray good = signedArchive(CHAIN).table;
    const QByteArray entities = "<!DOCTYPE xar [<!ENTITY a 'ha'><!ENTITY b '&a;&a;'>]>";
    struct Row {
        const char* name;
        QByteArray table;
    };
    const Row rows[] = {
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
    for (const Row& row : rows)
        EXPECT_EQ(warningFor(withTable(row.table)), NOT_OPENED) << row.name;
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
        return withTable(tableOf(checksumElement("sha1", 20) + signature() + before +
            piece.repeated((room - before.size() - after.size()) / piece.size()) + after));
    };
    QByteArray attributes;
    for (int i = 0; attributes.size() < room - 50; ++i)
        attributes += " a" + QByteArray::number(i, 36) + "=''";
    QByteArray elementsOfAttributes;
    for (int i = 0; i < 90; ++i)
        elementsOfAttributes += " a" + QByteArray::number(i, 36) + "=''";
    QByteArray prefixes;
    for (int depth = 0; depth < 900; ++depth) {
        prefixes += "<a";
        for (int i = 0; i < 90; ++i)
            prefixes += " xmlns:n" + QByteArray::number(depth * 90 + i, 36) + "=''";
        prefixes += '>';
    }
    const QByteArray bomb(64 << 20, ' ');
    struct Row {
        const char* name;
        const char* warning;
        QByteArray content;
    };
    const Row rows[] = {
        {"a table of the largest size", OPENED, filled("<file id='2'/>")},
        {"the smallest elements", OPENED, filled("<a/>")},
        {"elements with many attributes", OPENED, filled("<a" + elementsOfAttributes + "/>")},
        {"one with more", NOT_OPENED, withTable(tableOf("<a" + attributes + "/>"))},
        {"many prefixes", OPENED, filled("<a/>", prefixes, QByteArray("</a>").repeated(900))},
        {"elements in elements", NOT_OPENED, filled("<a>")},
        {"a long text", OPENED, filled("x")},
        {"a long text outside ASCII", OPENED, filled(u8"\u0391")},
        {"a long name", NOT_OPENED, filled("x", "<a", "/>")},
        {"a long attribute", OPENED, filled("x", "<a b='", "'/>")},
        {"a long certificate", UNREADABLE,
            archive(1,
                checksumElement("sha1", 20) +
                    signatureElement("<X509Certificate>" + QByteArray(room, 'A') + "=</X509Certificate>"))},
        {"many certificates", UNREADABLE,
            archive(1,
                checksumElement("sha1", 20) +
                    signatureElement(QByteArray("<X509Certificate>AA==</X509Certificate>").repeated(room / 39) +
                        "<X509Certificate/>"))},
        {"a bomb", NOT_OPENED, withTable(bomb)},
        {"a bomb that hides its size", NOT_OPENED, changed([&](XarArchive& a) {
             a.tableSize = a.table.size();
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

#include "DirectoryTest.h"
#include "KnownAnswers.h"
#include "Log/ChildProcess.h"
#include "Mac/XarArchive.h"
#include "ProcessUsage.h"

#include <Orv/Mac/CheckPackageSignature.h>

#include <QRegularExpression>

#include <ctime>

#include <malloc.h>

using Orv::Utitlity::CheckPackageSignature;

namespace {

const QList<QByteArray> CHAIN = {"leaf", "authority"};
const QByteArray SIGNATURE = signatureElement(certificateElements(CHAIN));

const char* const OPENED = "";
const char* const NOT_OPENED = "MacPackageSignature: error opening Xar in path: ";
const char* const NOT_SIGNED = "MacPackageSignature: error getting xar signature in path: ";
const char* const UNREADABLE = "MacPackageSignature: Unable to extract certificate data. xar signature in path: ";

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

/// The archive described by a row of packages.txt.
QByteArray archiveOf(const KnownAnswer& row)
{
    static const QRegularExpression checksum("&(\\w+) (\\d+) (\\d+);");
    XarArchive archive;
    for (const QByteArray& field : row["header"].split(' '))
        archive.header[field.left(field.indexOf('='))] = field.mid(field.indexOf('=') + 1).toULongLong(nullptr, 0);
    archive.afterHeader = QByteArray::fromPercentEncoding(row["after header"]);
    archive.heapStart = QByteArray(int(archive.header["heap"]), 'h');
    QString contents = row["table"];
    contents.replace(checksum, "<checksum style='\\1'><offset>\\3</offset><size>\\2</size></checksum>");
    const QByteArray table = contents.replace("&signature;", SIGNATURE).toUtf8();
    archive.table = table.startsWith("raw:") ? QByteArray::fromPercentEncoding(table.mid(4)) : tableOf(table);
    return archive.bytes();
}

class PackageArchive : public DirectoryTest {
protected:
    /// Returns the logged warning without the path. Expects the result and the list to match it.
    std::string warningFor(const QByteArray& content)
    {
        writeFile(path, content);
        const auto [result, certificates] = CheckPackageSignature(path).getPemList();
        const QString warning = logged.take().join(QLatin1Char('\n'));
        EXPECT_EQ(result, warning.isEmpty() ? CheckPackageSignature::Trusted : CheckPackageSignature::SignatureError);
        EXPECT_EQ(certificates, warning.isEmpty() ? CHAIN : QList<QByteArray>());
        return QString(warning).remove(QLatin1String("warning: ")).remove(path).toStdString();
    }

    const QString path = pathOf("package");
};

} // namespace

TEST_F(PackageArchive, HeaderChecksumAndSignature)
{
    static const QMap<QByteArray, const char*> warnings = {
        {"opened", OPENED}, {"not opened", NOT_OPENED}, {"not signed", NOT_SIGNED}, {"unreadable", UNREADABLE}};
    for (const KnownAnswer& row : tableOfAnswers("packages.txt"))
        EXPECT_EQ(warningFor(archiveOf(row)), warnings[row["result"]]) << row["row"].constData();
}

TEST_F(PackageArchive, DamagedArchives)
{
    const std::pair<const char*, QByteArray> archives[] = {
        {"a byte less", changed([](XarArchive& a) { a.header["table"] = a.table.size() - 1; })},
        {"a byte more", changed([](XarArchive& a) { a.header["table"] = a.table.size() + 1; })},
        {"not compressed", changed([](XarArchive& a) { a.compressed = a.table; })},
        {"a trailing byte", changed([](XarArchive& a) { a.compressed = qCompress(a.table).mid(4) + 'x'; })},
        {"another checksum", changed([](XarArchive& a) { a.checksum = QByteArray(20, 'x'); })},
    };
    for (const auto& [name, archive] : archives)
        EXPECT_EQ(warningFor(archive), NOT_OPENED) << name;
}

TEST_F(PackageArchive, EveryTruncationAndWrongByteIsDetected)
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

// Without limits, each of these would take minutes or gigabytes.
TEST_F(PackageArchive, BoundedMemoryAndTime)
{
    const int room = (4 << 20) - 2048;
    const auto filled = [&](const QByteArray& unit, const QByteArray& before = "", const QByteArray& after = "") {
        return withTable(tableOf(ChecksumElement + SIGNATURE + before +
            unit.repeated((room - before.size() - after.size()) / unit.size()) + after));
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
        {"elements with many attributes", OPENED, filled("<a" + numbered("a", 0, 90) + "/>")},
        {"one with more", NOT_OPENED, withTable(tableOf("<a" + numbered("a", 0, 400000) + "/>"))},
        {"one with more, and angle brackets", NOT_OPENED,
            withTable(tableOf("<a" + numbered("a", 0, 300000).replace("''", "'>'") + "/>"))},
        {"many prefixes", OPENED, filled("<a/>", prefixes, QByteArray("</a>").repeated(900))},
        {"elements in elements", NOT_OPENED, filled("<a>")},
        {"a long text", OPENED, filled("x")},
        {"a long name", NOT_OPENED, filled("x", "<a", "/>")},
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
        {"a large compressed table", NOT_OPENED,
            changed([](XarArchive& a) { a.compressed = QByteArray(100 << 20, 'x'); })},
        {"a large trailer", OPENED, signedArchive(CHAIN).bytes() + bomb},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        // In a child process, to measure the peak of this row alone.
        expectInChild([this, &row] {
            ::malloc_trim(0); // free memory of the heap would hide new allocations
            QFile peak(QStringLiteral("/proc/self/clear_refs"));
            if (peak.open(QIODevice::WriteOnly))
                peak.write("5"); // resets the peak
            peak.close();
            const qint64 before = peakMemory();
            const std::clock_t start = std::clock(); // CPU time
            EXPECT_EQ(warningFor(row.content), row.warning);
            CheckPackageSignature(path).check_();
            // Twice the limit, because the XML reader of Qt 6 is slower with many prefixes.
            EXPECT_LT(std::clock() - start, 2 * ORV_TIME_LIMIT * CLOCKS_PER_SEC);
            EXPECT_LT(peakMemory() - before, qint64(ORV_MEMORY_LIMIT) << 20);
        });
    }
}

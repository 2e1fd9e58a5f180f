#include "Mac/PackageArchive_p.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QFile>
#include <QString>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

// The format: a header, a table of contents (XML, compressed with zlib), and a heap with all other data, which the
// table references by offsets. Numbers are big-endian. Reference: https://github.com/mackyle/xar/wiki/xarformat.

namespace Orv::Utitlity {

namespace {

constexpr quint32 Magic = 0x78617221; // "xar!"
constexpr quint16 FormatVersion = 1;
constexpr quint64 HeaderSize = 28;

// Limits on memory and time for hostile archives. Real tables, even for thousands of files, are far smaller; their
// elements have one or two attributes and are nested as deep as the directories in the package.
constexpr quint64 LargestTable = 4 << 20;
constexpr int GreatestDepth = 1000;
constexpr int MostAttributes = 100; // per element: the XML reader compares each pair

constexpr QStringView SignaturePath = u"/xar/toc/signature";

constexpr char NoChecksum[] = "none"; // the name of the algorithm if there is no checksum

struct Digest {
    const char* name;
    QCryptographicHash::Algorithm algorithm;
};
constexpr std::array<Digest, 6> Digests = {{
    {"sha1", QCryptographicHash::Sha1},
    {"md5", QCryptographicHash::Md5},
    {"sha224", QCryptographicHash::Sha224},
    {"sha256", QCryptographicHash::Sha256},
    {"sha384", QCryptographicHash::Sha384},
    {"sha512", QCryptographicHash::Sha512},
}};

/// Reads ranges of a regular file, within its size at opening.
class ArchiveFile {
public:
    explicit ArchiveFile(const QByteArray& path)
    {
        // O_NONBLOCK: the path may name a FIFO by now.
        const int descriptor = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        struct stat status = {};
        if (descriptor == -1 || ::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
            !m_file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle)) {
            if (descriptor != -1)
                ::close(descriptor);
            return;
        }
        m_size = static_cast<quint64>(status.st_size);
    }

    /// `nullopt` if the range is not in the file. The caller limits `size`.
    std::optional<QByteArray> read(quint64 offset, quint64 size)
    {
        if (offset > m_size || size > m_size - offset)
            return std::nullopt;
        QByteArray bytes(static_cast<int>(size), Qt::Uninitialized);
        const bool isRead = m_file.seek(static_cast<qint64>(offset)) && m_file.read(bytes.data(), size) == bytes.size();
        return isRead ? std::optional(bytes) : std::nullopt;
    }

private:
    QFile m_file;
    quint64 m_size = 0;
};

struct Header {
    quint16 size = 0;
    quint64 compressedSize = 0; // of the table in the archive
    quint64 tableSize = 0;
    QString checksum; // algorithm name, in lower case

    quint64 heapOffset() const { return size + compressedSize; }
};

std::optional<QString> checksumName(ArchiveFile& file, quint32 algorithm, quint16 headerSize)
{
    switch (algorithm) {
    case 0:
        return QLatin1String(NoChecksum);
    case 1:
        return QStringLiteral("sha1");
    case 2:
        return QStringLiteral("md5");
    case 3: // SHA-256; in old archives, the name after the header applies instead
        if (headerSize == HeaderSize)
            return QStringLiteral("sha256");
        break;
    case 4:
        return QStringLiteral("sha512");
    default:
        return std::nullopt;
    }
    const auto name = file.read(HeaderSize, headerSize - HeaderSize);
    const int end = name ? name->indexOf('\0') : -1;
    return end < 0 ? std::nullopt : std::optional(QString::fromLatin1(name->constData(), end).toLower());
}

std::optional<Header> readHeader(ArchiveFile& file)
{
    const auto bytes = file.read(0, HeaderSize);
    if (!bytes)
        return std::nullopt;
    QDataStream stream(*bytes);
    Header header;
    quint32 magic = 0;
    quint16 version = 0;
    quint32 algorithm = 0;
    stream >> magic >> header.size >> version >> header.compressedSize >> header.tableSize >> algorithm;
    if (magic != Magic || version != FormatVersion || header.size < HeaderSize)
        return std::nullopt;
    const auto checksum = checksumName(file, algorithm, header.size);
    if (!checksum)
        return std::nullopt;
    header.checksum = *checksum;
    return header;
}

/// Decompresses the table of contents. Fails unless its size matches the header exactly.
std::optional<QByteArray> inflate(const QByteArray& compressed, quint64 tableSize)
{
    QByteArray table(static_cast<int>(tableSize), Qt::Uninitialized);
    uLongf size = tableSize;
    uLong sourceSize = static_cast<uLong>(compressed.size());
    const int result = ::uncompress2(reinterpret_cast<Bytef*>(table.data()), &size,
        reinterpret_cast<const Bytef*>(compressed.constData()), &sourceSize);
    if (result != Z_OK || size != tableSize || sourceSize != static_cast<uLong>(compressed.size()))
        return std::nullopt;
    return table;
}

/// The signature and the checksum, as in the table of contents.
struct Contents {
    QString checksum = QLatin1String(NoChecksum); // the name of its algorithm, in lower case
    QString checksumOffset;                       // in the heap
    QString checksumSize;
    int signatures = 0;
    QStringList certificates; // of the first signature, Base64 with line breaks
};

/// Counts the equals signs outside quotes in each tag. A well-formed tag contains no "<".
bool mayHaveTooManyAttributes(const QString& xml)
{
    bool isInTag = false;
    QChar quote; // null outside quotes
    int signs = 0;
    for (const QChar character : xml) {
        if (character == QLatin1Char('<')) {
            isInTag = true;
            quote = QChar();
            signs = 0;
        } else if (!isInTag) {
            continue;
        } else if (!quote.isNull()) {
            if (character == quote)
                quote = QChar();
        } else if (character == QLatin1Char('"') || character == QLatin1Char('\'')) {
            quote = character;
        } else if (character == QLatin1Char('>')) {
            isInTag = false;
        } else if (character == QLatin1Char('=') && ++signs > MostAttributes) {
            return true;
        }
    }
    return false;
}

/// The name of the current element. Inside a signature, without its namespace prefix, which archivers choose freely.
QString nameOf(const QXmlStreamReader& xml, const QString& parentPath)
{
    const QString name = xml.qualifiedName().toString();
    return parentPath.startsWith(SignaturePath) ? name.mid(name.indexOf(QLatin1Char(':')) + 1) : name;
}

/// Stores the values of the current start element in `contents`.
void storeElement(QXmlStreamReader& xml, const QString& path, Contents& contents)
{
    if (path == QLatin1String("/xar/toc/checksum"))
        contents.checksum = xml.attributes().value(QLatin1String("style")).toString().toLower();
    else if (path == QLatin1String("/xar/toc/checksum/offset"))
        contents.checksumOffset = xml.readElementText().trimmed();
    else if (path == QLatin1String("/xar/toc/checksum/size"))
        contents.checksumSize = xml.readElementText().trimmed();
    else if (path == SignaturePath)
        ++contents.signatures;
    else if (contents.signatures == 1 && path == QLatin1String("/xar/toc/signature/KeyInfo/X509Data/X509Certificate"))
        contents.certificates += xml.readElementText();
}

std::optional<Contents> parseTable(const QString& table)
{
    // Entities could expand to large strings; no archiver declares any.
    if (table.contains(QLatin1String("<!DOCTYPE")) || mayHaveTooManyAttributes(table))
        return std::nullopt;
    QXmlStreamReader xml(table);
    xml.setNamespaceProcessing(false); // would search all prefixes in scope for each name
    Contents contents;
    QString path;
    int depth = 0;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            if (++depth > GreatestDepth)
                return std::nullopt;
            path += QLatin1Char('/') + nameOf(xml, path);
            storeElement(xml, path, contents);
        }
        if (xml.isEndElement()) {
            --depth;
            path.truncate(path.lastIndexOf(QLatin1Char('/')));
        }
    }
    return xml.hasError() ? std::nullopt : std::optional(contents);
}

/// Whether the checksum in the heap is that of the compressed table.
bool isChecksumRight(ArchiveFile& file, const Header& header, const Contents& contents, const QByteArray& compressed)
{
    if (contents.checksum != header.checksum)
        return false;
    if (contents.checksum == QLatin1String(NoChecksum))
        return contents.signatures == 0; // a signature needs the checksum that it signs
    const auto digest = std::find_if(Digests.begin(), Digests.end(),
        [&](const Digest& candidate) { return contents.checksum == QLatin1String(candidate.name); });
    if (digest == Digests.end())
        return false;
    const QByteArray expected = QCryptographicHash::hash(compressed, digest->algorithm);
    bool isNumber = false;
    const quint64 offset = contents.checksumOffset.toULongLong(&isNumber);
    if (!isNumber || contents.checksumSize != QString::number(expected.size()) ||
        offset > std::numeric_limits<quint64>::max() - header.heapOffset())
        return false;
    return file.read(header.heapOffset() + offset, static_cast<quint64>(expected.size())) == expected;
}

std::optional<Contents> readContents(ArchiveFile& file)
{
    const auto header = readHeader(file);
    if (!header || header->compressedSize > LargestTable || header->tableSize > LargestTable)
        return std::nullopt;
    const auto compressed = file.read(header->size, header->compressedSize);
    if (!compressed)
        return std::nullopt;
    const auto table = inflate(*compressed, header->tableSize);
    if (!table)
        return std::nullopt;
    const QString text = QString::fromUtf8(table->constData());         // up to the first NUL, with any Qt version
    const QByteArray byteOrderMark = QByteArrayLiteral("\xEF\xBB\xBF"); // dropped by fromUtf8()
    if (text.toUtf8() != *table && byteOrderMark + text.toUtf8() != *table)
        return std::nullopt; // not UTF-8
    const auto contents = parseTable(text);
    if (!contents || !isChecksumRight(file, *header, *contents, *compressed))
        return std::nullopt;
    return contents;
}

} // namespace

PackageSignature readPackageSignature(const QByteArray& path)
{
    ArchiveFile file(path);
    const auto contents = readContents(file);
    if (!contents)
        return {PackageSignature::NotOpened, {}};
    if (contents->signatures == 0)
        return {PackageSignature::NotSigned, {}};
    PackageSignature signature{PackageSignature::Good, {}};
    for (const QString& text : contents->certificates) {
        const QByteArray base64 = text.simplified().remove(QLatin1Char(' ')).toLatin1();
        auto certificate = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
        if (!certificate || certificate.decoded.isEmpty())
            return {PackageSignature::UnreadableCertificate, {}};
        signature.certificates += certificate.decoded;
    }
    return signature;
}

} // namespace Orv::Utitlity

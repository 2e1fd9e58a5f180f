#include "Vault.h"

#include "Console.h"
#include "Files.h"
#include "Work.h"

#include <Orv/Core/Encryption/Key.h>

#include <QCryptographicHash>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageAuthenticationCode>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <future>
#include <limits>

using Orv::Core::Encryption::Key;
using Orv::Exception::InvalidData;

namespace orvseal {

namespace {

constexpr int NewestFormat = 2;
constexpr char FirstManifestMagic[] = "orvseal manifest 1 "; // of format 1

constexpr int MacSize = 32;  // bytes
constexpr int SaltSize = 16; // bytes
constexpr qint64 MillisecondsToNanoseconds = 1000000;
constexpr qint64 SecondsToNanoseconds = 1000000000;

// What is believed of a vault from somewhere
constexpr int ShortestSalt = 8;                   // bytes
constexpr int LongestSalt = 64;                   // bytes
constexpr qint64 LargestHead = 64 * 1024;         // bytes
constexpr qint64 LargestManifest = 1000000000;    // bytes; its entries are held in memory
constexpr qint64 LongestLine = 1000000;           // bytes of it
constexpr qint64 LargestNumber = qint64(1) << 53; // JSON's numbers are exact up to here
constexpr qint64 LastSecond = 9223372035;         // since 1970; as nanoseconds, a number holds them
constexpr qint64 LastMilliseconds = LastSecond * 1000;
constexpr qint64 LargestOwner = 0xFFFFFFFE;

// The names in the JSON of both files
namespace Name {
const QLatin1String Format("format");
const QLatin1String Algorithm("algorithm");
const QLatin1String KeyLength("keyLength");
const QLatin1String Salt("salt");
const QLatin1String Iterations("iterations");
const QLatin1String MacSalt("macSalt");
const QLatin1String Manifest("manifest");
const QLatin1String ManifestIv("manifestIv");
const QLatin1String Type("type");
const QLatin1String Path("path");
const QLatin1String Permissions("permissions");
const QLatin1String Modified("modified");
const QLatin1String Nanoseconds("nanoseconds");
const QLatin1String Owner("owner");
const QLatin1String Group("group");
const QLatin1String Target("target");
const QLatin1String Size("size");
const QLatin1String Iv("iv");
const QLatin1String TreeHash("treeHash");
const QLatin1String SealedName("sealed");
} // namespace Name

const std::array<QLatin1String, 4> TypeNames = {QLatin1String("file"), QLatin1String("folder"), QLatin1String("link"),
    QLatin1String("hardlink")}; // in the order of Entry::Type

/// Reads the members of a JSON object and throws if one is not what it has to be.
class StrictObject {
public:
    StrictObject(const QByteArray& json, const QString& what) : m_what(what)
    {
        const QJsonDocument document = QJsonDocument::fromJson(json);
        if (!document.isObject())
            throw InvalidData(what + QStringLiteral(" is damaged"));
        m_object = document.object();
    }

    QString text(QLatin1String name) const
    {
        const QJsonValue value = m_object[name];
        require(value.isString() && !value.toString().contains(QChar(0)), name);
        return value.toString();
    }

    qint64 number(QLatin1String name, qint64 smallest, qint64 largest) const
    {
        const double value = m_object[name].toDouble(std::nan(""));
        require(value >= double(smallest) && value <= double(largest) && value == std::floor(value), name);
        return qint64(value);
    }

    QByteArray bytes(QLatin1String name, int shortest, int longest) const
    {
        const QByteArray hex = text(name).toLatin1();
        const QByteArray value = QByteArray::fromHex(hex);
        require(value.toHex() == hex && value.size() >= shortest && value.size() <= longest, name);
        return value;
    }

    void require(bool condition, QLatin1String name) const
    {
        if (!condition)
            throw InvalidData(QStringLiteral("%1 is damaged: \"%2\" is not what it has to be").arg(m_what, name));
    }

private:
    const QString m_what;
    QJsonObject m_object;
};

QByteArray readSmallFile(const QString& path, qint64 largest)
{
    QFile file(path);
    if (openToRead(file, path + QStringLiteral(": ")).size > largest)
        throw InvalidData(QStringLiteral("%1 is damaged: it is too large").arg(path));
    const QByteArray content = file.readAll();
    if (file.error() != QFile::NoError)
        throw InvalidData(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return content;
}

/// A file that takes the place of `path` at the end. The one of a run that was killed is in the way.
class Replacement : public NewFile {
public:
    explicit Replacement(const QString& path) : NewFile(temporaryPath(path)) { }

private:
    static QString temporaryPath(const QString& path)
    {
        const QString temporary = path + QStringLiteral(".new");
        QFile::remove(temporary);
        return temporary;
    }
};

QString hexOf(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex());
}

/// Rounded down, so that the rest is positive also before 1970.
qint64 secondsOf(qint64 nanoseconds)
{
    return std::chrono::floor<std::chrono::seconds>(std::chrono::nanoseconds(nanoseconds)).count();
}

QByteArray toLine(const Entry& entry)
{
    const qint64 seconds = secondsOf(entry.modified);
    QJsonObject object = {
        {Name::Type, TypeNames[entry.type]},
        {Name::Path, entry.path},
        {Name::Permissions, entry.permissions},
        {Name::Modified, seconds},
        {Name::Nanoseconds, entry.modified - seconds * SecondsToNanoseconds},
        {Name::Owner, entry.owner},
        {Name::Group, entry.group},
    };
    if (entry.type == Entry::Link || entry.type == Entry::HardLink)
        object[Name::Target] = entry.target;
    if (entry.type == Entry::File) {
        object[Name::Size] = entry.size;
        object[Name::Iv] = hexOf(entry.iv);
        object[Name::TreeHash] = hexOf(entry.treeHash);
    }
    QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
    line.replace("\xEF\xBB\xBF", "\\ufeff"); // a byte-order mark, which is lost in reading where a text begins with it
    return line;
}

Entry fromLine(const QByteArray& line, const VaultHead& head)
{
    const StrictObject object(line, QStringLiteral("the manifest"));
    const auto typeName = std::find(TypeNames.begin(), TypeNames.end(), object.text(Name::Type));
    object.require(typeName != TypeNames.end(), Name::Type);

    Entry entry;
    entry.type = static_cast<Entry::Type>(typeName - TypeNames.begin());
    entry.path = object.text(Name::Path);
    entry.permissions = int(object.number(Name::Permissions, 0, entry.type == Entry::Folder ? 01777 : 0777));
    if (head.format == 1) {
        entry.modified = object.number(Name::Modified, -LastMilliseconds, LastMilliseconds) * MillisecondsToNanoseconds;
    } else {
        entry.modified = object.number(Name::Modified, -LastSecond, LastSecond) * SecondsToNanoseconds +
            object.number(Name::Nanoseconds, 0, SecondsToNanoseconds - 1);
        entry.owner = object.number(Name::Owner, Entry::Nobody, LargestOwner);
        entry.group = object.number(Name::Group, Entry::Nobody, LargestOwner);
    }
    if (entry.type == Entry::Link || entry.type == Entry::HardLink)
        entry.target = object.text(Name::Target);
    if (entry.type == Entry::File) {
        const int ivLength = Key::ivLength(head.algorithm);
        const int hashLength = QCryptographicHash::hashLength(QCryptographicHash::Md5);
        entry.size = object.number(Name::Size, 0, LargestNumber);
        entry.iv = object.bytes(Name::Iv, ivLength, ivLength);
        entry.treeHash = object.bytes(Name::TreeHash, hashLength, hashLength);
        if (head.format == 1)
            entry.formerName = object.text(Name::SealedName);
    }
    return entry;
}

/// The lines of entries, made as they are read.
class EntryLines : public QIODevice {
public:
    explicit EntryLines(const Entries& entries) : m_next(entries.begin()), m_end(entries.end())
    {
        open(ReadOnly | Unbuffered);
    }

    bool isSequential() const override { return true; }
    bool atEnd() const override { return m_position == m_line.size() && m_next == m_end; }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        qint64 count = 0;
        while (count < maxSize && !atEnd()) {
            if (m_position == m_line.size()) {
                m_line = toLine(*m_next++);
                m_position = 0;
            }
            const int portion = int(std::min<qint64>(maxSize - count, m_line.size() - m_position));
            std::copy_n(m_line.constData() + m_position, portion, data + count);
            m_position += portion;
            count += portion;
        }
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    Entries::const_iterator m_next;
    const Entries::const_iterator m_end;
    QByteArray m_line;
    int m_position = 0;
};

const QString FirstManifestName = QStringLiteral("manifest");

/// An update of a vault of format 1 has a second manifest beside the first, until its head is in place.
bool isManifestName(const QString& name)
{
    return name == FirstManifestName || name == QLatin1String("manifest-2");
}

bool isPlainName(const QString& name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") && !name.contains('/');
}

/// Lets only such entries pass that stay inside the folder they are opened in. A parent that is itself a folder of the
/// manifest, made by us, is not a link to somewhere else.
class EntryCheck {
public:
    void operator()(const Entry& entry)
    {
        const int slash = entry.path.lastIndexOf('/');
        const bool parentIsKnown = slash < 0 || m_folders.contains(entry.path.left(slash));
        const bool isWhole = entry.path.isEmpty() && entry.type == Entry::Folder;
        const bool isInOrder = m_isFirst || m_last < entry.path; // so each path is the only one of its kind
        if ((!isWhole && !isPlainName(entry.path.mid(slash + 1))) || !parentIsKnown || !isInOrder)
            throw InvalidData(QStringLiteral("the manifest is refused: the path \"%1\"").arg(printable(entry.path)));
        m_isFirst = false;
        m_last = entry.path;
        if (entry.type == Entry::Folder && !isWhole)
            m_folders.insert(entry.path);
        if (entry.type != Entry::File)
            return;
        if (!entry.formerName.isNull() && !isPlainName(entry.formerName))
            refuseSealed(entry);
        const int before = m_sealed.size();
        m_sealed.insert(entry.formerName.isNull() ? entry.iv : entry.formerName.toUtf8());
        if (m_sealed.size() == before)
            refuseSealed(entry);
    }

private:
    [[noreturn]] static void refuseSealed(const Entry& entry)
    {
        throw InvalidData(
            QStringLiteral("the manifest is refused: the sealed file \"%1\"").arg(printable(entry.nameInVault())));
    }

    bool m_isFirst = true;
    QString m_last;
    QSet<QString> m_folders;
    QSet<QByteArray> m_sealed;
};

/// Makes entries of the manifest's plain text, which comes in portions.
class EntryReader {
public:
    explicit EntryReader(const VaultHead& head) : m_head(head), m_skipFirst(head.format == 1) { }

    void addData(const char* data, qint64 size)
    {
        m_rest.append(data, int(size));
        int begin = 0;
        for (int end = m_rest.indexOf('\n'); end >= 0; end = m_rest.indexOf('\n', begin)) {
            if (!m_skipFirst)
                addLine(QByteArray::fromRawData(m_rest.constData() + begin, end - begin));
            m_skipFirst = false;
            begin = end + 1;
        }
        m_rest.remove(0, begin);
        if (m_rest.size() > LongestLine)
            throw InvalidData(QStringLiteral("the manifest is damaged: a line is too long"));
    }

    Entries finish()
    {
        if (!m_rest.isEmpty())
            throw InvalidData(QStringLiteral("the manifest is damaged: its last line has no end"));
        for (const Entry& entry : m_entries) {
            const Entry* target = entry.type == Entry::HardLink ? find(m_entries, entry.target) : nullptr;
            if (entry.type == Entry::HardLink && (target == nullptr || target->type != Entry::File))
                throw InvalidData(
                    QStringLiteral("the manifest is refused: the hard link \"%1\"").arg(printable(entry.path)));
        }
        return std::move(m_entries);
    }

private:
    void addLine(const QByteArray& line)
    {
        Entry entry = fromLine(line, m_head);
        m_check(entry);
        m_entries.push_back(std::move(entry));
    }

    const VaultHead& m_head;
    bool m_skipFirst;
    QByteArray m_rest; // of the last line
    EntryCheck m_check;
    Entries m_entries;
};

[[noreturn]] void refusePassword()
{
    throw InvalidData(QStringLiteral("wrong password, or a damaged manifest"));
}

/// The HMAC of a manifest in a vault with this head; its key is `macKey`.
class ManifestMac : public QMessageAuthenticationCode {
public:
    ManifestMac(const VaultHead& head, const QByteArray& macKey)
        : QMessageAuthenticationCode(QCryptographicHash::Sha256, macKey)
    {
        addData(QCryptographicHash::hash(head.json, QCryptographicHash::Sha256));
    }
};

/// Throws unless the manifest, which is left where its IV begins, was written with this key and has not been changed.
void requireAuthentic(QFile& manifest, const VaultHead& head, const VaultKeys& keys)
{
    const QByteArray expected = manifest.read(MacSize);
    ManifestMac mac(head, keys.macKey);
    QByteArray portion;
    do {
        portion = manifest.read(256 * 1024);
        mac.addData(portion);
    } while (!portion.isEmpty());
    if (manifest.error() != QFile::NoError)
        throw InvalidData(QStringLiteral("%1: %2").arg(manifest.fileName(), manifest.errorString()));
    if (expected.size() != MacSize || mac.result() != expected || !manifest.seek(MacSize))
        refusePassword();
}

/// The same for format 1, whose manifest has a hash in its first line.
void requireHash(const QSharedPointer<QFile>& manifest, const VaultHead& head, const Cipher& cipher)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QByteArray firstLine;
    bool inFirstLine = true;
    try {
        cipher.run(Cipher::Decrypt, head.manifestIv, manifest, [&](const char* data, qint64 size) {
            const char* const begin = inFirstLine ? std::find(data, data + size, '\n') : data;
            if (inFirstLine)
                firstLine.append(data, int(begin - data));
            const bool firstLineEnds = inFirstLine && begin < data + size;
            inFirstLine = inFirstLine && !firstLineEnds;
            const char* const lines = firstLineEnds ? begin + 1 : begin;
            hash.addData(QByteArray::fromRawData(lines, int(data + size - lines)));
        });
    } catch (const Orv::Exception::Canceled&) {
        throw;
    } catch (const std::exception&) {
        firstLine.clear(); // a wrong key nearly always shows as a wrong padding
    }
    if (firstLine != FirstManifestMagic + hash.result().toHex() || !manifest->seek(0))
        refusePassword();
}

} // namespace

QString Entry::nameInVault() const
{
    return formerName.isNull() ? hexOf(iv) : formerName;
}

bool Entry::hasSameAttributes(const Entry& other) const
{
    return type == other.type && permissions == other.permissions && modified == other.modified &&
        owner == other.owner && group == other.group && target == other.target;
}

QString headPath(const QString& vault)
{
    return vault + QStringLiteral("/vault.json");
}

QString manifestPath(const QString& vault, const VaultHead& head)
{
    return vault + '/' + head.manifestName;
}

QString dataFolder(const QString& vault)
{
    return vault + QStringLiteral("/data");
}

QString lockPath(const QString& vault)
{
    return vault + QStringLiteral("/lock");
}

QString sealedPath(const QString& vault, const Entry& entry)
{
    return dataFolder(vault) + '/' + entry.nameInVault();
}

bool isSealedName(const QString& name)
{
    static const QRegularExpression form(QStringLiteral("\\A([0-9a-f]{16}|[0-9a-f]{32}|[0-9]{8,}\\.sealed)\\z"));
    return form.match(name).hasMatch();
}

VaultHead makeHead(Orv::Core::Encryption::Algorithm algorithm, int iterations, const QString& manifestName)
{
    VaultHead head;
    head.format = NewestFormat;
    head.algorithm = algorithm;
    head.salt = Key::random(SaltSize);
    head.macSalt = Key::random(SaltSize);
    head.iterations = iterations;
    head.manifestName = manifestName;
    head.json = QJsonDocument(QJsonObject{
                                  {Name::Format, head.format},
                                  {Name::Algorithm, Key::name(algorithm)},
                                  {Name::KeyLength, Key::length(algorithm)},
                                  {Name::Salt, hexOf(head.salt)},
                                  {Name::MacSalt, hexOf(head.macSalt)},
                                  {Name::Iterations, iterations},
                                  {Name::Manifest, manifestName},
                              })
                    .toJson();
    return head;
}

void writeHead(const QString& vault, const VaultHead& head)
{
    Replacement file(headPath(vault));
    file.write(head.json.constData(), head.json.size());
    file.close();
    flushFolder(vault);
    file.replace(headPath(vault));
}

VaultHead readHead(const QString& vault)
{
    VaultHead head;
    head.json = readSmallFile(headPath(vault), LargestHead);
    const StrictObject object(head.json, headPath(vault));
    head.format = int(object.number(Name::Format, 1, std::numeric_limits<int>::max()));
    if (head.format > NewestFormat)
        throw InvalidData(QStringLiteral("%1: this format of vault is newer than this program").arg(vault));

    const int keyLength = int(object.number(Name::KeyLength, 1, 1024));
    head.algorithm = Key::algorithmFromName(object.text(Name::Algorithm), keyLength);
    object.require(head.algorithm != Orv::Core::Encryption::None, Name::Algorithm);
    head.salt = object.bytes(Name::Salt, ShortestSalt, LongestSalt);
    head.iterations = int(object.number(Name::Iterations, 1, MostIterations));
    if (head.format == 1) {
        const int ivLength = Key::ivLength(head.algorithm);
        head.manifestName = FirstManifestName;
        head.manifestIv = object.bytes(Name::ManifestIv, ivLength, ivLength);
    } else {
        head.macSalt = object.bytes(Name::MacSalt, ShortestSalt, LongestSalt);
        object.require(head.macSalt != head.salt, Name::MacSalt);
        head.manifestName = object.text(Name::Manifest);
        object.require(isManifestName(head.manifestName), Name::Manifest);
    }
    return head;
}

VaultKeys makeKeys(const VaultHead& head, const QByteArray& password)
{
    const auto derive = [&](Orv::Core::Encryption::Algorithm algorithm, const QByteArray& salt) {
        return Key::generateAdvanced(algorithm, password, salt, head.iterations);
    };
    std::future<QByteArray> macKey; // meanwhile, where there is a second thread to be had
    if (head.format > 1)
        macKey = std::async([&] { return derive(Orv::Core::Encryption::Aes128, head.macSalt); }); // 16 bytes
    Cipher cipher(head.algorithm, derive(head.algorithm, head.salt));
    return {std::move(cipher), macKey.valid() ? macKey.get() : QByteArray()};
}

void writeManifest(const QString& vault, const VaultHead& head, const VaultKeys& keys, const Entries& entries)
{
    Replacement file(manifestPath(vault, head));
    file.write(QByteArray(MacSize, 0).constData(), MacSize); // comes at the end
    ManifestMac mac(head, keys.macKey);
    qint64 total = 0;
    const auto append = [&](const char* data, qint64 size) {
        mac.addData(data, int(size));
        file.write(data, size);
        total += size;
        if (total > LargestManifest - LongestLine)
            throw CannotGoOn(QStringLiteral("there are too many entries for one vault: it could not be read again"));
    };
    const QByteArray iv = keys.cipher.randomIv();
    append(iv.constData(), iv.size());
    keys.cipher.run(Cipher::Encrypt, iv, QSharedPointer<EntryLines>::create(entries), append);
    file.rewrite(mac.result());
    file.close();
    flushFolder(vault);
    file.replace(manifestPath(vault, head));
}

void requireManifest(const QString& vault, const VaultHead& head)
{
    if (!QFile::exists(manifestPath(vault, head)))
        throw InvalidData(QStringLiteral("%1 is not whole: it has no manifest, because sealing was not finished; "
                                         "\"orvseal seal\" with the same folder finishes it")
                              .arg(vault));
    std::error_code error;
    if (std::filesystem::symlink_status(nativePath(dataFolder(vault)), error).type() !=
        std::filesystem::file_type::directory)
        throw InvalidData(QStringLiteral("%1 is damaged: \"data\" in it is not a folder").arg(vault));
}

Entries readManifest(const QString& vault, const VaultHead& head, const VaultKeys& keys)
{
    const auto manifest = QSharedPointer<QFile>::create(manifestPath(vault, head));
    if (openToRead(*manifest, manifest->fileName() + QStringLiteral(": ")).size > LargestManifest)
        throw InvalidData(QStringLiteral("%1 is damaged: it is too large").arg(manifest->fileName()));
    QByteArray iv = head.manifestIv;
    if (head.format == 1) {
        requireHash(manifest, head, keys.cipher);
    } else {
        requireAuthentic(*manifest, head, keys);
        iv = manifest->read(Key::ivLength(head.algorithm));
    }
    EntryReader reader(head);
    keys.cipher.run(
        Cipher::Decrypt, iv, manifest, [&reader](const char* data, qint64 size) { reader.addData(data, size); });
    return reader.finish();
}

const Entry* find(const Entries& entries, const QString& path)
{
    const auto found = std::lower_bound(entries.begin(), entries.end(), path,
        [](const Entry& entry, const QString& wanted) { return entry.path < wanted; });
    return found != entries.end() && found->path == path ? &*found : nullptr;
}

void completeHardLinks(Entries& entries, const Entries& all)
{
    QHash<QString, QString> replaced; // the path of a file that is only in `all`, and of the link that became it
    for (Entry& entry : entries) {
        if (entry.type != Entry::HardLink)
            continue;
        const Entry* file = find(entries, entry.target);
        if (file != nullptr && file->type == Entry::File)
            continue;
        if (replaced.contains(entry.target)) {
            entry.target = replaced[entry.target];
            continue;
        }
        file = find(all, entry.target);
        if (file == nullptr || file->type != Entry::File)
            continue;
        replaced.insert(entry.target, entry.path);
        const QString path = entry.path;
        entry = *file;
        entry.path = path;
    }
}

} // namespace orvseal

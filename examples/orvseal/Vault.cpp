#include "Vault.h"

#include "Console.h"
#include "Work.h"

#include <Orv/Core/Encryption/Key.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <array>
#include <cmath>

using Orv::Core::Encryption::Key;
using Orv::Exception::InvalidData;

namespace orvseal {

namespace {

constexpr int FormatNumber = 1;
constexpr char ManifestMagic[] = "orvseal manifest 1 ";

// What is believed of a vault from somewhere
constexpr int MostIterations = 10000000;
constexpr int ShortestSalt = 8;                   // bytes
constexpr int LongestSalt = 64;                   // bytes
constexpr qint64 LargestHead = 64 * 1024;         // bytes
constexpr qint64 LargestManifest = 1000000000;    // bytes; it is held in memory
constexpr qint64 LargestNumber = qint64(1) << 53; // JSON's numbers are exact up to here

// The names in the JSON of both files
namespace Name {
const QLatin1String Format("format");
const QLatin1String Algorithm("algorithm");
const QLatin1String KeyLength("keyLength");
const QLatin1String Salt("salt");
const QLatin1String Iterations("iterations");
const QLatin1String ManifestIv("manifestIv");
const QLatin1String Type("type");
const QLatin1String Path("path");
const QLatin1String Permissions("permissions");
const QLatin1String Modified("modified");
const QLatin1String Target("target");
const QLatin1String Size("size");
const QLatin1String Iv("iv");
const QLatin1String TreeHash("treeHash");
const QLatin1String SealedName("sealed");
} // namespace Name

const std::array<QLatin1String, 3> TypeNames = {
    QLatin1String("file"), QLatin1String("folder"), QLatin1String("link")}; // in the order of Entry::Type

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
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile())
        throw InvalidData(QStringLiteral("%1 is not a file").arg(path)); // a pipe would never end
    if (!file.open(QIODevice::ReadOnly))
        throw InvalidData(QStringLiteral("%1: %2").arg(path, file.errorString()));
    if (file.size() > largest)
        throw InvalidData(QStringLiteral("%1 is damaged: it is too large").arg(path));
    const QByteArray content = file.readAll();
    if (file.error() != QFile::NoError)
        throw InvalidData(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return content;
}

void writeSmallFile(const QString& path, const QByteArray& content)
{
    QSaveFile file(path);
    const bool done = file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
    if (!done)
        throw CannotGoOn(QStringLiteral("%1 cannot be written: %2").arg(path, file.errorString()));
}

QByteArray toLine(const Entry& entry)
{
    QJsonObject object = {
        {Name::Type, TypeNames[entry.type]},
        {Name::Path, entry.path},
        {Name::Permissions, entry.permissions},
        {Name::Modified, entry.modified},
    };
    if (entry.type == Entry::Link)
        object[Name::Target] = entry.target;
    if (entry.type == Entry::File) {
        object[Name::Size] = entry.size;
        object[Name::Iv] = QString::fromLatin1(entry.iv.toHex());
        object[Name::TreeHash] = QString::fromLatin1(entry.treeHash.toHex());
        object[Name::SealedName] = entry.sealedName;
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

Entry fromLine(const QByteArray& line, int ivLength)
{
    const StrictObject object(line, QStringLiteral("the manifest"));
    const auto typeName = std::find(TypeNames.begin(), TypeNames.end(), object.text(Name::Type));
    object.require(typeName != TypeNames.end(), Name::Type);

    Entry entry;
    entry.type = static_cast<Entry::Type>(typeName - TypeNames.begin());
    entry.path = object.text(Name::Path);
    entry.permissions = int(object.number(Name::Permissions, 0, 0777));
    entry.modified = object.number(Name::Modified, -LargestNumber, LargestNumber);
    if (entry.type == Entry::Link)
        entry.target = object.text(Name::Target);
    if (entry.type == Entry::File) {
        const int hashLength = QCryptographicHash::hashLength(QCryptographicHash::Md5);
        entry.size = object.number(Name::Size, 0, LargestNumber);
        entry.iv = object.bytes(Name::Iv, ivLength, ivLength);
        entry.treeHash = object.bytes(Name::TreeHash, hashLength, hashLength);
        entry.sealedName = object.text(Name::SealedName);
    }
    return entry;
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
        if (!isPlainName(entry.path.mid(slash + 1)) || !parentIsKnown || !addNew(m_paths, entry.path))
            throw InvalidData(QStringLiteral("the manifest is refused: the path \"%1\"").arg(printable(entry.path)));
        if (entry.type == Entry::Folder)
            m_folders.insert(entry.path);
        if (entry.type == Entry::File && (!isPlainName(entry.sealedName) || !addNew(m_sealedNames, entry.sealedName)))
            throw InvalidData(
                QStringLiteral("the manifest is refused: the sealed file \"%1\"").arg(printable(entry.sealedName)));
    }

private:
    static bool addNew(QSet<QString>& set, const QString& text)
    {
        const int before = set.size();
        set.insert(text);
        return set.size() > before;
    }

    QSet<QString> m_paths;
    QSet<QString> m_folders;
    QSet<QString> m_sealedNames;
};

QByteArray firstLineFor(const QByteArray& entryLines)
{
    return ManifestMagic + QCryptographicHash::hash(entryLines, QCryptographicHash::Sha256).toHex() + '\n';
}

QByteArray runInMemory(const Cipher& cipher, Cipher::Direction direction, const QByteArray& iv, QByteArray input)
{
    const auto source = QSharedPointer<QBuffer>::create();
    source->setData(input);
    source->open(QIODevice::ReadOnly);
    QByteArray output;
    cipher.run(direction, iv, source, [&output](const char* data, qint64 size) { output.append(data, int(size)); });
    return output;
}

/// The lines of the entries; throws if the manifest was not sealed with this key as it is now.
QByteArray unsealedLines(const QString& vault, const VaultHead& head, const Cipher& cipher)
{
    const QByteArray sealed = readSmallFile(manifestPath(vault), LargestManifest);
    QByteArray plain;
    try {
        plain = runInMemory(cipher, Cipher::Decrypt, head.manifestIv, sealed);
    } catch (const Orv::Exception::Canceled&) {
        throw;
    } catch (const std::exception&) {
        // A wrong key nearly always shows as a wrong padding; what is left of the plain text then fails below.
        plain.clear();
    }
    const QByteArray lines = plain.mid(plain.indexOf('\n') + 1);
    if (plain.isEmpty() || !plain.startsWith(firstLineFor(lines)))
        throw InvalidData(QStringLiteral("wrong password, or a damaged manifest"));
    return lines;
}

} // namespace

QString headPath(const QString& vault)
{
    return vault + QStringLiteral("/vault.json");
}

QString manifestPath(const QString& vault)
{
    return vault + QStringLiteral("/manifest");
}

QString dataFolder(const QString& vault)
{
    return vault + QStringLiteral("/data");
}

QString sealedPath(const QString& vault, const Entry& entry)
{
    return dataFolder(vault) + '/' + entry.sealedName;
}

void writeHead(const QString& vault, const VaultHead& head)
{
    const QJsonObject object = {
        {Name::Format, FormatNumber},
        {Name::Algorithm, Key::name(head.algorithm)},
        {Name::KeyLength, Key::length(head.algorithm)},
        {Name::Salt, QString::fromLatin1(head.salt.toHex())},
        {Name::Iterations, head.iterations},
        {Name::ManifestIv, QString::fromLatin1(head.manifestIv.toHex())},
    };
    writeSmallFile(headPath(vault), QJsonDocument(object).toJson());
}

VaultHead readHead(const QString& vault)
{
    const StrictObject object(readSmallFile(headPath(vault), LargestHead), headPath(vault));
    if (object.number(Name::Format, 1, LargestNumber) != FormatNumber)
        throw InvalidData(QStringLiteral("%1: this format of vault is newer than this program").arg(vault));

    VaultHead head;
    const int keyLength = int(object.number(Name::KeyLength, 1, 1024));
    head.algorithm = Key::algorithmFromName(object.text(Name::Algorithm), keyLength);
    object.require(head.algorithm != Orv::Core::Encryption::None, Name::Algorithm);
    head.salt = object.bytes(Name::Salt, ShortestSalt, LongestSalt);
    head.iterations = int(object.number(Name::Iterations, 1, MostIterations));
    const int ivLength = Key::ivLength(head.algorithm);
    head.manifestIv = object.bytes(Name::ManifestIv, ivLength, ivLength);
    return head;
}

Cipher makeCipher(const VaultHead& head, const QByteArray& password)
{
    return Cipher(head.algorithm, Key::generateAdvanced(head.algorithm, password, head.salt, head.iterations));
}

void writeManifest(const QString& vault, const VaultHead& head, const Cipher& cipher, const std::vector<Entry>& entries)
{
    QByteArray lines;
    for (const Entry& entry : entries)
        lines += toLine(entry);
    writeSmallFile(
        manifestPath(vault), runInMemory(cipher, Cipher::Encrypt, head.manifestIv, firstLineFor(lines) + lines));
}

void requireManifest(const QString& vault)
{
    if (!QFile::exists(manifestPath(vault)))
        throw InvalidData(QStringLiteral("%1 is not whole: it has no manifest").arg(vault));
}

std::vector<Entry> readManifest(const QString& vault, const VaultHead& head, const Cipher& cipher)
{
    const int ivLength = head.manifestIv.size();
    std::vector<Entry> entries;
    EntryCheck check;
    const QList<QByteArray> lines = unsealedLines(vault, head, cipher).split('\n');
    for (const QByteArray& line : lines) {
        if (line.isEmpty())
            continue; // what follows the last newline
        entries.push_back(fromLine(line, ivLength));
        check(entries.back());
    }
    return entries;
}

} // namespace orvseal

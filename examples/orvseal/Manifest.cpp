#include "Manifest.h"

#include "Console.h"
#include "Work.h"

#include <Orv/Core/Encryption/Key.h>

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QMessageAuthenticationCode>
#include <QSet>

#include <chrono>
#include <functional>
#include <map>
#include <tuple>
#include <vector>

using Orv::Core::Encryption::Key;
using Orv::Exception::InvalidData;

namespace orvseal {

namespace {

constexpr char FirstFormatMagic[] = "orvseal manifest 1 ";
constexpr char NotAuthentic[] = "wrong password, or a damaged manifest";
constexpr int MacSize = 32; // bytes
constexpr qint64 MillisecondsToNanoseconds = 1000000;
constexpr qint64 SecondsToNanoseconds = 1000000000;

// Limits for manifests from untrusted sources
constexpr qint64 LargestManifest = 1000000000;    // bytes; its entries are held in memory
constexpr qint64 LongestLine = 1000000;           // bytes
constexpr qint64 LargestNumber = qint64(1) << 53; // JSON's numbers are exact up to here
constexpr qint64 LastSecond = 9223372035;         // since 1970; its nanoseconds fit into 64 bits
constexpr qint64 LastMilliseconds = LastSecond * 1000;
constexpr qint64 LargestOwner = 0xFFFFFFFE;

const QStringList TypeNames = {"file", "folder", "link", "hardlink"}; // in the order of Entry::Type

QByteArray toLine(const Entry& entry)
{
    // Rounded down, so that the remainder is positive also before 1970
    const qint64 seconds = std::chrono::floor<std::chrono::seconds>(std::chrono::nanoseconds(entry.modified)).count();
    QJsonObject object = {
        {"type", TypeNames[entry.type]},
        {"path", entry.path},
        {"permissions", entry.permissions},
        {"modified", seconds},
        {"nanoseconds", entry.modified - seconds * SecondsToNanoseconds},
        {"owner", entry.owner},
        {"group", entry.group},
    };
    if (entry.type == Entry::Link || entry.type == Entry::HardLink)
        object.insert("target", entry.target);
    if (entry.type == Entry::File) {
        object.insert("size", entry.size);
        object.insert("iv", entry.iv.hex());
        object.insert("treeHash", entry.treeHash.hex());
    }
    QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
    line.replace("\xEF\xBB\xBF", "\\ufeff"); // readers drop a byte-order mark at the beginning of a string
    return line;
}

Entry fromLine(const QByteArray& line, const VaultHead& head)
{
    const StrictObject object(line, "the manifest");
    const auto type = TypeNames.indexOf(object.text("type"));
    object.require(type >= 0, "type");

    Entry entry;
    entry.type = static_cast<Entry::Type>(type);
    entry.path = object.text("path");
    entry.permissions = int(object.number("permissions", 0, entry.type == Entry::Directory ? 01777 : 0777));
    if (head.format == 1) {
        entry.modified = object.number("modified", -LastMilliseconds, LastMilliseconds) * MillisecondsToNanoseconds;
    } else {
        entry.modified = object.number("modified", -LastSecond, LastSecond) * SecondsToNanoseconds +
            object.number("nanoseconds", 0, SecondsToNanoseconds - 1);
        entry.owner = object.number("owner", Entry::Nobody, LargestOwner);
        entry.group = object.number("group", Entry::Nobody, LargestOwner);
    }
    if (entry.type == Entry::Link || entry.type == Entry::HardLink)
        entry.target = object.text("target");
    if (entry.type == Entry::File) {
        entry.size = object.number("size", 0, LargestNumber);
        entry.iv = object.bytes("iv", Key::ivLength(head.algorithm));
        entry.treeHash = object.bytes("treeHash", QCryptographicHash::hashLength(QCryptographicHash::Md5));
        if (head.format == 1)
            entry.format1Name = object.text("sealed");
    }
    return entry;
}

/// The lines of the entries, as a device: generated while they are read.
class EntryLines : public QIODevice {
public:
    explicit EntryLines(const Entries& entries) : m_next(entries.begin()), m_end(entries.end())
    {
        open(ReadOnly | Unbuffered);
    }

    bool isSequential() const override { return true; }
    bool atEnd() const override { return m_ready.isEmpty() && m_next == m_end; }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        while (m_ready.size() < maxSize && m_next != m_end)
            m_ready += toLine(*m_next++);
        const int size = int(std::min<qint64>(maxSize, m_ready.size()));
        std::copy_n(m_ready.constData(), size, data);
        m_ready.remove(0, size);
        return size;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    Entries::const_iterator m_next;
    const Entries::const_iterator m_end;
    QByteArray m_ready;
};

[[noreturn]] void refuse(const QString& what, const QString& text)
{
    fail<InvalidData>("the manifest is refused: the %1 \"%2\"", what, printable(text));
}

bool isPlainName(const QString& name)
{
    return !name.isEmpty() && name != "." && name != ".." && !name.contains('/');
}

/// Throws unless the entries are in order and stay inside the directory they are restored in: the parent of each is a
/// directory of the manifest, which we create, and so no link that leads elsewhere.
void requireValid(const Entries& entries, int format)
{
    const auto unordered = std::adjacent_find(entries.begin(), entries.end(), std::not_fn(ByPath()));
    if (unordered != entries.end())
        refuse("path", std::next(unordered)->path); // or it occurs twice

    std::vector<const Entry*> files;
    for (const Entry& entry : entries) {
        const int slash = entry.path.lastIndexOf('/');
        const bool isRoot = entry.path.isEmpty() && entry.type == Entry::Directory;
        const Entry* parent = slash > 0 ? find(entries, entry.path.left(slash)) : nullptr;
        const bool hasParent = slash < 0 || (parent != nullptr && parent->type == Entry::Directory);
        if (!(isRoot || isPlainName(entry.path.mid(slash + 1))) || !hasParent)
            refuse("path", entry.path);
        if (!entry.format1Name.isNull() && !isPlainName(entry.format1Name))
            refuse("sealed file", entry.format1Name);
        if (entry.type == Entry::HardLink && findFile(entries, entry.target) == nullptr)
            refuse("hard link", entry.path);
        if (entry.type == Entry::File)
            files.push_back(&entry);
    }
    const auto isBefore = [format](const Entry* a, const Entry* b) {
        return format == 1 ? a->format1Name < b->format1Name : a->iv < b->iv;
    };
    std::sort(files.begin(), files.end(), isBefore);
    const auto twice = std::adjacent_find(files.begin(), files.end(), std::not_fn(isBefore));
    if (twice != files.end())
        refuse("sealed file", (*twice)->nameInVault());
}

/// Throws unless the manifest was written with these keys and has not been changed. Leaves it where its IV begins.
void requireAuthentic(QFile& manifest, const VaultHead& head, const VaultKeys& keys)
{
    const QByteArray expected = manifest.read(MacSize);
    QMessageAuthenticationCode mac(QCryptographicHash::Sha256, keys.macKey);
    mac.addData(QCryptographicHash::hash(head.json, QCryptographicHash::Sha256));
    if (!mac.addData(&manifest) || manifest.error() != QFile::NoError)
        fail<InvalidData>("%1: %2", manifest.fileName(), manifest.errorString());
    if (mac.result() != expected || !manifest.seek(MacSize))
        fail<InvalidData>(NotAuthentic);
}

/// The lines of a manifest of format 1. Throws unless they have the hash in the first line.
QByteArray firstFormatLines(const QSharedPointer<QFile>& manifest, const VaultHead& head, const VaultKeys& keys)
{
    QByteArray text;
    try {
        keys.run(VaultKeys::Decrypt, head.manifestIv, manifest,
            [&text](const char* data, qint64 size) { text.append(data, int(size)); });
    } catch (const FatalError&) { // a signal
        throw;
    } catch (const std::exception&) {
        text.clear(); // with a wrong key, the padding is nearly always wrong
    }
    const int firstSize = text.indexOf('\n') + 1;
    const QByteArray firstLine = text.left(firstSize);
    text.remove(0, firstSize);
    const QByteArray hash = QCryptographicHash::hash(text, QCryptographicHash::Sha256);
    if (firstLine != FirstFormatMagic + hash.toHex() + '\n')
        fail<InvalidData>(NotAuthentic);
    return text;
}

} // namespace

void Entry::setAttributes(const FileState& state)
{
    // The sticky bit of a directory keeps its users from removing each other's files. The bits that lend a program its
    // owner's rights are left out: the restored file may have another owner.
    const mode_t nineBits = S_IRWXU | S_IRWXG | S_IRWXO;
    permissions = int(state.st_mode & (S_ISDIR(state.st_mode) ? nineBits | S_ISVTX : nineBits));
    modified = modifiedTime(state);
    owner = state.st_uid;
    group = state.st_gid;
}

bool Entry::isSame(const Entry& other) const
{
    const auto all = [](const Entry& entry) {
        return std::tie(entry.type, entry.treeHash, entry.permissions, entry.target, entry.size, entry.modified,
            entry.owner, entry.group);
    };
    return all(*this) == all(other);
}

const Entry* find(const Entries& entries, const QString& path)
{
    const auto found = std::lower_bound(entries.begin(), entries.end(), path, ByPath());
    return found != entries.end() && found->path == path ? &*found : nullptr;
}

const Entry* findFile(const Entries& entries, const QString& path)
{
    const Entry* entry = find(entries, path);
    return entry != nullptr && entry->type == Entry::File ? entry : nullptr;
}

void completeHardLinks(Entries& part, const Entries& all, const Entries& others)
{
    std::map<QString, QString> replaced; // the path of a file that is only in `all`, and of the link that became it
    for (Entry& entry : part) {
        if (entry.type != Entry::HardLink)
            continue;
        const Entry* file = findFile(all, entry.target);
        const Entry* other = findFile(others, entry.target);
        if (findFile(part, entry.target) != nullptr || (other != nullptr && other->iv == file->iv))
            continue;
        const QString path = entry.path;
        const auto [replacement, isFirst] = replaced.emplace(entry.target, path);
        if (isFirst)
            entry = *file;
        else
            entry.target = replacement->second;
        entry.path = path;
    }
}

QStringList surplusNames(const QString& vault, const Entries& entries)
{
    std::vector<ShortBytes> ivs;
    QSet<QString> format1Names;
    for (const Entry& entry : entries) {
        if (entry.format1Name.isNull())
            ivs.push_back(entry.iv);
        else
            format1Names.insert(entry.format1Name);
    }
    std::sort(ivs.begin(), ivs.end());
    QStringList surplus;
    for (const auto& item : std::filesystem::directory_iterator(nativePath(vault + DataDirectory))) {
        const QString name = QString::fromStdString(item.path().filename());
        const bool isIv = isSealedName(name) &&
            std::binary_search(ivs.begin(), ivs.end(), ShortBytes(QByteArray::fromHex(name.toLatin1())));
        if (!isIv && !format1Names.contains(name))
            surplus += name;
    }
    return surplus;
}

void writeManifest(NewFile& file, const VaultHead& head, const VaultKeys& keys, const Entries& entries)
{
    requireValid(entries, head.format);
    file.write(QByteArray(MacSize, 0).constData(), MacSize); // until it is known
    QMessageAuthenticationCode mac(QCryptographicHash::Sha256, keys.macKey);
    mac.addData(QCryptographicHash::hash(head.json, QCryptographicHash::Sha256));
    qint64 total = 0;
    const auto append = [&](const char* data, qint64 size) {
        mac.addData(data, int(size));
        file.write(data, size);
        total += size;
        if (total > LargestManifest - LongestLine)
            fail<FatalError>("there are too many entries for one vault: it could not be read again");
    };
    const QByteArray iv = keys.randomIv();
    append(iv.constData(), iv.size());
    keys.run(VaultKeys::Encrypt, iv, QSharedPointer<EntryLines>::create(entries), append);
    file.rewrite(mac.result());
    file.close();
}

Entries readManifest(const QString& vault, const VaultHead& head, const VaultKeys& keys, const Entries& known)
{
    const auto manifest = QSharedPointer<QFile>::create(head.manifestPath(vault));
    if (openToRead(*manifest, manifest->fileName() + ": ").st_size > LargestManifest)
        fail<InvalidData>("%1 is damaged: it is too large", manifest->fileName());

    Entries entries;
    QByteArray rest; // the beginning of the next line
    auto sameOrNext = known.begin();
    const auto parse = [&](const char* data, qint64 size) {
        rest.append(data, int(size));
        int begin = 0;
        for (int end = rest.indexOf('\n'); end >= 0; end = rest.indexOf('\n', begin)) {
            Entry entry = fromLine(QByteArray::fromRawData(rest.constData() + begin, end - begin), head);
            while (sameOrNext != known.end() && ByPath()(*sameOrNext, entry))
                ++sameOrNext;
            if (sameOrNext != known.end() && sameOrNext->path == entry.path)
                entry.path = sameOrNext->path; // the same string, which saves memory
            entries.push_back(std::move(entry));
            begin = end + 1;
        }
        rest.remove(0, begin);
        if (rest.size() > LongestLine)
            fail<InvalidData>("the manifest is damaged: a line is too long");
    };
    if (head.format == 1) {
        const QByteArray lines = firstFormatLines(manifest, head, keys);
        parse(lines.constData(), lines.size());
    } else {
        requireAuthentic(*manifest, head, keys);
        const QByteArray iv = manifest->read(Key::ivLength(head.algorithm));
        keys.run(VaultKeys::Decrypt, iv, manifest, parse);
    }
    if (!rest.isEmpty())
        fail<InvalidData>("the manifest is damaged: its last line has no end");
    requireValid(entries, head.format);
    return entries;
}

} // namespace orvseal

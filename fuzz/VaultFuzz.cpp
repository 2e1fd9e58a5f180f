#include "Fuzz.h"

#include "Files.h"
#include "orvseal/Vault.h"

#include <Orv/Core/Encryption/Key.h>
#include <Orv/Exception.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTemporaryDir>

#include <optional>

using namespace orvseal;
using Orv::Core::Encryption::Key;

namespace {

const QString& vaultFolder()
{
    static const QTemporaryDir folder; // tools/fuzz.sh has it in memory
    static const QString path = folder.path();
    return path;
}

/// What `read` gives, or nothing if it refuses the vault. Any other exception ends the process.
template <class Read> auto unlessRefused(const Read& read) -> std::optional<decltype(read())>
{
    try {
        return read();
    } catch (const Orv::Exception::InvalidData& refusal) {
        require(*refusal.what() != '\0', "a refusal has a reason");
        return std::nullopt;
    }
}

bool isSame(const Entry& one, const Entry& other)
{
    return one.type == other.type && one.path == other.path && one.permissions == other.permissions &&
        one.modified == other.modified && one.target == other.target && one.size == other.size && one.iv == other.iv &&
        one.treeHash == other.treeHash && one.sealedName == other.sealedName;
}

void checkHead(const QByteArray& json)
{
    writeFile(headPath(vaultFolder()), json);
    const auto head = unlessRefused([] { return readHead(vaultFolder()); });
    if (!head)
        return;
    require(Key::length(head->algorithm) > 0, "there is such a cipher");
    require(head->manifestIv.size() == Key::ivLength(head->algorithm), "the IV fits the cipher");
    require(head->salt.size() >= 8 && head->salt.size() <= 64, "the salt is neither short nor long");
    require(head->iterations >= 1 && head->iterations <= 10000000, "the key can be made in a minute");
    writeHead(vaultFolder(), *head);
    const QJsonObject given = QJsonDocument::fromJson(json).object();
    const QJsonObject written = QJsonDocument::fromJson(contentOf(headPath(vaultFolder()))).object();
    for (const QString& name : written.keys())
        require(written[name] == given[name], "a head that is written again is the same");
}

/// A vault whose key costs nothing.
struct CheapVault {
    VaultHead head;
    Cipher cipher;

    CheapVault() : cipher(Orv::Core::Encryption::Aes128, QByteArray(16, 'k'))
    {
        head.algorithm = Orv::Core::Encryption::Aes128;
        head.manifestIv = QByteArray(16, 'i');
    }

    void writeSealed(const QByteArray& plain) const
    {
        const auto source = QSharedPointer<QBuffer>::create();
        source->setData(plain);
        source->open(QIODevice::ReadOnly);
        QByteArray sealed;
        cipher.run(Cipher::Encrypt, head.manifestIv, source,
            [&sealed](const char* data, qint64 size) { sealed.append(data, static_cast<int>(size)); });
        writeFile(manifestPath(vaultFolder()), sealed);
    }

    auto read() const
    {
        return unlessRefused([this] { return readManifest(vaultFolder(), head, cipher); });
    }
};

void checkPaths(const std::vector<Entry>& entries)
{
    QSet<QString> folders{QString()}; // the one that everything is opened in
    QSet<QString> paths;
    QSet<QString> sealedNames;
    for (const Entry& entry : entries) {
        const int slash = entry.path.lastIndexOf('/');
        require(
            folders.contains(entry.path.left(std::max(0, slash))) && slash != 0, "the parent is a folder before it");
        for (const QString& name : entry.path.split('/'))
            require(
                !name.isEmpty() && name != "." && name != ".." && !name.contains(QChar(0)), "it leads nowhere else");
        require(!paths.contains(entry.path), "it is the only one of its name");
        paths.insert(entry.path);
        if (entry.type == Entry::Folder)
            folders.insert(entry.path);
        if (entry.type != Entry::File)
            continue;
        const QString name = QFileInfo(sealedPath("/vault", entry)).absoluteFilePath();
        require(name == QDir::cleanPath(name) && QFileInfo(name).path() == dataFolder("/vault"),
            "its data is in the vault");
        require(!sealedNames.contains(name), "its data is its own");
        sealedNames.insert(name);
        require(entry.size >= 0 && entry.iv.size() == 16 && entry.treeHash.size() == 16, "its numbers are possible");
    }
}

void checkLines(const CheapVault& vault, const QByteArray& lines)
{
    const QByteArray hash = QCryptographicHash::hash(lines, QCryptographicHash::Sha256).toHex();
    vault.writeSealed("orvseal manifest 1 " + hash + '\n' + lines);
    const auto entries = vault.read();
    if (!entries)
        return;
    checkPaths(*entries);
    writeManifest(vaultFolder(), vault.head, vault.cipher, *entries);
    const std::vector<Entry> again = readManifest(vaultFolder(), vault.head, vault.cipher);
    require(std::equal(again.begin(), again.end(), entries->begin(), entries->end(),
                [](const Entry& one, const Entry& other) { return isSame(one, other); }),
        "a manifest that is written again says the same");
}

} // namespace

/// Whatever a vault holds, what is read of it leads nowhere outside, and says the same when it is written again.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const CheapVault vault;
    FuzzedDataProvider input(data, size);
    const int kind = input.ConsumeIntegralInRange(0, 3);
    const QByteArray content = restOf(input);
    if (kind == 0) {
        checkHead(content);
    } else if (kind == 1) {
        writeFile(manifestPath(vaultFolder()), content);
        require(!vault.read(), "what was not sealed with the key is refused");
    } else if (kind == 2) {
        vault.writeSealed(content);
        require(!vault.read(), "a manifest without the right hash is refused");
    } else {
        checkLines(vault, content);
    }
    return 0;
}

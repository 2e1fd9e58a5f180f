#include "Fuzz.h"

#include "Files.h"
#include "orvseal/Manifest.h"

#include <Orv/Core/Encryption/Key.h>
#include <Orv/Exception.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QMessageAuthenticationCode>
#include <QSet>
#include <QTemporaryDir>

#include <optional>

using namespace orvseal;
using Orv::Core::Encryption::Key;

namespace {

const QString& vaultDirectory()
{
    static const QTemporaryDir directory; // tools/fuzz.sh keeps it in memory
    static const QString path = directory.path();
    return path;
}

/// The result of `read`, or nothing if it refuses the vault. Any other exception ends the process.
template <class Read> auto unlessRefused(const Read& read) -> std::optional<decltype(read())>
{
    try {
        return read();
    } catch (const Orv::Exception::InvalidData& refusal) {
        require(*refusal.what() != '\0', "a refusal has a reason");
        return std::nullopt;
    }
}

void checkHead(const QByteArray& json)
{
    writeFile(vaultDirectory() + HeadFile, json);
    const auto head = unlessRefused([] { return readHead(vaultDirectory()); });
    if (!head)
        return;
    require(head->format == 2 || head->manifestIv.size() == Key::ivLength(head->algorithm), "the IV fits the cipher");
    require(head->format == 1 || head->macSalt != head->salt, "the two keys differ");
    require(!head->manifestName.contains('/'), "the manifest is in the vault");
    require(head->iterations >= 1 && head->iterations <= 2000000, "the key can be derived in seconds");
}

// Vaults whose keys need no derivation
VaultHead headOf(int format)
{
    VaultHead head;
    head.format = format;
    head.algorithm = Orv::Core::Encryption::Aes128;
    head.manifestName = QStringLiteral("manifest");
    head.manifestIv = QByteArray(16, 'i');
    return head;
}

const VaultHead First = headOf(1);
const VaultHead Second = headOf(2);
const VaultKeys Keys = {Orv::Core::Encryption::Aes128, QByteArray(16, 'k'), QByteArray(16, 'm')};

QByteArray encrypted(const QByteArray& plain)
{
    const auto source = QSharedPointer<QBuffer>::create();
    source->setData(plain);
    source->open(QIODevice::ReadOnly);
    QByteArray sealed;
    Keys.run(VaultKeys::Encrypt, First.manifestIv, source,
        [&sealed](const char* data, qint64 size) { sealed.append(data, static_cast<int>(size)); });
    return sealed;
}

/// Writes an authentic manifest of any lines, as somebody with the password could.
void writeAuthentic(const VaultHead& head, const QByteArray& lines)
{
    if (head.format == 1) {
        const QByteArray hash = QCryptographicHash::hash(lines, QCryptographicHash::Sha256).toHex();
        writeFile(head.manifestPath(vaultDirectory()), encrypted("orvseal manifest 1 " + hash + '\n' + lines));
        return;
    }
    const QByteArray rest = First.manifestIv + encrypted(lines);
    const QByteArray headHash = QCryptographicHash::hash(head.json, QCryptographicHash::Sha256);
    const QByteArray mac = QMessageAuthenticationCode::hash(headHash + rest, Keys.macKey, QCryptographicHash::Sha256);
    writeFile(head.manifestPath(vaultDirectory()), mac + rest);
}

Entries readEntries(const VaultHead& head)
{
    return readManifest(vaultDirectory(), head, Keys);
}

void checkPaths(const Entries& entries)
{
    QSet<QString> directories{QString()}; // the one that everything is restored in
    QSet<QString> paths;
    QSet<QString> sealedNames;
    for (const Entry& entry : entries) {
        if (entry.path.isEmpty()) {
            require(entry.type == Entry::Directory && &entry == &entries.front(), "only the root has no name");
            continue;
        }
        const int slash = entry.path.lastIndexOf('/');
        require(directories.contains(entry.path.left(std::max(0, slash))) && slash != 0,
            "the parent is a directory before it");
        for (const QString& name : entry.path.split('/'))
            require(
                !name.isEmpty() && name != "." && name != ".." && !name.contains(QChar(0)), "it leads nowhere else");
        require(!paths.contains(entry.path), "it is the only one of its name");
        paths.insert(entry.path);
        if (entry.type == Entry::Directory)
            directories.insert(entry.path);
        if (entry.type == Entry::HardLink)
            require(find(entries, entry.target)->type == Entry::File, "a hard link leads to a file of the vault");
        if (entry.type != Entry::File)
            continue;
        const QString name = QFileInfo(entry.sealedPath("/vault")).absoluteFilePath();
        require(name == QDir::cleanPath(name) && QFileInfo(name).path() == QStringLiteral("/vault") + DataDirectory,
            "its data is in the vault");
        require(!sealedNames.contains(name), "its data is its own");
        sealedNames.insert(name);
        require(entry.size >= 0 && QByteArray(entry.iv).size() == 16 && QByteArray(entry.treeHash).size() == 16,
            "its numbers are possible");
    }
}

void checkLines(const VaultHead& head, const QByteArray& lines)
{
    writeAuthentic(head, lines);
    const auto entries = unlessRefused([&head] { return readEntries(head); });
    if (!entries)
        return;
    checkPaths(*entries);
    if (head.format == 1)
        return;
    NewFile manifest(temporaryName(head.manifestPath(vaultDirectory())));
    writeManifest(manifest, head, Keys, *entries);
    manifest.replace(head.manifestPath(vaultDirectory()));
    require(readEntries(head).size() == entries->size(), "a manifest that is written again has as many entries");
}

} // namespace

/// Checks that no vault leads to a file outside of it.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const int kind = input.ConsumeIntegralInRange(0, 3);
    const QByteArray content = restOf(input);
    if (kind == 0) {
        checkHead(content);
    } else if (kind == 3) {
        checkLines(First, content);
        checkLines(Second, content);
    } else {
        const VaultHead& head = kind == 1 ? Second : First;
        writeFile(head.manifestPath(vaultDirectory()), kind == 1 ? content : encrypted(content));
        require(!unlessRefused([&head] { return readEntries(head); }), "what is not authentic is refused");
    }
    return 0;
}

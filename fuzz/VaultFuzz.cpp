#include "Fuzz.h"

#include "Files.h"
#include "orvseal/Vault.h"

#include <Orv/Core/Encryption/Key.h>
#include <Orv/Exception.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>

using namespace orvseal;
using Orv::Core::Encryption::Key;

namespace {

const QString& vaultFolder()
{
    static const QTemporaryDir folder; // tools/fuzz.sh has it in memory
    static const QString path = folder.path();
    return path;
}

void checkHead(const QByteArray& json)
{
    writeFile(headPath(vaultFolder()), json);
    const VaultHead head = readHead(vaultFolder());
    require(head.manifestIv.size() == Key::ivLength(head.algorithm), "the IV fits the cipher");
    require(head.iterations >= 1 && head.iterations <= 10000000, "the key can be made in a minute");
}

// A vault whose key costs nothing
const VaultHead Head = {Orv::Core::Encryption::Aes128, QByteArray(), 0, QByteArray(16, 'i')};
const Cipher VaultCipher(Orv::Core::Encryption::Aes128, QByteArray(16, 'k'));

void writeSealed(const QByteArray& plain)
{
    const auto source = QSharedPointer<QBuffer>::create();
    source->setData(plain);
    source->open(QIODevice::ReadOnly);
    QByteArray sealed;
    VaultCipher.run(Cipher::Encrypt, Head.manifestIv, source,
        [&sealed](const char* data, qint64 size) { sealed.append(data, static_cast<int>(size)); });
    writeFile(manifestPath(vaultFolder()), sealed);
}

std::vector<Entry> readEntries()
{
    return readManifest(vaultFolder(), Head, VaultCipher);
}

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

void checkLines(const QByteArray& lines)
{
    const QByteArray hash = QCryptographicHash::hash(lines, QCryptographicHash::Sha256).toHex();
    writeSealed("orvseal manifest 1 " + hash + '\n' + lines);
    checkPaths(readEntries());
}

} // namespace

/// Whatever a vault holds, it is refused, or what is read of it leads nowhere outside. Any other exception ends the
/// process.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
try {
    FuzzedDataProvider input(data, size);
    const int kind = input.ConsumeIntegralInRange(0, 3);
    const QByteArray content = restOf(input);
    if (kind == 0) {
        checkHead(content);
    } else if (kind == 3) {
        checkLines(content);
    } else {
        kind == 1 ? writeFile(manifestPath(vaultFolder()), content) : writeSealed(content);
        readEntries();
        require(false, "what was not sealed with the key, or has not the right hash, is refused");
    }
    return 0;
} catch (const Orv::Exception::InvalidData& refusal) {
    require(*refusal.what() != '\0', "a refusal has a reason");
    return 0;
}

#include "Vault.h"

#include "Files.h"
#include "StrictObject.h"

#include <Orv/Core/Encryption/Key.h>

#include <QRegularExpression>

#include <future>
#include <limits>

using Orv::Core::Encryption::Key;
using Orv::Exception::InvalidData;

namespace orvseal {

namespace {

constexpr int NewestFormat = 2;
// The lengths differ, so that no head of format 1, which nothing authenticates, leads to a key of format 2.
constexpr int SaltSize = 16;           // bytes
constexpr int FirstFormatSaltSize = 8; // bytes

// Limits for heads from untrusted sources
constexpr qint64 LargestHead = 64 * 1024; // bytes

} // namespace

QString manifestPath(const QString& vault, const VaultHead& head)
{
    return vault + '/' + head.manifestName;
}

const QStringList& manifestNames()
{
    static const QStringList names = {QStringLiteral("manifest"), QStringLiteral("manifest-2")};
    return names;
}

bool isVaultName(const QString& name)
{
    static const QRegularExpression form(
        QStringLiteral("\\A((vault\\.json|manifest|manifest-2)(\\.new)?|data|lock)\\z"));
    return form.match(name).hasMatch();
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
                                  {"format", head.format},
                                  {"algorithm", Key::name(algorithm)},
                                  {"keyLength", Key::length(algorithm)},
                                  {"salt", hexOf(head.salt)},
                                  {"macSalt", hexOf(head.macSalt)},
                                  {"iterations", iterations},
                                  {"manifest", manifestName},
                              })
                    .toJson();
    return head;
}

void writeHead(const QString& vault, const VaultHead& head)
{
    Replacement file(vault + HeadFile);
    file.write(head.json.constData(), head.json.size());
    file.prepare();
    file.commit();
}

VaultHead readHead(const QString& vault)
{
    const QString path = vault + HeadFile;
    QFile file(path);
    if (openToRead(file, path + QStringLiteral(": ")).st_size > LargestHead)
        throw InvalidData(QStringLiteral("%1 is damaged: it is too large").arg(path));
    VaultHead head;
    head.json = file.readAll();
    if (file.error() != QFile::NoError)
        throw InvalidData(QStringLiteral("%1: %2").arg(path, file.errorString()));

    const StrictObject object(head.json, path);
    head.format = int(object.number("format", 1, std::numeric_limits<int>::max()));
    if (head.format > NewestFormat)
        throw InvalidData(QStringLiteral("%1: its format is newer than this program").arg(vault));
    head.algorithm = Key::algorithmFromName(object.text("algorithm"), int(object.number("keyLength", 1, 1024)));
    object.require(head.algorithm != Orv::Core::Encryption::None, "algorithm");
    const int saltSize = head.format == 1 ? FirstFormatSaltSize : SaltSize;
    head.salt = object.bytes("salt", saltSize, saltSize);
    head.iterations = int(object.number("iterations", 1, MostIterations));
    if (head.format == 1) {
        const int ivLength = Key::ivLength(head.algorithm);
        head.manifestName = manifestNames().constFirst();
        head.manifestIv = object.bytes("manifestIv", ivLength, ivLength);
    } else {
        head.macSalt = object.bytes("macSalt", SaltSize, SaltSize);
        object.require(head.macSalt != head.salt, "macSalt");
        head.manifestName = object.text("manifest");
        object.require(manifestNames().contains(head.manifestName), "manifest");
    }
    return head;
}

void requireManifest(const QString& vault, const VaultHead& head)
{
    if (typeOf(manifestPath(vault, head)) == std::filesystem::file_type::not_found)
        throw InvalidData(QStringLiteral("%1 is incomplete: it has no manifest, because sealing was not finished; "
                                         "\"orvseal seal\" with the same directory finishes it")
                              .arg(vault));
    if (typeOf(vault + DataDirectory) != std::filesystem::file_type::directory)
        throw InvalidData(QStringLiteral("%1 is damaged: \"data\" in it is not a directory").arg(vault));
}

VaultKeys makeKeys(const VaultHead& head, const QByteArray& password)
{
    const auto derive = [&](Orv::Core::Encryption::Algorithm algorithm, const QByteArray& salt) {
        return Key::generateAdvanced(algorithm, password, salt, head.iterations);
    };
    std::future<QByteArray> macKey; // derived on a thread of its own, if one can be started
    if (head.format > 1)
        macKey = std::async([&] { return derive(Orv::Core::Encryption::Aes128, head.macSalt); }); // 16 bytes
    Cipher cipher(head.algorithm, derive(head.algorithm, head.salt));
    return {std::move(cipher), macKey.valid() ? macKey.get() : QByteArray()};
}

} // namespace orvseal

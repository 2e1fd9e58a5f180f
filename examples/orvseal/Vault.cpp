#include "Vault.h"

#include "Files.h"
#include "Work.h"

#include <Orv/Core/Encryption/Key.h>

#include <QJsonDocument>
#include <QRegularExpression>

#include <cmath>
#include <future>
#include <limits>

using namespace Orv::Core::Encryption;
using Orv::Exception::InvalidData;

namespace orvseal {

namespace {

constexpr int NewestFormat = 2;
// The lengths differ, so that no head of format 1, which nothing authenticates, leads to a key of format 2.
constexpr int SaltSize = 16;              // bytes
constexpr int FirstFormatSaltSize = 8;    // bytes
constexpr qint64 LargestHead = 64 * 1024; // bytes; heads may come from untrusted sources

} // namespace

StrictObject::StrictObject(const QByteArray& json, const QString& source) : m_source(source)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        fail<InvalidData>("%1 is damaged", m_source);
    m_object = document.object();
}

void StrictObject::require(bool condition, const char* name) const
{
    if (!condition)
        fail<InvalidData>("%1 is damaged: \"%2\" is invalid", m_source, QString(name));
}

QString StrictObject::text(const char* name) const
{
    const QJsonValue value = m_object[QLatin1String(name)];
    require(value.isString() && !value.toString().contains(QChar(0)), name);
    return value.toString();
}

qint64 StrictObject::number(const char* name, qint64 smallest, qint64 largest) const
{
    const double value = m_object[QLatin1String(name)].toDouble(std::nan(""));
    require(value >= double(smallest) && value <= double(largest) && value == std::floor(value), name);
    return qint64(value);
}

QByteArray StrictObject::bytes(const char* name, int size) const
{
    const QByteArray hex = text(name).toLatin1();
    const QByteArray value = QByteArray::fromHex(hex);
    require(value.toHex() == hex && value.size() == size, name);
    return value;
}

bool isVaultName(const QString& name)
{
    static const QRegularExpression form("\\A((vault\\.json|manifest|manifest-2)(\\.new)?|data|lock(\\.rmlock)?)\\z");
    return form.match(name).hasMatch();
}

bool isSealedName(const QString& name)
{
    static const QRegularExpression form("\\A([0-9a-f]{16}|[0-9a-f]{32}|[0-9]{8,}\\.sealed)\\z");
    return form.match(name).hasMatch();
}

VaultHead makeHead(Algorithm algorithm, int iterations, const QString& manifestName)
{
    VaultHead head;
    head.format = NewestFormat;
    head.algorithm = algorithm;
    head.salt = Key::random(SaltSize);
    head.macSalt = Key::random(SaltSize);
    head.iterations = iterations;
    head.manifestName = manifestName;
    const QJsonObject object = {
        {"format", head.format},
        {"algorithm", Key::name(algorithm)},
        {"keyLength", Key::length(algorithm)},
        {"salt", QString(head.salt.toHex())},
        {"macSalt", QString(head.macSalt.toHex())},
        {"iterations", iterations},
        {"manifest", manifestName},
    };
    head.json = QJsonDocument(object).toJson();
    return head;
}

void writeHead(const QString& vault, const VaultHead& head)
{
    NewFile file(temporaryName(vault + HeadFile));
    file.write(head.json.constData(), head.json.size());
    file.close();
    flushDirectory(vault);
    file.replace(vault + HeadFile);
}

VaultHead readHead(const QString& vault)
{
    const QString path = vault + HeadFile;
    QFile file(path);
    if (openToRead(file, path + ": ").st_size > LargestHead)
        fail<InvalidData>("%1 is damaged: it is too large", path);
    VaultHead head;
    head.json = file.readAll();
    if (file.error() != QFile::NoError)
        fail<InvalidData>("%1: %2", path, file.errorString());

    const StrictObject object(head.json, path);
    head.format = int(object.number("format", 1, std::numeric_limits<int>::max()));
    if (head.format > NewestFormat)
        fail<InvalidData>("%1: its format is newer than this program", vault);
    head.algorithm = Key::algorithmFromName(object.text("algorithm"), int(object.number("keyLength", 1, 1024)));
    object.require(head.algorithm != None, "algorithm");
    head.salt = object.bytes("salt", head.format == 1 ? FirstFormatSaltSize : SaltSize);
    head.iterations = int(object.number("iterations", 1, MostIterations));
    if (head.format == 1) {
        head.manifestName = ManifestNames.first();
        head.manifestIv = object.bytes("manifestIv", Key::ivLength(head.algorithm));
    } else {
        head.macSalt = object.bytes("macSalt", SaltSize);
        object.require(head.macSalt != head.salt, "macSalt");
        head.manifestName = object.text("manifest");
        object.require(ManifestNames.contains(head.manifestName), "manifest");
    }
    return head;
}

void requireManifest(const QString& vault, const VaultHead& head)
{
    if (!exists(head.manifestPath(vault)))
        fail<InvalidData>(
            "%1 is incomplete: it has no manifest, because sealing was not finished; \"orvseal seal\" with "
            "the same directory finishes it",
            vault);
    if (typeOf(vault + DataDirectory) != std::filesystem::file_type::directory)
        fail<InvalidData>("%1 is damaged: \"data\" in it is not a directory", vault);
}

VaultKeys makeKeys(const VaultHead& head, const QByteArray& password)
{
    const auto derive = [&](Algorithm algorithm, const QByteArray& salt) {
        return Key::generateAdvanced(algorithm, password, salt, head.iterations);
    };
    std::future<QByteArray> macKey; // derived on a thread of its own, if one can be started
    if (head.format > 1)
        macKey = std::async([&] { return derive(Aes128, head.macSalt); }); // 16 bytes
    const QByteArray key = derive(head.algorithm, head.salt);
    return {head.algorithm, key, macKey.valid() ? macKey.get() : QByteArray()};
}

QByteArray VaultKeys::randomIv() const
{
    return Key::random(Key::ivLength(algorithm));
}

qint64 VaultKeys::sealedSize(qint64 plainSize) const
{
    const qint64 blockSize = Key::ivLength(algorithm);
    return (plainSize / blockSize + 1) * blockSize;
}

std::unique_ptr<EncryptorBase> VaultKeys::makeEncryptor(
    Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source) const
{
    std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(algorithm, direction == Encrypt, Cbc));
    encryptor->setKey(key);
    encryptor->setIv(iv);
    encryptor->setSource(source);
    encryptor->init();
    return encryptor;
}

void VaultKeys::run(
    Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source, const Sink& sink) const
{
    const std::unique_ptr<EncryptorBase> encryptor = makeEncryptor(direction, iv, source);
    constexpr int ChunkSize = 256 * 1024; // bytes; one for each job
    QByteArray chunk(ChunkSize, Qt::Uninitialized);
    while (!encryptor->atEnd()) {
        stopIfInterrupted();
        const qint64 size = encryptor->readData(chunk.data(), chunk.size());
        requireRead(*encryptor, *source, size);
        sink(chunk.constData(), size);
    }
}

void requireRead(const EncryptorBase& encryptor, const QIODevice& source, qint64 size)
{
    if (encryptor.sourceFailed())
        throw Orv::Exception::Base(source.errorString());
    // A file returns as much as is requested until its end, so an empty read before the end is no pause.
    if (size == 0 && !encryptor.atEnd())
        fail("it became shorter while it was read");
}

} // namespace orvseal

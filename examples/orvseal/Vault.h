#pragma once

#include <Orv/Core/Encryption/EncryptorBase.h>

#include <QIODevice>
#include <QJsonObject>
#include <QSharedPointer>
#include <QStringList>

#include <functional>
#include <memory>

/// A vault's directory, its head and its keys.
///
/// docs/orvseal.md describes every byte. The manifest is written last: without it, a vault is incomplete. Everything
/// that is read from a vault is checked before it is used: a vault may come from anywhere.
namespace orvseal {

constexpr int MostIterations = 2000000; ///< takes about half a second; vaults that want more are refused

struct VaultHead {
    int format = 0;
    Orv::Core::Encryption::Algorithm algorithm = Orv::Core::Encryption::None;
    QByteArray salt;
    QByteArray macSalt; ///< format 2
    int iterations = 0;
    QString manifestName;
    QByteArray manifestIv; ///< format 1
    QByteArray json;       ///< the head as it is stored

    QString manifestPath(const QString& vault) const { return vault + '/' + manifestName; }
};

/// The keys of a vault, and encryption with them, in which each stream has an IV of its own. Thread-safe.
struct VaultKeys {
    using Sink = std::function<void(const char* data, qint64 size)>;
    enum Direction { Decrypt, Encrypt };

    Orv::Core::Encryption::Algorithm algorithm;
    QByteArray key;
    QByteArray macKey; ///< format 2

    QByteArray randomIv() const;
    /// The encrypted size of `plainSize` bytes: the padding fills the last block, or is a whole one.
    qint64 sealedSize(qint64 plainSize) const;
    /// An encryptor of `source` that is ready to be read.
    std::unique_ptr<Orv::Core::Encryption::EncryptorBase> makeEncryptor(
        Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source) const;
    /// Encrypts or decrypts all of `source` and passes the result to `sink` in chunks. Throws what the library and the
    /// sink throw, and if the source fails or a signal has been received.
    void run(
        Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source, const Sink& sink) const;
};

/// Checks the last read of `encryptor`, which returned `size` bytes. Throws if its source, a file, failed or became
/// shorter.
void requireRead(const Orv::Core::Encryption::EncryptorBase& encryptor, const QIODevice& source, qint64 size);

// The fixed names in a vault's directory, to be appended to its path
constexpr char HeadFile[] = "/vault.json";
constexpr char DataDirectory[] = "/data";
constexpr char LockFile[] = "/lock";
/// An update of format 1 writes the second one beside the first, until the new head is in place.
inline const QStringList ManifestNames = {"manifest", "manifest-2"};

/// Reads the members of a JSON object. Throws `Orv::Exception::InvalidData` if one is missing or invalid.
class StrictObject {
public:
    /// `source` names the origin of `json` in messages.
    StrictObject(const QByteArray& json, const QString& source);

    void require(bool condition, const char* name) const;
    QString text(const char* name) const;
    qint64 number(const char* name, qint64 smallest, qint64 largest) const;
    /// Bytes that are stored in hex.
    QByteArray bytes(const char* name, int size) const;

private:
    const QString m_source;
    QJsonObject m_object;
};

/// Whether orvseal creates files of that name in a vault, or in its data directory.
bool isVaultName(const QString& name);
bool isSealedName(const QString& name);

/// A head of the newest format, with random salts. It is not stored yet.
VaultHead makeHead(Orv::Core::Encryption::Algorithm algorithm, int iterations, const QString& manifestName);
/// Puts the head in place atomically.
void writeHead(const QString& vault, const VaultHead& head);
/// Throws `Orv::Exception::InvalidData` if the head is damaged or its values are outside the accepted limits.
VaultHead readHead(const QString& vault);
/// Throws if the vault is incomplete. Call this before the password is read.
void requireManifest(const QString& vault, const VaultHead& head);

/// Derives the keys, which is slow on purpose.
VaultKeys makeKeys(const VaultHead& head, const QByteArray& password);

} // namespace orvseal

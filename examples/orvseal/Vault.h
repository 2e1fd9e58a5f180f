#pragma once

#include "Cipher.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

/// A vault's directory, its head and its keys.
///
/// A vault is a directory that contains
/// - "vault.json", the head: what is needed to derive the keys from the password, in plain text;
/// - "manifest": the encrypted list of entries, see Manifest.h. It is written last: without it, a vault is incomplete;
/// - "data": a directory with one sealed file for each source file, named by its IV;
/// - "lock", while a run writes to the vault.
///
/// docs/orvseal.md describes every byte. Everything that is read from a vault is checked before it is used: a vault may
/// come from anywhere.
namespace orvseal {

constexpr int MostIterations = 2000000; ///< takes a second or two; vaults that want more are refused

struct VaultHead {
    int format = 0;
    Orv::Core::Encryption::Algorithm algorithm = Orv::Core::Encryption::None;
    QByteArray salt;
    QByteArray macSalt; ///< format 2
    int iterations = 0;
    QString manifestName;
    QByteArray manifestIv; ///< format 1
    QByteArray json;       ///< the head as it is stored
};

struct VaultKeys {
    Cipher cipher;
    QByteArray macKey; ///< format 2
};

// The fixed names in a vault's directory, to be appended to its path
constexpr char HeadFile[] = "/vault.json";
constexpr char DataDirectory[] = "/data";
constexpr char LockFile[] = "/lock";

QString hexOf(const QByteArray& bytes);

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

QString manifestPath(const QString& vault, const VaultHead& head);
/// The names that a manifest can have. An update of format 1 writes the second one beside the first, until the new head
/// is in place.
const QStringList& manifestNames();
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

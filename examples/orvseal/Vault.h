#pragma once

#include "Cipher.h"

#include <QByteArray>
#include <QString>

#include <deque>

/// The vault's format.
///
/// A vault is a folder of
/// - "vault.json", the head: what has to be known to make the keys from the password, in the clear;
/// - "manifest": what is in the vault, sealed. It is written last, so a vault without it is not whole;
/// - "data": a folder with one sealed file a source file, named by its IV;
/// - "lock", as long as a run writes to it.
///
/// The manifest is the HMAC-SHA-256 of all that follows, an IV, and lines of JSON, one an entry, encrypted. The HMAC
/// covers the SHA-256 of the head, and then the rest of the manifest. It tells a wrong password and damage from a vault
/// that can be believed, before anything is decrypted. docs/orvseal.md has every byte.
///
/// Format 1, which is only read, has the manifest's IV in its head, no HMAC, a first line in the manifest with the
/// SHA-256 of the others, times in milliseconds, and the names of sealed files in the manifest.
///
/// Whatever is read from a vault is checked before it is used: a vault may come from anywhere.
namespace orvseal {

constexpr int MostIterations = 2000000; ///< a second or two; more is refused, whatever the head asks for

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
    QByteArray macKey;
};

/// One thing in a vault. Its path is relative to the sealed folder, with "/" between the names. That folder itself has
/// an empty path; format 1 does not have it.
struct Entry {
    enum Type { File, Folder, Link, HardLink };
    static constexpr qint64 Nobody = -1;

    Type type = File;
    int permissions = 0; ///< as in `FileState`; those of a link have no effect
    QString path;
    qint64 modified = 0;   ///< ns since 1970, UTC
    qint64 owner = Nobody; ///< the numbers of user and group; `Nobody` in format 1
    qint64 group = Nobody;
    QString target; ///< of a link, as it is stored in it; of a hard link, the path of the file

    // Files alone
    qint64 size = 0;
    QByteArray iv;
    QByteArray treeHash; ///< of the plain text: the cipher alone does not notice every damage
    QString formerName;  ///< the name of the sealed file in format 1

    QString nameInVault() const;
    /// Whether all that is kept of it but its path and its content is the same.
    bool hasSameAttributes(const Entry& other) const;
};

/// In the order of their paths; pointers to them stay valid while it grows.
using Entries = std::deque<Entry>;

QString headPath(const QString& vault);
QString manifestPath(const QString& vault, const VaultHead& head);
QString dataFolder(const QString& vault);
QString lockPath(const QString& vault);
QString sealedPath(const QString& vault, const Entry& entry);
/// Whether `name` is one that sealed files have.
bool isSealedName(const QString& name);

/// A head of the newest format, with random salts. It is not stored yet.
VaultHead makeHead(Orv::Core::Encryption::Algorithm algorithm, int iterations, const QString& manifestName);
/// Puts the head in place, whole or not at all.
void writeHead(const QString& vault, const VaultHead& head);
/// Throws `Orv::Exception::InvalidData` if the head is damaged, or asks for what no vault of ours would.
VaultHead readHead(const QString& vault);

/// The keys of a vault with this head. Deriving them takes a while, on purpose.
VaultKeys makeKeys(const VaultHead& head, const QByteArray& password);

/// Brings all that is in the vault to the disk, and then puts the manifest in place, whole or not at all.
void writeManifest(const QString& vault, const VaultHead& head, const VaultKeys& keys, const Entries& entries);
/// Throws if there is no manifest. To be asked before the password is.
void requireManifest(const QString& vault, const VaultHead& head);
/// Throws `Orv::Exception::InvalidData` if it is damaged or the password wrong, or if an entry could lead out of the
/// folder it is opened in.
Entries readManifest(const QString& vault, const VaultHead& head, const VaultKeys& keys);

/// Where every hard link leads to a file of `entries`: one that leads to a file only of `all` becomes that file, and
/// others to the same file lead there then. Those that lead nowhere are left as they are.
void completeHardLinks(Entries& entries, const Entries& all);
/// The entry of that path; null if there is none.
const Entry* find(const Entries& entries, const QString& path);

} // namespace orvseal

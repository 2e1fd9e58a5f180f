#pragma once

#include "Cipher.h"

#include <QByteArray>
#include <QString>

#include <vector>

/// The vault's format.
///
/// A vault is a folder of
/// - "vault.json": what has to be known to make the key and to read the manifest, in the clear;
/// - "manifest": what is in the vault, sealed. It is written last, so a vault without it is not whole;
/// - "data": a folder with one sealed file a source file.
///
/// The manifest is, before it is sealed, a first line that names the format and carries the SHA-256 of the rest, and
/// then a line of JSON an entry. That hash tells a wrong password and damage from a manifest that can be believed.
/// Whatever is read from a vault is checked before it is used: a vault may come from anywhere.
namespace orvseal {

struct VaultHead {
    Orv::Core::Encryption::Algorithm algorithm = Orv::Core::Encryption::None;
    QByteArray salt;
    int iterations = 0;
    QByteArray manifestIv;
};

/// One thing in a vault. Its path is relative to the sealed folder, with "/" between the names.
struct Entry {
    enum Type { File, Folder, Link };

    Type type = File;
    QString path;
    int permissions = 0; ///< as in `FileState`; those of a link have no effect
    qint64 modified = 0; ///< ms since 1970, UTC
    QString target;      ///< of a link, as it is stored in it

    // Files alone
    qint64 size = 0;
    QByteArray iv;
    QByteArray treeHash; ///< of the plain text: the cipher alone does not notice every damage
    QString sealedName;
};

QString headPath(const QString& vault);
QString manifestPath(const QString& vault);
QString dataFolder(const QString& vault);
QString sealedPath(const QString& vault, const Entry& entry);

void writeHead(const QString& vault, const VaultHead& head);
/// Throws `Orv::Exception::InvalidData` if the head is damaged, or asks for what no vault of ours would.
VaultHead readHead(const QString& vault);

/// The cipher of a vault with this head. Deriving the key takes a while, on purpose.
Cipher makeCipher(const VaultHead& head, const QByteArray& password);

/// Puts the manifest in place, whole or not at all. Parents have to come before what is in them.
void writeManifest(
    const QString& vault, const VaultHead& head, const Cipher& cipher, const std::vector<Entry>& entries);
/// Throws if there is no manifest. To be asked before the password is.
void requireManifest(const QString& vault);
/// Throws `Orv::Exception::InvalidData` if it is damaged or the password wrong, or if an entry could lead out of the
/// folder it is opened in.
std::vector<Entry> readManifest(const QString& vault, const VaultHead& head, const Cipher& cipher);

} // namespace orvseal

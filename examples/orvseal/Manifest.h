#pragma once

#include "Files.h"
#include "Vault.h"

#include <algorithm>
#include <array>
#include <deque>

/// The manifest: the list of what a vault contains.
///
/// It is authenticated before anything is decrypted. Format 1, which is read but no longer written, has the manifest's
/// IV in its head, the SHA-256 of the lines in an extra first line instead of the HMAC, times in milliseconds, and
/// names of sealed files that are not their IVs.
namespace orvseal {

/// Up to 16 bytes, stored in place. A QByteArray takes four times the memory, and there are two for each file.
class ShortBytes {
public:
    ShortBytes() = default;
    /// Copies at most the first 16 bytes.
    ShortBytes(const QByteArray& bytes) : m_size(quint8(std::min(int(bytes.size()), MostSize)))
    {
        std::copy_n(bytes.begin(), m_size, m_bytes.begin());
    }
    operator QByteArray() const { return QByteArray(m_bytes.data(), m_size); }
    QString hex() const { return QByteArray(*this).toHex(); }

    bool isEmpty() const { return m_size == 0; }
    bool operator==(const ShortBytes& other) const { return m_size == other.m_size && m_bytes == other.m_bytes; }
    bool operator<(const ShortBytes& other) const { return m_bytes < other.m_bytes; }

private:
    static constexpr int MostSize = 16;
    quint8 m_size = 0;
    std::array<char, MostSize> m_bytes = {}; // zeros behind the end, so that comparisons are of whole arrays
};

/// Something in a vault. Its path is relative to the sealed directory, with "/" as the separator. That directory itself
/// has an empty path; format 1 does not have it.
struct Entry {
    enum Type : qint8 { File, Directory, Link, HardLink };
    static constexpr qint64 Nobody = -1;

    Type type = File;
    ShortBytes iv;       ///< of a file
    ShortBytes treeHash; ///< of a file's plain text: the cipher alone does not detect all damage
    int permissions = 0; ///< nine bits, and the sticky bit of a directory; those of a link have no effect
    QString path;
    QString target;        ///< of a link, as it is stored in it; of a hard link, the path of the file
    QString format1Name;   ///< of a file in format 1, the name of its sealed file
    qint64 size = 0;       ///< of a file, in bytes
    qint64 modified = 0;   ///< ns since 1970, UTC
    qint64 owner = Nobody; ///< the numbers of user and group; `Nobody` in format 1
    qint64 group = Nobody;

    /// Takes permissions, modification time, owner and group from the state of the source.
    void setAttributes(const FileState& state);
    bool isUnsealed() const { return type == File && treeHash.isEmpty(); }
    /// The name of its sealed file.
    QString nameInVault() const { return format1Name.isNull() ? iv.hex() : format1Name; }
    QString sealedPath(const QString& vault) const { return vault + DataDirectory + '/' + nameInVault(); }
    /// Whether it has the same contents and attributes as `other`; the paths may differ.
    bool isSame(const Entry& other) const;
};

/// In the order of their paths; pointers to them stay valid while it grows.
using Entries = std::deque<Entry>;

struct ByPath {
    bool operator()(const Entry& a, const Entry& b) const { return a.path < b.path; }
    bool operator()(const Entry& a, const QString& path) const { return a.path < path; }
};

/// The entry of that path; null if there is none.
const Entry* find(const Entries& entries, const QString& path);
/// The file of that path; null if there is none, or something else.
const Entry* findFile(const Entries& entries, const QString& path);
/// Completes a part of `all`, valid entries, that lacks files to which it has hard links, and which are not in `others`
/// either: the first link to such a file becomes that file, and the rest link to it.
void completeHardLinks(Entries& part, const Entries& all, const Entries& others);

/// The names in the vault's data directory that belong to none of the entries.
QStringList surplusNames(const QString& vault, const Entries& entries);

/// Writes a manifest to `file` and closes it. Throws `Orv::Exception::InvalidData` if `readManifest` would refuse the
/// entries.
void writeManifest(NewFile& file, const VaultHead& head, const VaultKeys& keys, const Entries& entries);
/// Throws `Orv::Exception::InvalidData` if the manifest is damaged, the password is wrong, or an entry could be
/// restored outside the target directory. To save memory, paths that are also in `known` share its strings.
Entries readManifest(const QString& vault, const VaultHead& head, const VaultKeys& keys, const Entries& known = {});

} // namespace orvseal

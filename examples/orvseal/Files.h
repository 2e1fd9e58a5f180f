#pragma once

#include <QFile>
#include <QString>

#include <filesystem>

/// Files and folders, as both sealing and opening need them.
namespace orvseal {

/// The system's own form of a path, for what Qt does not offer: permissions and links as they are, and names as they
/// are (Qt takes accents apart on macOS; the system then finds the same file, but a new one has another name).
std::filesystem::path nativePath(const QString& path);

/// Throws if `path` is, or would be, in `source`, from which it will be filled.
void requireOutside(const QString& path, const QString& source);
/// Makes `path` a folder to be filled: a new one, or an empty one that is there. Throws, with nothing touched, if there
/// is anything in it, or if it lies in `source`.
void prepareEmptyFolder(const QString& path, const QString& source);

/// Makes a folder that only its owner may enter. Throws if it cannot, or if there is something of that name.
void makeFolder(const QString& path);
/// Throws `CannotGoOn` unless all that was written in this folder's file system is on the disk now.
void flushFolder(const QString& path);

/// What the system says of an entry. A link is not followed.
struct FileState {
    enum Type { File, Folder, Link, Other };

    Type type = Other;
    int permissions = 0;      ///< the nine bits of read, write and execute; of a folder also the sticky bit
    bool lendsRights = false; ///< it is a file with a set-user-ID or set-group-ID bit
    qint64 size = 0;          ///< bytes
    qint64 modified = 0;      ///< ns since 1970, UTC
    qint64 owner = 0;
    qint64 group = 0;
    quint64 device = 0; ///< this and the next are the same for the names of one file
    quint64 inode = 0;
    quint64 names = 1; ///< how many the file has

    bool isSameContent(const FileState& other) const { return size == other.size && modified == other.modified; }
};

/// Throws if it cannot be found out.
FileState stateOf(const QString& path);
/// The same of an open file, whatever has its name by now.
FileState stateOf(const QFile& file);

/// Opens a file for reading, without a buffer, and says what it is like then. Throws if it cannot, with the reason
/// behind `prefix`. What is no regular file is refused: a link is not followed, and a pipe not waited for.
FileState openToRead(QFile& file, const QString& prefix);

/// Throws if it cannot.
void setPermissions(const QString& path, int permissions);
/// The modification time in ns since 1970, UTC; also of a link itself. Throws if it cannot.
void setModified(const QString& path, qint64 modified);
/// Gives an entry, also a link itself, to an owner and a group. Returns whether they are these now.
bool setOwner(const QString& path, qint64 owner, qint64 group);

/// A file that did not exist before, and is gone again unless it is kept. What it throws is `CannotGoOn`: its place and
/// its name are ours, so the next file would fare no better.
class NewFile {
public:
    /// Throws if there is something of that name already.
    explicit NewFile(const QString& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void write(const char* data, qint64 size);
    /// The same, but blocks of zeros become holes, which take no room.
    void writeSparse(const char* data, qint64 size);
    /// Overwrites the beginning.
    void rewrite(const QByteArray& beginning);
    /// Nothing more will be written: only now is it sure that all was.
    void close();
    void keep() { m_kept = true; }
    /// Keeps the closed file under another name. Throws an ordinary exception if it cannot, or if there is something
    /// of that name. Not to be called at the same time for names that may be the same.
    void keepAs(const QString& path);
    /// Puts the closed file in the place of another one, in one step.
    void replace(const QString& path);

private:
    [[noreturn]] void fail() const;
    [[noreturn]] void fail(const QString& reason) const;

    QFile m_file;
    qint64 m_size = 0;
    bool m_kept = false;
};

} // namespace orvseal

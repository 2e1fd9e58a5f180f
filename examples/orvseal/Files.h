#pragma once

#include <QFile>
#include <QString>

#include <filesystem>
#include <sys/stat.h>
#include <system_error>

/// Files and directories, as both sealing and opening need them.
namespace orvseal {

/// The system's own form of a path, for what Qt does not offer: permissions and links as they are, and names as they
/// are (on macOS, Qt decomposes accents, which would rename a new file).
std::filesystem::path nativePath(const QString& path);
/// Does not follow a link; `not_found` also if the parent is missing. Throws if the type cannot be read: what may exist
/// must not count as missing.
std::filesystem::file_type typeOf(const QString& path);
/// Whether something is there, a dangling link included. Throws like `typeOf`.
bool exists(const QString& path);
/// Throws the reason if `error` is one.
void throwIf(const std::error_code& error);

/// Throws if `path` is, or would be, in `directory`, which would then be read and written at the same time.
void requireOutside(const QString& path, const QString& directory);
/// Creates a directory that only its owner may enter. Throws if that fails, or if something of that name exists.
void makeDirectory(const QString& path);
/// Flushes everything that was written to this directory's file system to the disk. Throws `FatalError` on failure.
void flushDirectory(const QString& path);

using FileState = struct stat;
/// The state of an entry; a link is not followed. Throws on failure.
FileState stateOf(const QString& path);
/// The state of an open file, even if another one has its name now.
FileState stateOf(const QFile& file);

/// Opens a regular file for reading, unbuffered, and returns its state. Throws on failure, with `prefix` in front of
/// the reason; `FatalError` if too many files are open. Does not follow a link, and does not wait for a pipe.
FileState openToRead(QFile& file, const QString& prefix);

/// The name of a new version of the file `path`. Removes a file of that name: a run that was killed may have left one.
QString temporaryName(const QString& path);

/// A new file, which its destructor removes unless it was kept. Throws `FatalError` on failure: its place and its name
/// are ours, so the next file would fail as well.
class NewFile {
public:
    /// Throws if something of that name exists.
    explicit NewFile(const QString& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void write(const char* data, qint64 size);
    /// The same, but blocks of zeros become holes, which take no space.
    void writeSparse(const char* data, qint64 size);
    /// Overwrites the beginning.
    void rewrite(const QByteArray& beginning);
    /// Ends the writing: only after this is it certain that everything was written.
    void close();
    void keep() { m_kept = true; }
    /// Keeps the closed file under another name. Throws, but no `FatalError`, on failure, or if something of that name
    /// exists. Not thread-safe for names that may be the same.
    void keepAs(const QString& path);
    /// Replaces the file `path` by the closed file, atomically. If this throws, either of them may be in place.
    void replace(const QString& path);

private:
    [[noreturn]] void refuse(const QString& reason) const;

    QFile m_file;
    qint64 m_size = 0;
    bool m_kept = false;
};

// Platform-specific functions, defined in Files_linux.cpp and Files_mac.cpp

/// The modification time in ns since 1970, UTC, limited to what 64 bits hold: years 1677 to 2262.
qint64 modifiedTime(const FileState& state);
/// From seconds and nanoseconds, with the same limits.
qint64 nanosecondsOf(const timespec& time);

///@{
/// Together these flush written files and their names to the disk: call `flushFile` for each file before it is closed,
/// then `flushVolume` once for a directory of the same file system. Where the system can flush a whole file system,
/// `flushFile` does nothing. False on failure, with the reason in `errno`.
bool flushFile(int descriptor);
bool flushVolume(int directoryDescriptor);
///@}

/// Attributes of an entry that a vault does not keep.
struct Extras {
    bool attributes = false; ///< extended attributes
    bool accessList = false; ///< an access control list
};
/// Both are false if the file system does not support them. Does not follow a link.
Extras extrasOf(const char* path);

} // namespace orvseal

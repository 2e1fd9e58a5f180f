#pragma once

#include <atomic>
#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>

/// One log file: opens it, appends entries to it, rotates it and recovers from errors. Not thread-safe.
///
/// - Each entry is one `write()` to a descriptor in append mode that child processes do not inherit.
/// - A missing directory is created. After a failure the entry is dropped, and the next one opens the file anew.
/// - An entry begins a line, also after one that a full disk or the end of an earlier process cut short.
/// - A full file is rotated by `logsRollout()`, right after the entry that filled it. As long as the new name is taken
///   (two rotations within a second) or the directory refuses, the file keeps growing and each entry tries again.
/// - A file that was deleted or replaced under its name is left alone when it is full, and a new one begun.
class LogFile {
public:
    /// `path` is in UTF-8. `maxSize` is the size in bytes from which on the file is full; 0: never.
    LogFile(std::string path, std::size_t maxSize);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Appends an entry, which ends with a newline.
    void append(std::string_view entry);
    /// The same for signal handlers: creates no directory and does not rotate. Returns whether all of it was written.
    bool appendOnly(std::string_view entry);

private:
    bool isFull() const { return m_limit > 0 && m_size >= m_limit; }
    bool open();
    bool openInDirectory();
    void close();
    void rotate();
    bool isInPlace() const;
    bool write(std::string_view text);

    const std::string m_path;
    const std::size_t m_maxSize;
    std::size_t m_limit = 0; // m_maxSize for a regular file, 0 for a device
    std::atomic<int> m_descriptor{-1};
    std::size_t m_size = 0;
    bool m_mayRaiseSignals = false; // a write that fails
    bool m_endsInALine = false;     // the file's last byte is no newline
    std::time_t m_takenSecond = 0;  // when the name for the full file was found taken
};

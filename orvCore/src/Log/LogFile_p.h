#pragma once

#include <atomic>
#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>

/// One log file: opens it, appends entries to it, rotates it and recovers from errors. Not thread-safe.
///
/// - Each entry is one `write()` to a descriptor in append mode with close-on-exec.
/// - A missing directory is created. After a failure, the entry is dropped, and the next one reopens the file.
/// - An entry starts on a new line, even if the previous one was truncated by a full disk or the end of its process.
/// - A full file is rotated by `logsRollout()`, right after the entry that filled it. While the new name is taken (two
///   rotations within a second) or the rename fails, the file keeps growing and each entry retries.
/// - If the file was deleted or replaced, it is not renamed when full; a new file is opened at the path.
class LogFile {
public:
    /// `path` is in UTF-8. The file is full at `maxSize` bytes or more; 0 means never.
    LogFile(std::string path, std::size_t maxSize);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Appends an entry, which ends with a newline.
    void append(std::string_view entry);
    /// Same, for signal handlers: does not create directories or rotate. Returns whether the whole entry was written.
    bool appendOnly(std::string_view entry);

private:
    bool isFull() const { return m_limit > 0 && m_size >= m_limit; }
    bool open();
    bool openInDirectory();
    void close();
    void rotate();
    bool isAtPath() const;
    bool write(std::string_view text);

    const std::string m_path;
    const std::size_t m_maxSize;
    std::size_t m_limit = 0; // m_maxSize for a regular file, 0 for a device
    std::atomic<int> m_descriptor{-1};
    std::size_t m_size = 0;
    bool m_mayRaiseSignals = false; // by a failed write
    bool m_hasPartialLine = false;  // the last line is incomplete
    std::time_t m_takenSecond = 0;  // in this second, the new name of the full file was taken
};

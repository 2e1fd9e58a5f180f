#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv {

/// The logging configuration of the process. Set the options, then call `init()` once, early, on the start-up thread.
///
/// Before `init()`, messages go to Qt's default handler. Loading the library has no effect: it opens no file and
/// installs no handler. After `init()`, every Qt message of the process is written as one entry, "date time [LEVEL]:
/// message" with microseconds:
/// - to the file "log_" + prefix + ".log" in the log directory, if `setOutToFile(true)`. After the entry that takes it
///   to 2097152 bytes or more, the file is rotated: renamed with a timestamp (see `logsRollout`) and replaced by a new
///   one;
/// - to standard output, if `setOutToStream(true)`, in color if it was a terminal when `init()` was called;
/// - to the shadow log, if configured, which is never rotated and stays on when the log is disabled.
///
/// Errors of the log never end the process, and its files never block it (a fatal message ends it, as always):
/// - No entry is lost during rotation, even if many threads log. If the new name is taken (two rotations within a
///   second) or the rename fails, the file keeps growing, and each entry retries.
/// - A missing log directory is created. If that fails, or a file cannot be written, entries are dropped; every entry
///   retries, so logging resumes once the cause is gone.
/// - On a full disk, entries are dropped, and the last one may be truncated. The next entry starts on a new line.
/// - An entry is dropped if memory runs out or its output throws. Other threads are not affected.
/// - If a file is deleted while it is open, further entries are lost with it until it is full or `reconfigure()` is
///   called.
/// - If the log file is a FIFO that nobody reads, without a reader or full, entries are dropped. Writing to standard
///   output may block.
///
/// These errors are not reported. Log files are opened in append mode with close-on-exec. A forked child process logs
/// to the same files; `fork()` waits for the entry being written. Locks outside the log are not protected: a child may
/// deadlock in the C library's local-time functions or in Qt's environment functions if another thread was in them
/// during the `fork()`.
///
/// Static destructors may log as long as Qt is still available.
///
/// The setters are not thread-safe and only store values; `init()` and `reconfigure()` apply them. Logging is
/// thread-safe.
class ORV_EXPORT LogManager {
public:
    /// Selects the messages that are written.
    enum LogLevel : qint32 {
        Disabled = 0, ///< nothing, except to the shadow log
        Info = 1,     ///< all but debug and detailed information
        InfoHigh = 2, ///< all but debug
        Debug = 3,    ///< all
    };

    /// Returns the process-wide instance. It is never destroyed.
    static LogManager& instance();
    LogManager(const LogManager&) = delete;
    LogManager& operator=(const LogManager&) = delete;

    /// Sets the prefix in the log file's name. Default: "DOV_LOG".
    void setAppPrefix(const QString& prefix);
    /// Enables the log file. Default: false.
    void setOutToFile(bool enable);
    /// Enables output of the log to standard output. Default: false.
    void setOutToStream(bool enable);
    /// Enables the origin in each entry: see `logFormat`. Takes effect immediately. Default: false.
    void setVerbose(bool enable);
    /// Makes `init()` echo the bare message of each entry to standard output; cannot be undone after that. Default:
    /// false.
    void setRawOutput(bool enable);
    /// Makes `init()` install `crashHandler`; cannot be undone after that. Default: false.
    void setCrashHandler(bool enable);
    /// Enables debug messages. `setLogLevel` sets it too; the last call wins. Default: false.
    void setDebug(bool enable);
    /// Sets the directory of the log file. Used literally: placeholders such as "%1" are not expanded. Empty means the
    /// root of the file system.
    void setLogPath(const QString& path);
    /// Sets the level; also overrides `setDebug`. Default: `Info`.
    void setLogLevel(LogLevel level);
    /// Enables the shadow log, which also needs a path. Default: false.
    void setEnableShadow(bool enable);
    /// Sets the full path of the shadow log's file.
    void setShadowFilePath(const QString& path);

    /// Whether the options have been applied.
    bool isInit() const { return m_isInit; }
    ///@{
    /// Returns the stored option.
    bool isDebug() const { return m_debug; }
    bool isVerbose() const { return m_verbose; }
    bool enableShadow() const { return m_enableShadow; }
    QString shadowFilePath() const { return m_shadowFilePath; }
    ///@}

    /// Applies the options, unless they have been applied. Returns true.
    bool init();
    /// Applies the options again. Returns true.
    bool reconfigure();

private:
    LogManager();
    ~LogManager() = default;

    void applyFilterRules() const;
    void configureDefaultLogger() const;
    void configureShadowLogger() const;

    bool m_isInit = false;
    bool m_outToFile = false;
    bool m_outToStream = false;
    bool m_rawOutput = false;
    QString m_appPrefix;
    bool m_verbose = false;
    bool m_crashHandler = false;
    bool m_debug = false;
    bool m_highInfo = false;
    QString m_logPath;
    bool m_logEnabled = true;
    bool m_enableShadow = false;
    QString m_shadowFilePath;
};

} // namespace Orv

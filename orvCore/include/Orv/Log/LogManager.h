#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv {

/// The logging configuration of the process: set the options, then call `init()`, once, early, on the start-up thread.
///
/// Until then messages go to Qt's default handler, and loading the library alone changes nothing: it opens no file and
/// installs nothing. Afterwards every Qt message of the process is written, one entry each, as "date time [LEVEL]:
/// text" with microseconds,
/// - to the file "log_" + prefix + ".log" in the log directory, if `setOutToFile(true)`; the entry that takes it to
///   2097152 bytes is its last: it is rotated, that is renamed with the time (see `logsRollout`), and a new one begun;
/// - to standard output, if `setOutToStream(true)`; with colors if that is a terminal when `init()` is called;
/// - to the shadow log, if there is one, which is never rotated and stays on when the log is disabled.
///
/// Logging never ends or blocks the process (but for fatal messages), whatever happens to the file:
/// - No entry is lost at a rotation, however many threads log. While the new name is taken (a second rotation within a
///   second) or the directory refuses the renaming, the file keeps growing, and each entry tries again.
/// - A log directory that does not exist is created. If it cannot be, or a file cannot be written, entries for it are
///   dropped until it can be opened: every entry tries again, so the log resumes once the cause is gone.
/// - On a full disk entries are dropped, the last one perhaps cut short. The next entry that is written begins a line.
/// - An entry for which there is no memory, or whose output throws, is dropped. Other threads are not held up.
/// - Entries for a file that is deleted while it is open go with it, until it is full or `reconfigure()` is called.
/// - A pipe in the place of a file that nobody reads loses entries. Standard output is waited for, though.
///
/// Nothing reports such trouble: look at the file. Log files are opened for append and not inherited by programs that
/// are executed. A child process of `fork()` logs to the same files; `fork()` waits for the entry that is being
/// written. Locks outside the log are not waited for: a child may hang in the C library's local time or in Qt's
/// environment if another thread was using these at the moment of the `fork()`.
///
/// Messages may come as late as from static destructors, as long as Qt lives.
///
/// The setters are not thread-safe and only store; `init()` and `reconfigure()` apply. Logging from any thread is safe.
class ORV_EXPORT LogManager {
public:
    /// How much is written.
    enum LogLevel : qint32 {
        Disabled = 0, ///< the log is off; a shadow log stays on
        Info = 1,     ///< all but debug lines and information in high detail
        InfoHigh = 2, ///< all but debug lines
        Debug = 3,    ///< all
    };

    /// The one of the process. It is never destroyed.
    static LogManager& instance();
    LogManager(const LogManager&) = delete;
    LogManager& operator=(const LogManager&) = delete;

    /// The middle of the log file's name. Default: "DOV_LOG".
    void setAppPrefix(const QString& prefix);
    /// Whether the log is written to its file. Default: false.
    void setOutToFile(bool enable);
    /// Whether the log is written to standard output. Default: false.
    void setOutToStream(bool enable);
    /// Whether each entry names its origin, see `logFormat`. Takes effect at once. Default: false.
    void setVerbose(bool enable);
    /// Whether the bare text of each entry is echoed on standard output, by `init()`, for good. Default: false.
    void setRawOutput(bool enable);
    /// Whether `init()` installs `crashHandler`, for good. Default: false.
    void setCrashHandler(bool enable);
    /// Whether debug lines are written. `setLogLevel` sets it too: the last call wins. Default: false.
    void setDebug(bool enable);
    /// The directory of the log file, taken as it is ("%1" and the like have no meaning). Empty means the root of the
    /// file system.
    void setLogPath(const QString& path);
    /// What is written, debug lines included: see `setDebug`. Without a call it is as `Info`.
    void setLogLevel(LogLevel level);
    /// Whether there is a shadow log. It needs a path too. Default: false.
    void setEnableShadow(bool enable);
    /// The full path of the shadow log's file.
    void setShadowFilePath(const QString& path);

    /// Whether the options have been applied.
    bool isInit() const { return m_isInit; }
    ///@{
    /// What was set.
    bool isDebug() const { return m_debug; }
    bool isVerbose() const { return m_verbose; }
    bool enableShadow() const { return m_enableShadow; }
    QString shadowFilePath() const { return m_shadowFilePath; }
    ///@}

    /// Applies the options, unless that has been done. Returns true.
    bool init();
    /// Applies the options anew. Returns true.
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

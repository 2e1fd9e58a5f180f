#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv {

/// The logging set-up of the process: set the options, then call `init()`, once, early, on the start-up thread.
///
/// Until then messages go to Qt's default handler, and loading the library alone changes nothing. Afterwards every Qt
/// message of the process is written, one entry each, as "date time [LEVEL]: text" with microseconds,
/// - to the file "log_" + prefix + ".log" in the log folder, if `setOutToFile(true)`; at 2097152 bytes it is moved
///   aside under a name with the time (see `logsRollout`), and a new one begun;
/// - to standard output, if `setOutToStream(true)`;
/// - to the shadow log, if there is one, which is never moved aside and stays on when the log is disabled.
///
/// Logging never ends or blocks the process (but for fatal messages), whatever becomes of the file:
/// - A log folder that does not exist is made. If it cannot be, or a file cannot be written, entries for it are
///   dropped until it can be opened: every entry tries again, so the log goes on by itself once the cause is gone.
/// - On a full disk entries are dropped, the last one perhaps cut short, until there is room again.
/// - Several threads may write during a roll-over: their entries stay whole and go to the old file or the new one.
/// - Entries for a file that is deleted while it is open go with it, until the next roll-over or `reconfigure()`.
/// Nothing reports such trouble: look at the file. It has to be an ordinary file: a pipe without a reader blocks.
///
/// End your threads before `main` returns: a message that is logged while the process's statics go may find Qt gone.
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
    /// The folder of the log file. Empty means the root of the file system.
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
    char m_highInfoFlag = '0';
    QString m_logPath;
    bool m_logEnabled = true;
    bool m_enableShadow = false;
    QString m_shadowFilePath;
};

} // namespace Orv

#pragma once

#include <easylogging++.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

class LogFile;

/// The two logs. The back end filters and formats the entries; this module writes them. All functions but
/// `writeFromSignal` require the `LogLock`.
namespace Orv::LogBackend {

enum Log { DefaultLog, ShadowLog };

/// Configures a log. `file` may be null.
void configure(Log log, const el::Configurations& configurations, std::unique_ptr<LogFile> file, bool toStandardOutput);

/// Closes a log's file.
void closeFile(Log log);

/// From now on, echoes the bare message of every entry to standard output.
void setRawOutput();

/// Writes one entry; drops it on failure. Does not end the process after a fatal entry: the caller does.
void write(Log log, el::Level level, const std::string& text) noexcept;

/// Same, for signal handlers: neither allocates nor blocks. Without the lock, entries of other threads may be mixed in.
void writeFromSignal(std::initializer_list<Log> logs, std::string_view level, std::string_view text);

/// Writes to standard output. Drops the text on failure.
void writeToStandardOutput(std::string_view text);

} // namespace Orv::LogBackend

#pragma once

#include <easylogging++.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

class LogFile;

/// The two logs: loggers of the back end, which decides what is written and formats it, and where their entries go,
/// which is the library's own business. To be used with the `LogLock` held.
namespace Orv::LogBackend {

enum Log { DefaultLog, ShadowLog };

/// Configures a log. Without `file` it has none.
void configure(Log log, const el::Configurations& configurations, std::unique_ptr<LogFile> file, bool toStandardOutput);

/// Writes to the file of a log no more.
void closeFile(Log log);

/// Echoes the bare text of every entry on standard output from now on.
void setRawOutput();

/// Writes one entry. If that fails it is dropped. A fatal entry does not end the process: that is up to the caller.
void write(Log log, el::Level level, const std::string& text) noexcept;

/// The same for signal handlers: neither allocates nor waits. Best with the lock held; without, an entry of another
/// thread may come in between.
void writeFromSignal(std::initializer_list<Log> logs, std::string_view level, std::string_view text);

/// Writes to standard output. What it cannot take or throws is dropped.
void writeToStandardOutput(std::string_view text);

} // namespace Orv::LogBackend

#pragma once

#include <easylogging++.h>

#include <mutex>
#include <string>

/// The library's road to the logging back end.
namespace Orv::LogBackend {

inline constexpr char DefaultLogger[] = "default";
inline constexpr char ShadowLogger[] = "shadow";

/// The flush threshold that a logger has to be configured with: `write` flushes after each entry itself.
inline constexpr char NeverByItself[] = "1000000000";

/// To be held while anything here is used and while the back end is configured. Its own locks do not cover what its
/// loggers share, such as the files that are open, nor all of what changes when it is configured. Recursive: writing an
/// entry may log something else.
class Lock {
public:
    Lock();

private:
    std::unique_lock<std::recursive_mutex> m_lock;
};

/// Whether the back end can be used. False once it has been destroyed, late in the process's exit.
bool isAlive();

/// To be called before a logger is configured with a file: the file will be opened anew, also if it has been open and
/// was deleted; and if it is full already (0: never), it is moved aside, where the back end would empty it.
void prepareFile(const std::string& fileName, std::size_t maxSize);

/// Writes one entry to one logger, as far as its file then. A fatal entry does not end the process: that is the
/// caller's business, who may have another logger to write to.
void write(el::Level level, const char* logger, const std::string& text);

} // namespace Orv::LogBackend

#pragma once

#include <easylogging++.h>

#include <string>

/// The library's road to the logging back end.
namespace Orv::LogBackend {

inline constexpr char DefaultLogger[] = "default";
inline constexpr char ShadowLogger[] = "shadow";

/// The flush threshold that a logger has to be configured with: `write` flushes after each entry itself.
inline constexpr char NeverByItself[] = "1000000000";

/// Whether the back end can be used. False once it has been destroyed, late in the process's exit.
bool isAlive();

/// Writes one entry to one logger, as far as its file then. A fatal entry does not end the process: that is the
/// caller's business, who may have another logger to write to.
void write(el::Level level, const char* logger, const std::string& text);

} // namespace Orv::LogBackend

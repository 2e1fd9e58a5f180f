#pragma once

#include <Orv/Export.h>

/// What `LogManager` installs for SIGFPE, SIGILL, SIGSEGV and SIGINT when `setCrashHandler(true)` was set.
///
/// A crash signal logs a farewell and the reason with a stack trace, and ends the process by `abort()`. The first
/// SIGINT quits the application's event loop with 0, a later one, should the loop still run, with -1.
ORV_EXPORT void crashHandler(int signal);

#pragma once

#include <Orv/Export.h>

/// What `LogManager` installs for SIGFPE, SIGILL, SIGSEGV and SIGINT when `setCrashHandler(true)` was set.
///
/// A crash signal logs a farewell, then the signal's name and description and up to 64 frames, to the log and to the
/// shadow log, and ends the process by `abort()`. Exported functions have their names in the frames, mangled in C++
/// (`c++filt` reads them); others the file and the offset in it, which `addr2line` reads.
///
/// - The report allocates no memory and waits for no lock of the library, so it also comes when the crash happened
///   inside `malloc()` or inside the log. Should anything block after all, such as the dynamic linker's lock, SIGALRM
///   ends the process after 4 seconds.
/// - A stack overflow can only be reported by a thread that has an alternate stack. The thread that calls
///   `LogManager::init()` gets one, unless it has one; other threads give themselves one of at least 64 KiB by
///   `sigaltstack()`: the handler runs on it.
/// - Entries of other threads may come in between if one of them holds the log up for more than half a second.
///
/// The first SIGINT quits the application's event loop with 0, a later one, should the loop still run, with -1. It is
/// logged at once or, if a thread is just writing an entry, right after that entry, by that thread.
/// `QCoreApplication::exit()` is called in the handler, although Qt does not promise that this is possible everywhere.
///
/// The time in these entries uses the offset from UTC that was valid at the last ordinary entry.
ORV_EXPORT void crashHandler(int signal);

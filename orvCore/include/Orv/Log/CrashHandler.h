#pragma once

#include <Orv/Export.h>

/// The signal handler that `LogManager` installs for SIGFPE, SIGILL, SIGSEGV and SIGINT after `setCrashHandler(true)`.
///
/// For a crash signal, it writes a message, the signal's name and description, and up to 64 stack frames to the log and
/// to the shadow log, and ends the process with `abort()`. Frames show exported functions by their mangled names
/// (decode them with `c++filt`) and other functions by file and offset (decode them with `addr2line`).
///
/// - The report allocates no memory and waits at most half a second for the library's lock, so it is also written if
///   the crash happened inside `malloc()` or inside the log. If something else blocks, such as the dynamic linker's
///   lock, SIGALRM ends the process after 4 seconds.
/// - Reporting a stack overflow needs an alternate signal stack. The thread that calls `LogManager::init()` gets one
///   unless it already has one; other threads install their own, of at least 64 KiB, with `sigaltstack()`.
/// - If another thread holds the library's lock for longer, its entries may be mixed into the report.
///
/// The first SIGINT quits the application's event loop with code 0; later ones quit it with -1. The signal is logged
/// immediately or, if a thread is writing an entry at that moment, by that thread after its entry. The handler calls
/// `QCoreApplication::exit()`, which Qt does not document as async-signal-safe.
///
/// Timestamps use the UTC offset of the last ordinary entry.
ORV_EXPORT void crashHandler(int signal);

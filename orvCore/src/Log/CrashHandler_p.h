#pragma once

/// Installs `crashHandler()` for its signals, and an alternate signal stack for the calling thread if it has none.
void installCrashHandler();

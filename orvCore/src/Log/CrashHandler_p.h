#pragma once

/// Installs `crashHandler()` for its signals, with an alternate stack for the calling thread if it has none.
void installCrashHandler();

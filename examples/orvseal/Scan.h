#pragma once

#include "Report.h"
#include "Vault.h"

#include <set>

namespace orvseal {

struct ScanResult {
    Entries entries;          ///< parents before what is in them; files without IV and tree hash
    std::set<QString> failed; ///< what is there, but could not be read
};

/// Walks a folder without following links. Paths that are also in `before` are shared with it, which saves memory. What
/// cannot be sealed is a problem of the report, and what is not kept of an entry is counted there. Throws if the folder
/// itself cannot be read.
ScanResult scan(const QString& source, const Entries& before, Report& report);

} // namespace orvseal

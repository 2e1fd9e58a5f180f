#pragma once

#include "Console.h"
#include "Manifest.h"

#include <set>

namespace orvseal {

struct ScanResult {
    Entries entries;          ///< parents before their content; files without IV and tree hash
    std::set<QString> failed; ///< entries that exist, but could not be read
};

/// Lists a directory with all its content; links are not followed. Entries that cannot be sealed are reported as
/// problems, and attributes that are not kept are counted. Throws if the directory itself cannot be read.
ScanResult scan(const QString& source, Report& report);

} // namespace orvseal

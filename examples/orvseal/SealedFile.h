#pragma once

#include "Console.h"
#include "Manifest.h"

#include <vector>

namespace orvseal {

/// Seals files together, which takes a third of the processor time of sealing them one by one. Each entry has its path
/// and IV, and gets its size, modification time and tree hash. The tree hash of a file that could not be sealed stays
/// empty, and the file is reported as a problem.
void sealTogether(const std::vector<Entry*>& group, const QString& source, const QString& vault, const VaultKeys& keys,
    Report& report);

/// Passes the plain text of a sealed file to `sink`. Throws if the file is damaged, which is certain only at the end:
/// do not use the text before this returns.
void unseal(
    const Entry& entry, const QString& vault, const VaultKeys& keys, Report& report, const VaultKeys::Sink& sink);

} // namespace orvseal

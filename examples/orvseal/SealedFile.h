#pragma once

#include "Console.h"
#include "Manifest.h"

#include <vector>

/// The heart of the program, and the place to start reading: it passes a file through the library's encryptor and hash
/// tree into a vault, and back again.
namespace orvseal {

/// Seals files together, which takes a third of the processor time of sealing them one by one. Each entry has its path
/// and IV, and gets its size, modification time and tree hash. The tree hash of a file that could not be sealed stays
/// empty, and the file is reported as a problem.
void sealTogether(const std::vector<Entry*>& group, const QString& source, const QString& vault, const Cipher& cipher,
    Report& report);

/// Passes the plain text of a sealed file to `sink`. Throws if the file is damaged, which is certain only at the end:
/// do not use the text before this returns.
void unseal(const Entry& entry, const QString& vault, const Cipher& cipher, Report& report, const Cipher::Sink& sink);

} // namespace orvseal

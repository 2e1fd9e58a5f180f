#pragma once

#include "Manifest.h"
#include "Report.h"

#include <vector>

/// The heart of the program, and the place to begin reading: how a file goes through the library's encryptor and hash
/// tree into a vault, and back again.
namespace orvseal {

/// Seals files together, which takes a third of the processor's time that it takes one after the other. Each entry has
/// its path and its IV already and gets its size, its modification time and its tree hash. That of a file that could
/// not be sealed stays empty, and the file is a problem of the report.
void sealTogether(const std::vector<Entry*>& group, const QString& source, const QString& vault, const Cipher& cipher,
    Report& report);

/// Hands the plain text of a sealed file to `sink`. Throws if that turns out not to be what was sealed, which is known
/// for sure only at the end.
void unseal(const Entry& entry, const QString& vault, const Cipher& cipher, Report& report, const Cipher::Sink& sink);

} // namespace orvseal

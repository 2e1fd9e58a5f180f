#pragma once

#include "Console.h"

#include <Orv/Core/Encryption/Algorithm.h>

/// The commands. They throw if nothing could be done; single entries that fail are problems of the report.
namespace orvseal {

struct Options {
    Orv::Core::Encryption::Algorithm algorithm = Orv::Core::Encryption::None; ///< `None`: the default
    int iterations = 0;                                                       ///< 0: the default
    int jobs = 1;                                                             ///< files at a time
    bool force = false; ///< read all files, also those that seem unchanged
    QString passwordFile;
};

/// Creates the vault, which may be an empty directory but must not be in `source`, or updates it. On failure,
/// everything that was written is removed.
void sealDirectory(const QString& source, const QString& vault, const Options& options, Report& report);
/// Restores the vault's content, or only `paths` with their content. `target` must be new or an empty directory.
/// Damaged files are not restored.
void openVault(
    const QString& vault, const QString& target, const QStringList& paths, const Options& options, Report& report);
/// Decrypts all files and compares them with the manifest.
void verifyVault(const QString& vault, const Options& options, Report& report);
/// Prints a line for each entry: permissions, size, modification time in UTC, path.
void listVault(const QString& vault, const Options& options);

} // namespace orvseal

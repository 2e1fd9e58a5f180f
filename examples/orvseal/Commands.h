#pragma once

#include "Report.h"

#include <Orv/Core/Encryption/Algorithm.h>

#include <QString>
#include <QStringList>

/// What the program can do. Each command throws if nothing could be done; entries that could not be done are problems
/// of the report.
namespace orvseal {

struct Options {
    Orv::Core::Encryption::Algorithm algorithm = Orv::Core::Encryption::None; ///< `None`: what is usual
    int iterations = 0;                                                       ///< 0: what is usual
    int jobs = 1;                                                             ///< files at a time
    bool force = false; ///< read all files, also those that seem unchanged
    QString passwordFile;
};

/// Makes the vault, which may be an empty folder but must not be in `source`, or updates it. If that cannot be
/// finished, what has been written of it is removed.
void sealFolder(const QString& source, const QString& vault, const Options& options, Report& report);
/// Puts back what is in the vault; if there are `paths`, these alone, with all that is in them. `target` must be new or
/// an empty folder. A damaged file is not put there.
void openVault(
    const QString& vault, const QString& target, const QStringList& paths, const Options& options, Report& report);
/// Reads all that is in the vault and compares it with the manifest.
void verifyVault(const QString& vault, const Options& options, Report& report);
/// Prints a line an entry: permissions, size, modification time in UTC, path.
void listVault(const QString& vault, const Options& options);

} // namespace orvseal

#pragma once

#include "Console.h"
#include "Manifest.h"

#include <QLockFile>

#include <optional>

namespace orvseal {

/// Writes to a vault, locked against other runs. Unless the update is finished, its destructor leaves the vault as it
/// was before: complete, or an empty directory, or nothing.
class Update {
public:
    /// Creates the vault's directory if it does not exist. Throws if it is in `source`, or neither a vault nor empty.
    Update(const QString& vault, const QString& source, Report& report);
    ~Update();
    Update(const Update&) = delete;
    Update& operator=(const Update&) = delete;

    /// The head of a complete vault; nothing if the vault is new or was never finished.
    const std::optional<VaultHead>& oldHead() const { return m_oldHead; }
    /// Reads and returns the content of a complete vault; nothing of any other. For `known` see `readManifest`.
    const Entries& readBefore(const VaultKeys& oldKeys, const Entries& known);

    /// Allows sealed files to be written. Unless the vault is complete, writes the new head first, and removes
    /// everything that an interrupted run has left.
    void begin(const VaultHead& newHead);
    /// Makes `entries` the content of the vault, and removes the sealed files that they do not need any more. If
    /// nothing has changed, only the latter.
    void finish(const VaultHead& head, const VaultKeys& keys, const Entries& entries, bool hasChanged);

private:
    void lock();
    void removeSurplus(const VaultHead& head, const Entries& entries);
    void undo();

    const QString m_path;
    Report& m_report;
    QLockFile m_lock;
    bool m_isNewDirectory = false;
    std::optional<VaultHead> m_oldHead;
    Entries m_before;
    bool m_hasBegun = false; // and is not finished
};

} // namespace orvseal

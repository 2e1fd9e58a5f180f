#include "Commands.h"
#include "Console.h"
#include "SealedFile.h"
#include "Work.h"

#include <Orv/Utility/FileInfo.h>

#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>

#include <cerrno>
#include <chrono>
#include <unistd.h>

namespace fs = std::filesystem;

namespace orvseal {

namespace {

constexpr qint64 MostBytes = qint64(1) << 53;

/// A vault whose manifest is authentic.
struct OpenedVault {
    QString path;
    VaultKeys keys;
    Entries entries;
};

OpenedVault unlock(const QString& path, const Options& options)
{
    const VaultHead head = readHead(path);
    requireManifest(path, head);
    const VaultKeys keys = makeKeys(head, obtainPassword(options.passwordFile, false));
    return {path, keys, readManifest(path, head, keys)};
}

/// Keeps only the entries of these paths, their content, and the directories above them.
void select(OpenedVault& vault, const QStringList& paths, Report& report)
{
    QStringList wanted; // with a slash at the end, as below
    for (const QString& text : paths) {
        const QString path = QDir::cleanPath(text);
        if (find(vault.entries, path) != nullptr)
            wanted += path + '/';
        else
            report.problem(path, "it is not in the vault");
    }
    if (wanted.isEmpty())
        fail("none of these paths is in the vault");

    Entries chosen;
    for (const Entry& entry : vault.entries) {
        const QString path = entry.path + '/';
        if (std::any_of(wanted.begin(), wanted.end(),
                [&](const QString& some) { return path.startsWith(some) || some.startsWith(path); }))
            chosen.push_back(entry);
    }
    completeHardLinks(chosen, vault.entries, {});
    vault.entries = std::move(chosen);
}

void unsealAll(const OpenedVault& vault, const QString& activity, int jobs, Report& report,
    const std::function<void(const Entry&)>& unsealOne)
{
    std::vector<const Entry*> files;
    qint64 bytes = 0;
    for (const Entry& entry : vault.entries) {
        if (entry.type != Entry::File)
            continue;
        files.push_back(&entry);
        bytes = std::min(bytes + entry.size, MostBytes); // only for the progress: invalid sizes may overflow
    }
    report.begin(activity, qint64(files.size()), bytes);
    const auto task = [&](std::size_t index) {
        report.attempt(files[index]->path, [&] {
            unsealOne(*files[index]);
            report.fileDone();
        });
    };
    forEachIndex(files.size(), jobs, task, [&report] { report.show(); });
}

/// Reports files in the vault that belong to no entry. Those of a run that was killed are no problem.
void reportSurplus(const OpenedVault& vault, Report& report)
{
    const QString surplus = "surplus: it belongs to no entry";
    for (const auto& item : fs::directory_iterator(nativePath(vault.path))) {
        const QString name = QString::fromStdString(item.path().filename());
        if (!isVaultName(name))
            report.problem(name, surplus);
    }
    for (const QString& name : surplusNames(vault.path, vault.entries)) {
        if (isSealedName(name))
            report.count(Report::LeftOver);
        else
            report.problem("data/" + name, surplus);
    }
}

/// Changes owner and group, also of a link itself. Returns whether they are these now.
bool setOwner(const QString& path, qint64 owner, qint64 group)
{
    const FileState state = stateOf(path);
    const fs::path place = nativePath(path);
    if ((state.st_uid == owner && state.st_gid == group) || ::lchown(place.c_str(), uid_t(owner), gid_t(group)) == 0)
        return true;
    // A user may give files to his groups without the right to change owners.
    const bool groupGiven = ::lchown(place.c_str(), uid_t(-1), gid_t(group)) == 0;
    return groupGiven && state.st_uid == owner;
}

/// Restores entries into an empty directory.
class Restoration {
public:
    Restoration(const OpenedVault& vault, const QString& target, Report& report)
        : m_vault(vault), m_target(target), m_report(report), m_parts(target + "/.orvseal-XXXXXX")
    {
        if (!m_parts.isValid())
            fail("%1 cannot be written: %2", target, m_parts.errorString());
    }

    /// Creates the directories, writable until everything is in them.
    void makeDirectories()
    {
        forEach(Entry::Directory, [](const Entry& entry, const QString& place) {
            if (!entry.path.isEmpty())
                makeDirectory(place);
        });
    }

    /// A file appears under its name once it is complete.
    void putFile(const Entry& entry)
    {
        const QString partPath = m_parts.filePath(entry.nameInVault());
        NewFile part(partPath);
        unseal(entry, m_vault.path, m_vault.keys, m_report,
            [&part](const char* data, qint64 size) { part.writeSparse(data, size); });
        part.close();
        setAttributes(entry, partPath);
        // One at a time: on a case-insensitive file system, two names may be the same.
        const std::lock_guard<std::mutex> lock(m_placing);
        part.keepAs(placeOf(entry));
    }

    /// Links come after the files, so that nothing is ever written through one.
    void makeLinks()
    {
        std::error_code error;
        forEach(Entry::HardLink, [&](const Entry& entry, const QString& place) {
            fs::create_hard_link(nativePath(m_target + '/' + entry.target), nativePath(place), error);
            throwIf(error);
        });
        forEach(Entry::Link, [&](const Entry& entry, const QString& place) {
            fs::create_symlink(nativePath(entry.target), nativePath(place), error);
            throwIf(error);
            setAttributes(entry, place);
        });
    }

    /// Directories get their times and permissions last, the deepest first: filling one changes its time, and its
    /// permissions may forbid it.
    void finishDirectories()
    {
        m_parts.remove();
        for (auto entry = m_vault.entries.rbegin(); entry != m_vault.entries.rend(); ++entry) {
            if (entry->type == Entry::Directory)
                m_report.attempt(entry->path, [&] { setAttributes(*entry, placeOf(*entry)); });
        }
    }

private:
    QString placeOf(const Entry& entry) const { return m_target + '/' + entry.path; }

    void setAttributes(const Entry& entry, const QString& place)
    {
        // First the owner: changing it may change the permissions.
        const bool hasOwner = entry.owner != Entry::Nobody;
        m_report.count(Report::Foreign, hasOwner && !setOwner(place, entry.owner, entry.group));
        if (!Orv::Utility::FileInfo::setLastModified(place, std::chrono::nanoseconds(entry.modified), false))
            fail("its modification time cannot be set: %1", qt_error_string(errno));
        if (entry.type != Entry::Link && ::chmod(nativePath(place).c_str(), mode_t(entry.permissions)) != 0)
            fail("its permissions cannot be set: %1", qt_error_string(errno));
    }

    void forEach(Entry::Type type, const std::function<void(const Entry& entry, const QString& place)>& work)
    {
        for (const Entry& entry : m_vault.entries) {
            if (entry.type == type)
                m_report.attempt(entry.path, [&] { work(entry, placeOf(entry)); });
        }
    }

    const OpenedVault& m_vault;
    const QString m_target;
    Report& m_report;
    std::mutex m_placing;
    QTemporaryDir m_parts; // files that are being written; removes itself
};

QString permissionText(const Entry& entry)
{
    QString text("-dlh"[entry.type]); // in the order of Entry::Type
    for (int bit = 8; bit >= 0; --bit)
        text += entry.permissions >> bit & 1 ? "xwr"[bit % 3] : '-';
    if (entry.permissions & S_ISVTX)
        text[9] = entry.permissions & 1 ? 't' : 'T';
    return text;
}

} // namespace

void openVault(
    const QString& vaultPath, const QString& target, const QStringList& paths, const Options& options, Report& report)
{
    OpenedVault vault = unlock(vaultPath, options);
    if (!paths.isEmpty())
        select(vault, paths, report);
    requireOutside(target, vaultPath);
    std::error_code error;
    if (!exists(target))
        makeDirectory(target);
    else if (!fs::is_directory(nativePath(target), error) || !fs::is_empty(nativePath(target), error) || error)
        fail("%1 exists and is not an empty directory", target);
    Restoration restoration(vault, target, report);
    restoration.makeDirectories();
    unsealAll(vault, "opening", options.jobs, report, [&](const Entry& entry) { restoration.putFile(entry); });
    restoration.makeLinks();
    restoration.finishDirectories();
    report.finish("opened");
}

void verifyVault(const QString& vaultPath, const Options& options, Report& report)
{
    const OpenedVault vault = unlock(vaultPath, options);
    unsealAll(vault, "verifying", options.jobs, report,
        [&](const Entry& entry) { unseal(entry, vault.path, vault.keys, report, [](const char*, qint64) {}); });
    reportSurplus(vault, report);
    report.finish("verified");
}

void listVault(const QString& vaultPath, const Options& options)
{
    const OpenedVault vault = unlock(vaultPath, options);
    for (const Entry& entry : vault.entries) {
        if (entry.path.isEmpty())
            continue; // the sealed directory itself
        stopIfInterrupted();
        const QString size = entry.type == Entry::File ? sizeText(entry.size) : QString();
        const QDateTime modified = QDateTime::fromMSecsSinceEpoch(entry.modified / 1000000, Qt::UTC);
        const bool isLink = entry.type == Entry::Link || entry.type == Entry::HardLink;
        print(QString("%1 %2 %3  %4")
                  .arg(permissionText(entry), size.rightJustified(10), modified.toString("yyyy-MM-dd HH:mm:ss"),
                      printable(isLink ? entry.path + " -> " + entry.target : entry.path)));
    }
}

} // namespace orvseal

#include "Commands.h"
#include "Scan.h"
#include "SealedFile.h"
#include "Work.h"

#include <QFileInfo>
#include <QLockFile>

#include <future>
#include <numeric>
#include <optional>

using Orv::Core::Encryption::Algorithm;

namespace fs = std::filesystem;

namespace orvseal {

namespace {

constexpr std::size_t LargestGroup = 8;    // files; the library encrypts as many at a time
constexpr int DefaultIterations = 1300000; // a third of a second; OWASP's advice for PBKDF2-HMAC-SHA1

/// Writes to a vault, locked against other runs. Unless the update is finished, its destructor leaves the vault as it
/// was before: complete, or an empty directory, or nothing.
class Update {
public:
    Update(const QString& vault, Report& report) : m_path(vault), m_report(report), m_lock(vault + LockFile) { }
    ~Update()
    {
        try {
            undo();
        } catch (const std::exception& failure) {
            m_report.problem(m_path, QString::fromUtf8(failure.what()));
        }
    }
    Update(const Update&) = delete;
    Update& operator=(const Update&) = delete;

    /// Locks the vault, and creates its directory if it does not exist. Throws if it is neither a vault nor empty.
    /// Returns the head of a complete vault; nothing if the vault is new or was never finished.
    const std::optional<VaultHead>& open()
    {
        if (!exists(m_path)) {
            makeDirectory(m_path);
            m_isNewDirectory = true;
        }
        lock();
        m_hasHead = exists(m_path + HeadFile);
        if (!m_hasHead) {
            for (const auto& item : fs::directory_iterator(nativePath(m_path))) {
                if (item.path().filename() != "lock" && item.path().filename() != "vault.json.new")
                    fail("%1 exists and is neither a vault nor an empty directory", m_path);
            }
            return m_oldHead;
        }
        const VaultHead head = readHead(m_path);
        if (exists(head.manifestPath(m_path))) {
            requireManifest(m_path, head); // and "data"
            m_oldHead = head;
        }
        return m_oldHead;
    }

    /// Reads and returns the content of a complete vault; nothing of any other. For `known` see `readManifest`.
    const Entries& readBefore(const VaultKeys& oldKeys, const Entries& known)
    {
        if (m_oldHead)
            m_before = readManifest(m_path, *m_oldHead, oldKeys, known);
        return m_before;
    }

    /// Allows sealed files to be written. Unless the vault is complete, writes the new head first, and removes
    /// everything that an interrupted run has left.
    void begin(const VaultHead& newHead)
    {
        m_hasBegun = true;
        if (m_oldHead)
            return;
        if (m_hasHead)
            print(m_path + " is incomplete, without a manifest; everything is sealed anew");
        writeHead(m_path, newHead);
        if (!exists(m_path + DataDirectory))
            makeDirectory(m_path + DataDirectory);
        else if (typeOf(m_path + DataDirectory) != fs::file_type::directory)
            fail("\"data\" in %1 is not a directory", m_path);
        removeSurplus(newHead, m_before);
    }

    /// Makes `entries` the content of the vault, and removes the sealed files that they do not need any more. If
    /// nothing has changed, only the latter.
    void finish(const VaultHead& head, const VaultKeys& keys, const Entries& entries, bool hasChanged)
    {
        if (hasChanged) {
            NewFile manifest(temporaryName(head.manifestPath(m_path)));
            writeManifest(manifest, head, keys, entries);
            flushDirectory(m_path);
            m_hasBegun = false; // a rename that fails may have been done, so nothing may be removed any more
            manifest.replace(head.manifestPath(m_path));
            if (m_oldHead && m_oldHead->json != head.json)
                writeHead(m_path, head); // which names the new manifest
            flushDirectory(m_path);
        }
        m_hasBegun = false;
        m_isNewDirectory = false;
        removeSurplus(head, entries);
    }

private:
    void lock()
    {
        constexpr std::uintmax_t LargestLock = 4096; // bytes; QLockFile reads all of it
        const QString name = m_path + LockFile;
        const fs::path path = nativePath(name);
        std::error_code error;
        if (exists(name) && (typeOf(name) != fs::file_type::regular || fs::file_size(path, error) > LargestLock))
            fail("%1 is not a lock file of orvseal", name);
        m_lock.setStaleLockTime(0); // a run may take days; a process that has ended is known by its number
        if (m_lock.tryLock(0))
            return;
        // A run that was killed just after it had created its lock left it empty, without a number: such a lock counts
        // by its age. While a run works, the system keeps its lock from being removed.
        if (fs::file_size(path, error) == 0) {
            constexpr int WritingTime = 100; // ms, more than enough for a run to write its lock
            m_lock.setStaleLockTime(WritingTime);
            const bool isLocked = m_lock.tryLock(3 * WritingTime);
            m_lock.setStaleLockTime(0);
            if (isLocked)
                return;
        }
        if (m_lock.error() == QLockFile::LockFailedError)
            fail("another run is writing to %1; if there is none, remove %2", m_path, name);
        fail("%1 is not a directory, or cannot be written", m_path);
    }

    /// Removes sealed files that no entry needs, and manifests that the head does not name.
    void removeSurplus(const VaultHead& head, const Entries& entries)
    {
        for (const QString& name : ManifestNames) {
            if (name != head.manifestName)
                QFile::remove(m_path + '/' + name);
        }
        for (const QString& name : surplusNames(m_path, entries)) {
            if (isSealedName(name) && !QFile::remove(m_path + DataDirectory + '/' + name))
                m_report.problem("data/" + name, "it cannot be removed");
        }
    }

    void undo()
    {
        std::error_code ignored;
        if (m_hasBegun && typeOf(m_path + DataDirectory) == fs::file_type::directory) {
            removeSurplus(m_oldHead.value_or(VaultHead()), m_before);
            if (!m_oldHead)
                fs::remove(nativePath(m_path + DataDirectory), ignored); // only if it is empty
        }
        if (m_hasBegun && !m_oldHead)
            QFile::remove(m_path + HeadFile);
        m_lock.unlock();
        if (m_isNewDirectory)
            fs::remove(nativePath(m_path), ignored);
    }

    const QString m_path;
    Report& m_report;
    QLockFile m_lock;
    bool m_isNewDirectory = false;
    bool m_hasHead = false;
    std::optional<VaultHead> m_oldHead;
    Entries m_before;
    bool m_hasBegun = false; // and is not finished
};

/// A complete vault of the newest format keeps its head, and one of format 1 its algorithm.
VaultHead headFor(const QString& vault, const std::optional<VaultHead>& old, const Options& options)
{
    const bool hasAlgorithm = options.algorithm != Orv::Core::Encryption::None;
    if (!old || old->format == 1) {
        const Algorithm before = old ? old->algorithm : Orv::Core::Encryption::Aes256;
        return makeHead(hasAlgorithm ? options.algorithm : before,
            options.iterations > 0 ? options.iterations : DefaultIterations, ManifestNames[old ? 1 : 0]);
    }
    if (hasAlgorithm && options.algorithm != old->algorithm)
        fail("%1 exists, with another algorithm", vault);
    if (options.iterations > 0 && options.iterations != old->iterations)
        fail("%1 exists, with another number of iterations", vault);
    return *old;
}

/// Unchanged files keep their sealed files, unless `sealAll` or these are missing or have a wrong size. Gives the
/// others new IVs, and returns them.
std::vector<Entry*> filesToSeal(
    const QString& vault, const Entries& before, Entries& entries, bool sealAll, const VaultKeys& keys, Report& report)
{
    const auto isWhole = [&](const Entry& entry) {
        std::error_code error;
        const auto size = fs::file_size(nativePath(entry.sealedPath(vault)), error);
        const bool isGood = !error && qint64(size) == keys.sealedSize(entry.size);
        report.count(Report::Damaged, !isGood);
        return isGood;
    };
    std::vector<Entry*> files;
    for (Entry& entry : entries) {
        if (entry.type != Entry::File)
            continue;
        const Entry* old = sealAll ? nullptr : findFile(before, entry.path);
        if (old != nullptr && old->size == entry.size && old->modified == entry.modified && isWhole(*old)) {
            entry.iv = old->iv;
            entry.treeHash = old->treeHash;
        } else {
            entry.iv = keys.randomIv();
            files.push_back(&entry);
        }
    }
    return files;
}

/// Whether the entry or a directory above it is one of `failed`.
bool hasFailed(const QString& path, const std::set<QString>& failed)
{
    for (int end = path.size(); end > 0; end = path.lastIndexOf('/', end - 1)) {
        if (failed.count(path.left(end)) > 0)
            return true;
    }
    return false;
}

/// To be called once the files are sealed. Replaces what could not be read or sealed by the version in the vault, if
/// there is one. Returns these old versions.
Entries keepOldVersions(ScanResult& found, const Entries& before, Report& report)
{
    auto& [entries, failed] = found;
    for (const Entry& entry : entries) { // a file before its hard links
        const bool isBroken = entry.type == Entry::HardLink && failed.count(entry.target) > 0;
        if (isBroken)
            report.problem(entry.path, QString("hard link to %1, which could not be sealed").arg(entry.target));
        if (isBroken || entry.isUnsealed())
            failed.insert(entry.path);
    }
    if (failed.empty())
        return {};
    const auto isMissing = [&failed = failed](const Entry& entry) {
        return entry.isUnsealed() || (entry.type == Entry::HardLink && failed.count(entry.path) > 0);
    };
    entries.erase(std::remove_if(entries.begin(), entries.end(), isMissing), entries.end());
    Entries kept;
    for (const Entry& old : before) {
        if (hasFailed(old.path, failed) && find(entries, old.path) == nullptr)
            kept.push_back(old);
    }
    completeHardLinks(kept, before, entries);
    entries.insert(entries.end(), kept.begin(), kept.end());
    std::sort(entries.begin(), entries.end(), ByPath());
    return kept;
}

/// The numbers of new, changed, unchanged and removed entries, without directories.
QString summaryOf(const Entries& before, const Entries& entries)
{
    const auto isCounted = [](const Entry& entry) { return entry.type != Entry::Directory; };
    qint64 added = 0;
    qint64 changed = 0;
    qint64 unchanged = 0;
    for (const Entry& entry : entries) {
        const Entry* old = find(before, entry.path);
        if (isCounted(entry))
            ++(old == nullptr || !isCounted(*old) ? added : old->isSame(entry) ? unchanged : changed);
    }
    const qint64 removed = std::count_if(before.begin(), before.end(), isCounted) - changed - unchanged;
    return QString("%1 new, %2 changed, %3 unchanged, %4 removed").arg(added).arg(changed).arg(unchanged).arg(removed);
}

/// Groups of files that are sealed together, the largest first: as many as the library encrypts at a time, but no more
/// bytes than the share of one job.
std::vector<std::vector<Entry*>> groupsOf(std::vector<Entry*> files, qint64 bytes, int jobs)
{
    std::sort(files.begin(), files.end(), [](const Entry* a, const Entry* b) { return a->size > b->size; });
    std::vector<std::vector<Entry*>> groups;
    qint64 groupBytes = 0;
    for (Entry* file : files) {
        if (groups.empty() || groups.back().size() == LargestGroup || groupBytes + file->size > bytes / jobs) {
            groups.emplace_back();
            groupBytes = 0;
        }
        groups.back().push_back(file);
        groupBytes += file->size;
    }
    return groups;
}

} // namespace

void sealDirectory(const QString& source, const QString& vault, const Options& options, Report& report)
{
    if (!QFileInfo(source).isDir())
        fail("%1 is not a directory", source);
    requireOutside(vault, source);
    requireOutside(source, vault);
    Update update(vault, report);
    const std::optional<VaultHead>& oldHead = update.open();
    const VaultHead head = headFor(vault, oldHead, options);
    const bool keepsKey = oldHead && head.json == oldHead->json;

    const QByteArray password = obtainPassword(options.passwordFile, !oldHead);
    // The source is scanned while the keys are derived.
    std::future<ScanResult> scanning = std::async([&] { return scan(source, report); });
    const VaultKeys keys = makeKeys(head, password);
    const VaultKeys oldKeys = oldHead && !keepsKey ? makeKeys(*oldHead, password) : keys;
    ScanResult found = scanning.get();
    const Entries& before = update.readBefore(oldKeys, found.entries);

    const std::vector<Entry*> files =
        filesToSeal(vault, before, found.entries, options.force || !keepsKey, keys, report);
    const qint64 bytes = std::accumulate(
        files.begin(), files.end(), qint64(0), [](qint64 sum, const Entry* file) { return sum + file->size; });
    report.begin("sealing", qint64(files.size()), bytes);
    update.begin(head);
    const auto groups = groupsOf(files, bytes, options.jobs);
    const auto sealGroup = [&](std::size_t index) { sealTogether(groups[index], source, vault, keys, report); };
    forEachIndex(groups.size(), options.jobs, sealGroup, [&report] { report.show(); });

    const Entries kept = keepOldVersions(found, before, report);
    if (!keepsKey && !kept.empty())
        fail("the vault stays in its old format, because %1 cannot be read now", kept.front().path);
    const auto isSame = [](const Entry& a, const Entry& b) { return a.path == b.path && a.iv == b.iv && a.isSame(b); };
    const bool isUnchanged =
        keepsKey && std::equal(found.entries.begin(), found.entries.end(), before.begin(), before.end(), isSame);
    update.finish(head, keys, found.entries, !isUnchanged);
    report.finish("sealed", oldHead ? summaryOf(before, found.entries) : QString());
}

} // namespace orvseal

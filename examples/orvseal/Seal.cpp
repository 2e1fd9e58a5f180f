#include "Commands.h"
#include "Scan.h"
#include "SealedFile.h"
#include "Update.h"
#include "Work.h"

#include <QFileInfo>

#include <future>
#include <numeric>

using Orv::Core::Encryption::Algorithm;

namespace orvseal {

namespace {

constexpr std::size_t LargestGroup = 8;    // files; the library encrypts as many at a time
constexpr int DefaultIterations = 1300000; // about half a second; OWASP's advice for PBKDF2-HMAC-SHA1

/// A complete vault of the newest format keeps its head, and one of format 1 its algorithm.
VaultHead headFor(const QString& vault, const std::optional<VaultHead>& old, const Options& options)
{
    const bool hasAlgorithm = options.algorithm != Orv::Core::Encryption::None;
    if (!old || old->format == 1) {
        const Algorithm before = old ? old->algorithm : Orv::Core::Encryption::Aes256;
        return makeHead(hasAlgorithm ? options.algorithm : before,
            options.iterations > 0 ? options.iterations : DefaultIterations, manifestNames()[old ? 1 : 0]);
    }
    if (hasAlgorithm && options.algorithm != old->algorithm)
        fail("%1 exists, with another algorithm", vault);
    if (options.iterations > 0 && options.iterations != old->iterations)
        fail("%1 exists, with another number of iterations", vault);
    return *old;
}

bool isUnsealed(const Entry& entry)
{
    return entry.type == Entry::File && entry.treeHash.isEmpty();
}

/// Unchanged files keep their sealed files, unless `sealAll` or these are missing or have a wrong size. Gives the
/// others new IVs, and returns them.
std::vector<Entry*> filesToSeal(
    const QString& vault, const Entries& before, Entries& entries, bool sealAll, const Cipher& cipher, Report& report)
{
    const auto isWhole = [&](const Entry& entry) {
        std::error_code error;
        const auto size = std::filesystem::file_size(nativePath(sealedPath(vault, entry)), error);
        if (!error && qint64(size) == cipher.sealedSize(entry.size))
            return true;
        report.count(Report::Damaged);
        return false;
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
            entry.iv = cipher.randomIv();
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
    for (const Entry& entry : entries) {
        if (isUnsealed(entry))
            failed.insert(entry.path);
    }
    for (const Entry& entry : entries) {
        if (entry.type == Entry::HardLink && failed.count(entry.target) > 0) {
            report.problem(entry.path, QString("hard link to %1, which could not be sealed").arg(entry.target));
            failed.insert(entry.path);
        }
    }
    if (failed.empty())
        return {};
    const auto isMissing = [&failed = failed](const Entry& entry) {
        return isUnsealed(entry) || (entry.type == Entry::HardLink && failed.count(entry.path) > 0);
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
    Update update(vault, source, report);
    const std::optional<VaultHead>& oldHead = update.oldHead();
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
        filesToSeal(vault, before, found.entries, options.force || !keepsKey, keys.cipher, report);
    const qint64 bytes = std::accumulate(
        files.begin(), files.end(), qint64(0), [](qint64 sum, const Entry* file) { return sum + file->size; });
    report.begin("sealing", qint64(files.size()), bytes);
    update.begin(head);
    const auto groups = groupsOf(files, bytes, options.jobs);
    const auto sealGroup = [&](std::size_t index) { sealTogether(groups[index], source, vault, keys.cipher, report); };
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

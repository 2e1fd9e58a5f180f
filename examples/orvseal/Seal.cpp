#include "Commands.h"
#include "Console.h"
#include "Files.h"
#include "Scan.h"
#include "SealedFile.h"
#include "Update.h"
#include "Work.h"

#include <QFileInfo>

#include <algorithm>
#include <future>
#include <numeric>

using Orv::Core::Encryption::Algorithm;
using Orv::Exception::Base;

namespace orvseal {

namespace {

constexpr std::size_t LargestGroup = 8;    // files; the library encrypts as many at a time
constexpr int DefaultIterations = 1300000; // about half a second; OWASP's advice for PBKDF2-HMAC-SHA1

VaultHead newHead(const Options& options, Algorithm defaultAlgorithm, const QString& manifestName)
{
    const bool hasAlgorithm = options.algorithm != Orv::Core::Encryption::None;
    return makeHead(hasAlgorithm ? options.algorithm : defaultAlgorithm,
        options.iterations > 0 ? options.iterations : DefaultIterations, manifestName);
}

VaultHead updatedHead(const QString& vault, const VaultHead& old, const Options& options)
{
    if (old.format == 1)
        return newHead(options, old.algorithm, manifestNames().constLast());
    if (options.algorithm != Orv::Core::Encryption::None && options.algorithm != old.algorithm)
        throw Base(QStringLiteral("%1 exists, with another algorithm").arg(vault));
    if (options.iterations > 0 && options.iterations != old.iterations)
        throw Base(QStringLiteral("%1 exists, with another number of iterations").arg(vault));
    return old;
}

bool isUnsealed(const Entry& entry)
{
    return entry.type == Entry::File && entry.treeHash.isEmpty();
}

/// Compares what a vault contains with what it is going to contain.
class Plan {
public:
    /// Scanned files that are unchanged keep their sealed files, unless `sealAll` or these are missing or have a wrong
    /// size; the others get new IVs.
    Plan(const QString& vault, const Entries& before, ScanResult found, bool sealAll, const Cipher& cipher,
        Report& report)
        : m_before(before), m_failed(std::move(found.failed)), m_entries(std::move(found.entries))
    {
        const auto isWhole = [&](const Entry& entry) {
            std::error_code error;
            const auto size = std::filesystem::file_size(nativePath(sealedPath(vault, entry)), error);
            if (!error && qint64(size) == cipher.sealedSize(entry.size))
                return true;
            report.count(Report::Damaged);
            return false;
        };
        for (Entry& entry : m_entries) {
            if (entry.type != Entry::File)
                continue;
            const Entry* old = sealAll ? nullptr : find(m_before, entry.path);
            if (old != nullptr && old->type == Entry::File && old->size == entry.size &&
                old->modified == entry.modified && isWhole(*old)) {
                entry.iv = old->iv;
                entry.treeHash = old->treeHash;
            } else {
                entry.iv = cipher.randomIv();
            }
        }
    }

    const Entries& entries() const { return m_entries; }

    /// The files to seal.
    std::vector<Entry*> files()
    {
        std::vector<Entry*> files;
        for (Entry& entry : m_entries) {
            if (isUnsealed(entry))
                files.push_back(&entry);
        }
        return files;
    }

    /// To be called once the files are sealed. Replaces entries that could not be sealed by their old versions, if
    /// there are any. Returns the paths of these.
    QStringList complete(Report& report)
    {
        for (const Entry& entry : m_entries) {
            if (isUnsealed(entry))
                m_failed.insert(entry.path);
        }
        for (const Entry& entry : m_entries) {
            if (entry.type == Entry::HardLink && m_failed.count(entry.target) > 0) {
                report.problem(
                    entry.path, QStringLiteral("hard link to %1, which could not be sealed").arg(entry.target));
                m_failed.insert(entry.path);
            }
        }
        QStringList kept;
        if (m_failed.empty())
            return kept;
        removeIf([this](const Entry& entry) {
            return isUnsealed(entry) || (entry.type == Entry::HardLink && m_failed.count(entry.path) > 0);
        });
        Entries links; // to files that the vault keeps
        Entries others;
        for (const Entry& old : m_before) {
            if (!hasFailed(old.path) || find(m_entries, old.path) != nullptr)
                continue;
            const Entry* file = old.type == Entry::HardLink ? findFile(m_entries, old.target) : nullptr;
            const bool isKept = file != nullptr && file->iv == findFile(m_before, old.target)->iv;
            (isKept ? links : others).push_back(old);
        }
        completeHardLinks(others, m_before);
        for (const Entries& old : {links, others}) {
            for (const Entry& entry : old) {
                kept += entry.path;
                m_entries.push_back(entry);
            }
        }
        std::sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) { return a.path < b.path; });
        return kept;
    }

    /// The numbers of new, changed, unchanged and removed entries, without directories.
    QString summary() const
    {
        const auto isCounted = [](const Entry* entry) { return entry != nullptr && entry->type != Entry::Directory; };
        qint64 added = 0;
        qint64 changed = 0;
        qint64 unchanged = 0;
        for (const Entry& entry : m_entries) {
            if (const Entry* old = find(m_before, entry.path); isCounted(&entry))
                ++(!isCounted(old) ? added : old->isSame(entry) ? unchanged : changed);
        }
        const qint64 before =
            std::count_if(m_before.begin(), m_before.end(), [&](const Entry& entry) { return isCounted(&entry); });
        return QStringLiteral("%1 new, %2 changed, %3 unchanged, %4 removed")
            .arg(added)
            .arg(changed)
            .arg(unchanged)
            .arg(before - changed - unchanged);
    }

    /// Whether the vault contains exactly these entries already.
    bool isSameAsBefore() const
    {
        return std::equal(m_entries.begin(), m_entries.end(), m_before.begin(), m_before.end(),
            [](const Entry& a, const Entry& b) { return a.path == b.path && a.iv == b.iv && a.isSame(b); });
    }

private:
    /// Whether the entry or a directory above it could not be read.
    bool hasFailed(const QString& path) const
    {
        for (int end = path.size(); end > 0; end = path.lastIndexOf('/', end - 1)) {
            if (m_failed.count(path.left(end)) > 0)
                return true;
        }
        return false;
    }

    template <class Condition> void removeIf(const Condition& condition)
    {
        m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(), condition), m_entries.end());
    }

    const Entries& m_before;
    std::set<QString> m_failed;
    Entries m_entries;
};

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
        throw Base(QStringLiteral("%1 is not a directory").arg(source));
    Update update(vault, source, report);
    const std::optional<VaultHead>& oldHead = update.oldHead();
    const VaultHead head = oldHead ? updatedHead(vault, *oldHead, options)
                                   : newHead(options, Orv::Core::Encryption::Aes256, manifestNames().constFirst());
    const bool keepsKey = oldHead && head.json == oldHead->json;

    const QByteArray password = obtainPassword(options.passwordFile, !oldHead);
    // The source is scanned while the keys are derived.
    std::future<ScanResult> scanning = std::async([&] { return scan(source, report); });
    const VaultKeys keys = makeKeys(head, password);
    const VaultKeys oldKeys = oldHead && !keepsKey ? makeKeys(*oldHead, password) : keys;
    ScanResult found = scanning.get();
    update.readBefore(oldKeys, found.entries);

    Plan plan(vault, update.before(), std::move(found), options.force || !keepsKey, keys.cipher, report);
    const std::vector<Entry*> files = plan.files();
    const qint64 bytes = std::accumulate(
        files.begin(), files.end(), qint64(0), [](qint64 sum, const Entry* file) { return sum + file->size; });
    report.begin(QStringLiteral("sealing"), qint64(files.size()), bytes);
    update.begin(head);
    const auto groups = groupsOf(files, bytes, options.jobs);
    const auto sealGroup = [&](std::size_t index) { sealTogether(groups[index], source, vault, keys.cipher, report); };
    forEachIndex(groups.size(), options.jobs, sealGroup, [&report] { report.show(); });

    const QStringList kept = plan.complete(report);
    if (!keepsKey && !kept.isEmpty())
        throw Base(
            QStringLiteral("the vault stays in its old format, because %1 cannot be read now").arg(kept.first()));
    update.finish(head, keys, plan.entries(), !keepsKey || !plan.isSameAsBefore());
    report.finish(QStringLiteral("sealed"), oldHead ? plan.summary() : QString());
}

} // namespace orvseal

#include "Commands.h"
#include "Console.h"
#include "Files.h"
#include "Scan.h"
#include "SealedFile.h"
#include "Vault.h"
#include "Work.h"

#include <Orv/Core/Encryption/Key.h>

#include <QFileInfo>
#include <QLockFile>
#include <QSet>

#include <algorithm>

using Orv::Exception::Base;

namespace fs = std::filesystem;

namespace orvseal {

namespace {

constexpr std::size_t LargestGroup = 8;  // files; the library encrypts as many at a time
constexpr int UsualIterations = 1300000; // about half a second; what OWASP advises for PBKDF2-HMAC-SHA1

/// A vault that is written to: by this run alone, and without a trace of it unless it is finished.
class VaultUpdate {
public:
    VaultUpdate(const QString& path, const QString& source) : m_path(path), m_lock(lockPath(path))
    {
        requireOutside(path, source);
        std::error_code error;
        if (fs::symlink_status(nativePath(path), error).type() == fs::file_type::not_found) {
            makeFolder(path);
            m_isNew = true;
        }
        try {
            lock();
            m_names = namesIn(path);
            if (!isVault() && !isEmpty())
                throw Base(QStringLiteral("%1 exists and is neither a vault nor an empty folder").arg(path));
        } catch (...) {
            removeFolder();
            throw;
        }
    }

    ~VaultUpdate()
    {
        if (m_finished)
            return;
        for (const QByteArray& iv : m_newFiles)
            QFile::remove(dataFolder(m_path) + '/' + QString::fromLatin1(iv.toHex()));
        if (m_begun) {
            std::error_code ignored;
            fs::remove(nativePath(dataFolder(m_path)), ignored); // which it does to empty folders only
            QFile::remove(headPath(m_path));
        }
        removeFolder();
    }

    VaultUpdate(const VaultUpdate&) = delete;
    VaultUpdate& operator=(const VaultUpdate&) = delete;

    /// Whether it has been finished before: what is there then has to stay until there is something new.
    bool isWhole() const { return isVault() && QFile::exists(manifestPath(m_path, readHead(m_path))); }

    /// `files` will be sealed; a head that is to be written now means that there is nothing yet.
    void begin(const VaultHead* newHead, const std::vector<Entry*>& files, Report& report)
    {
        if (newHead != nullptr) {
            m_begun = true;
            writeHead(m_path, *newHead);
            makeDataFolder();
            removeSurplus(*newHead, Entries(), report); // of a run that was killed
        }
        for (const Entry* file : files)
            m_newFiles.push_back(file->iv);
    }

    /// From here on the new state holds: nothing of it may be removed.
    void setFinished() { m_finished = true; }

    /// Removes the sealed files that no entry refers to, and a manifest that the head does not name any more. Not
    /// before the new state is on the disk.
    void removeSurplus(const VaultHead& head, const Entries& entries, Report& report)
    {
        for (const QString& name : {QStringLiteral("manifest"), QStringLiteral("manifest-2")}) {
            if (name != head.manifestName)
                QFile::remove(m_path + '/' + name);
        }
        QSet<QByteArray> ivs;
        for (const Entry& entry : entries)
            ivs.insert(entry.iv);
        for (const fs::directory_entry& item : fs::directory_iterator(nativePath(dataFolder(m_path)))) {
            const QString name = QString::fromStdString(item.path().filename());
            const bool isReferred = ivs.contains(QByteArray::fromHex(name.toLatin1()));
            if (isSealedName(name) && !isReferred && !QFile::remove(dataFolder(m_path) + '/' + name))
                report.problem(QStringLiteral("data/") + name, QStringLiteral("it cannot be removed"));
        }
    }

private:
    void makeDataFolder() const
    {
        std::error_code error;
        const fs::file_type type = fs::symlink_status(nativePath(dataFolder(m_path)), error).type();
        if (type == fs::file_type::not_found)
            makeFolder(dataFolder(m_path));
        else if (type != fs::file_type::directory)
            throw Base(QStringLiteral("\"data\" in %1 is not a folder").arg(m_path));
    }

    static QSet<QString> namesIn(const QString& folder)
    {
        QSet<QString> names;
        for (const fs::directory_entry& item : fs::directory_iterator(nativePath(folder)))
            names.insert(QString::fromStdString(item.path().filename()));
        return names;
    }

    void lock()
    {
        m_lock.setStaleLockTime(0); // a run may take days; that of a process that is gone is known by its number
        if (m_lock.tryLock(0))
            return;
        if (m_lock.error() == QLockFile::LockFailedError)
            throw Base(QStringLiteral("another run is writing to %1; if there is none, remove %2")
                           .arg(m_path, lockPath(m_path)));
        throw Base(QStringLiteral("%1 cannot be written, or is no folder").arg(m_path));
    }

    bool isVault() const { return m_names.contains(QStringLiteral("vault.json")); }

    bool isEmpty() const
    {
        return (m_names - QSet<QString>{QStringLiteral("lock"), QStringLiteral("vault.json.new")}).isEmpty();
    }

    void removeFolder()
    {
        m_lock.unlock();
        std::error_code ignored;
        if (m_isNew)
            fs::remove(nativePath(m_path), ignored);
    }

    const QString m_path;
    QLockFile m_lock;
    QSet<QString> m_names;              // what was in it
    std::vector<QByteArray> m_newFiles; // their IVs
    bool m_isNew = false;
    bool m_begun = false;
    bool m_finished = false;
};

/// Groups of files that are sealed together, the largest first: as many as advance together, but no more than the share
/// of one job.
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

bool isUnsealedFile(const Entry& entry)
{
    return entry.type == Entry::File && entry.treeHash.isEmpty();
}

/// What the vault has and what it is going to have.
class Plan {
public:
    /// `keepsKey`: what is in the vault can be decrypted with the key of the new state.
    Plan(Entries before, bool keepsKey) : m_before(std::move(before)), m_keepsKey(keepsKey) { }

    /// Files that are as the vault has them take over what was sealed; returns the others, with new IVs.
    std::vector<Entry*> compare(const QString& source, bool force, const Cipher& cipher, Report& report)
    {
        ScanResult found = scan(source, m_before, report);
        m_failed = std::move(found.failed);
        m_entries = std::move(found.entries);
        std::vector<Entry*> files;
        for (Entry& entry : m_entries) {
            const Entry* old = find(m_before, entry.path);
            if (entry.type != Entry::File)
                continue;
            if (old != nullptr && !force && m_keepsKey && old->type == Entry::File && old->size == entry.size &&
                old->modified == entry.modified) {
                entry.iv = old->iv;
                entry.treeHash = old->treeHash;
            } else {
                entry.iv = cipher.randomIv();
                files.push_back(&entry);
            }
        }
        return files;
    }

    /// Leaves out what could not be sealed. What the vault has of that stays in it as it was.
    void complete(Report& report)
    {
        for (const Entry& entry : m_entries) {
            if (isUnsealedFile(entry))
                m_failed.insert(entry.path);
        }
        if (m_failed.empty())
            return;
        removeIf(isUnsealedFile);
        keepFailed();
        completeHardLinks(m_entries, m_before);
        std::set<QString> nowhere;
        for (const Entry& entry : m_entries) {
            if (entry.type == Entry::HardLink && find(m_entries, entry.target) == nullptr) {
                report.problem(entry.path, QStringLiteral("it is the same file as ") + entry.target);
                nowhere.insert(entry.path);
            }
        }
        removeIf([&nowhere](const Entry& entry) { return nowhere.count(entry.path) > 0; });
    }

    const Entries& entries() const { return m_entries; }

    /// How many entries, less the folders, are new, changed, unchanged and removed.
    QString summary() const
    {
        qint64 added = 0;
        qint64 changed = 0;
        qint64 unchanged = 0;
        for (const Entry& entry : m_entries) {
            const Entry* old = find(m_before, entry.path);
            if (entry.type == Entry::Folder)
                continue;
            if (old == nullptr || old->type == Entry::Folder)
                ++added;
            else
                ++(isSame(*old, entry) ? unchanged : changed);
        }
        const auto isThing = [](const Entry& entry) { return entry.type != Entry::Folder; };
        const qint64 before = std::count_if(m_before.begin(), m_before.end(), isThing);
        return QStringLiteral("%1 new, %2 changed, %3 unchanged, %4 removed")
            .arg(added)
            .arg(changed)
            .arg(unchanged)
            .arg(before - changed - unchanged);
    }

    /// Whether the vault has all this already.
    bool isSameAsBefore() const
    {
        return m_keepsKey &&
            std::equal(m_entries.begin(), m_entries.end(), m_before.begin(), m_before.end(),
                [](const Entry& a, const Entry& b) { return a.path == b.path && a.iv == b.iv && isSame(a, b); });
    }

private:
    static bool isSame(const Entry& a, const Entry& b)
    {
        return a.hasSameAttributes(b) && a.size == b.size && a.treeHash == b.treeHash;
    }

    template <class Condition> void removeIf(const Condition& condition)
    {
        m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(), condition), m_entries.end());
    }

    void keepFailed()
    {
        for (const Entry& old : m_before) {
            if (!isFailed(old.path) || find(m_entries, old.path) != nullptr)
                continue;
            if (!m_keepsKey)
                throw Base(
                    QStringLiteral("the vault stays in its old format, because %1 cannot be read now").arg(old.path));
            m_kept.push_back(old);
        }
        m_entries.insert(m_entries.end(), m_kept.begin(), m_kept.end());
        std::sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) { return a.path < b.path; });
    }

    /// Whether the entry or a folder above it could not be read.
    bool isFailed(const QString& path) const
    {
        for (int end = path.size(); end > 0; end = path.lastIndexOf('/', end - 1)) {
            if (m_failed.count(path.left(end)) > 0)
                return true;
        }
        return false;
    }

    const Entries m_before;
    const bool m_keepsKey;
    Entries m_entries;
    Entries m_kept;
    std::set<QString> m_failed;
};

VaultHead updatedHead(const QString& vault, const VaultHead& head, const Options& options)
{
    if (head.format == 1)
        return makeHead(options.algorithm == Orv::Core::Encryption::None ? head.algorithm : options.algorithm,
            options.iterations > 0 ? options.iterations : UsualIterations, QStringLiteral("manifest-2"));
    if (options.algorithm != Orv::Core::Encryption::None && options.algorithm != head.algorithm)
        throw Base(QStringLiteral("%1 exists, with another algorithm").arg(vault));
    if (options.iterations > 0 && options.iterations != head.iterations)
        throw Base(QStringLiteral("%1 exists, with another number of iterations").arg(vault));
    return head;
}

} // namespace

void sealFolder(const QString& source, const QString& vault, const Options& options, Report& report)
{
    if (!QFileInfo(source).isDir())
        throw Base(QStringLiteral("%1 is not a folder").arg(source));
    VaultUpdate update(vault, source);
    const bool isUpdate = update.isWhole();
    VaultHead oldHead;
    VaultHead head;
    if (isUpdate) {
        oldHead = readHead(vault);
        requireManifest(vault, oldHead);
        head = updatedHead(vault, oldHead, options);
    } else {
        head = makeHead(
            options.algorithm == Orv::Core::Encryption::None ? Orv::Core::Encryption::Aes256 : options.algorithm,
            options.iterations > 0 ? options.iterations : UsualIterations, QStringLiteral("manifest"));
    }
    const bool keepsKey = isUpdate && head.json == oldHead.json;

    const QByteArray password = obtainPassword(options.passwordFile, !isUpdate);
    Entries before;
    if (isUpdate && !keepsKey)
        before = readManifest(vault, oldHead, makeKeys(oldHead, password));
    const VaultKeys keys = makeKeys(head, password);
    if (keepsKey)
        before = readManifest(vault, head, keys);

    Plan plan(std::move(before), keepsKey);
    const std::vector<Entry*> files = plan.compare(source, options.force, keys.cipher, report);
    qint64 bytes = 0;
    for (const Entry* file : files)
        bytes += file->size;
    report.begin(QStringLiteral("sealing"), qint64(files.size()), bytes);
    update.begin(isUpdate ? nullptr : &head, files, report);
    const auto groups = groupsOf(files, bytes, options.jobs);
    const auto sealGroup = [&](std::size_t index) { sealTogether(groups[index], source, vault, keys.cipher, report); };
    forEachIndex(groups.size(), options.jobs, sealGroup, [&report] { report.show(); });

    plan.complete(report);
    if (!plan.isSameAsBefore()) {
        writeManifest(vault, head, keys, plan.entries());
        if (isUpdate && !keepsKey)
            writeHead(vault, head); // this puts the new state in place
        update.setFinished();
        flushFolder(vault);
    }
    update.setFinished();
    update.removeSurplus(head, plan.entries(), report);
    report.finish(QStringLiteral("sealed"), isUpdate ? plan.summary() : QString());
}

} // namespace orvseal

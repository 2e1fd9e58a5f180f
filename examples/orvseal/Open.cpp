#include "Commands.h"
#include "Console.h"
#include "Files.h"
#include "SealedFile.h"
#include "Vault.h"
#include "Work.h"

#include <QDateTime>
#include <QDir>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <mutex>
#include <set>
#include <sys/stat.h>

using Orv::Exception::Base;

namespace fs = std::filesystem;

namespace orvseal {

namespace {

constexpr qint64 MostBytes = qint64(1) << 53;

/// A vault whose password was right and whose manifest can be believed.
struct OpenedVault {
    QString path;
    VaultHead head;
    Cipher cipher;
    Entries entries;
    std::vector<const Entry*> files = {};
};

OpenedVault unlock(const QString& path, const Options& options)
{
    const VaultHead head = readHead(path);
    requireManifest(path, head);
    const VaultKeys keys = makeKeys(head, obtainPassword(options.passwordFile, false));
    return {path, head, keys.cipher, readManifest(path, head, keys)};
}

/// Lists the files of the vault and says what is about to be done with them.
void begin(OpenedVault& vault, const QString& activity, Report& report)
{
    qint64 bytes = 0;
    for (const Entry& entry : vault.entries) {
        if (entry.type != Entry::File)
            continue;
        vault.files.push_back(&entry);
        // Wrong sizes may add up to more than a number holds; it only serves to show the progress.
        bytes = std::min(bytes + entry.size, MostBytes);
    }
    report.begin(activity, qint64(vault.files.size()), bytes);
}

/// Leaves only the entries of these paths, what is in them, and the folders above them.
void select(OpenedVault& vault, const QStringList& paths, Report& report)
{
    std::set<QString> wanted;
    std::set<QString> above;
    for (const QString& text : paths) {
        const QString path = QDir::cleanPath(text);
        if (find(vault.entries, path) == nullptr) {
            report.problem(path, QStringLiteral("it is not in the vault"));
            continue;
        }
        wanted.insert(path);
        for (int slash = path.lastIndexOf('/'); slash > 0; slash = path.lastIndexOf('/', slash - 1))
            above.insert(path.left(slash));
    }
    if (wanted.empty())
        throw Base(QStringLiteral("nothing of that is in the vault"));

    Entries chosen;
    for (const Entry& entry : vault.entries) {
        bool isChosen = above.count(entry.path) > 0;
        for (int end = entry.path.size(); end > 0 && !isChosen; end = entry.path.lastIndexOf('/', end - 1))
            isChosen = wanted.count(entry.path.left(end)) > 0;
        if (isChosen)
            chosen.push_back(entry);
    }
    completeHardLinks(chosen, vault.entries);
    vault.entries = std::move(chosen);
}

void unsealAll(const OpenedVault& vault, const Options& options, Report& report,
    const std::function<void(const Entry&)>& unsealOne)
{
    const auto task = [&](std::size_t index) {
        const Entry& entry = *vault.files[index];
        report.attempt(entry.path, [&] {
            unsealOne(entry);
            report.fileDone();
        });
    };
    forEachIndex(vault.files.size(), options.jobs, task, [&report] { report.show(); });
}

/// Files in the vault that belong to no entry. Those that a run left behind that was killed are no problem.
void reportSurplus(const OpenedVault& vault, Report& report)
{
    static const QSet<QString> Own = {QStringLiteral("vault.json"), QStringLiteral("vault.json.new"),
        QStringLiteral("manifest"), QStringLiteral("manifest.new"), QStringLiteral("manifest-2"),
        QStringLiteral("manifest-2.new"), QStringLiteral("data"), QStringLiteral("lock")};
    const QString surplus = QStringLiteral("surplus: it belongs to no entry");
    for (const fs::directory_entry& item : fs::directory_iterator(nativePath(vault.path))) {
        const QString name = QString::fromStdString(item.path().filename());
        if (!Own.contains(name))
            report.problem(name, surplus);
    }
    QSet<QByteArray> expected;
    for (const Entry* file : vault.files)
        expected.insert(vault.head.format == 1 ? file->formerName.toUtf8() : file->iv);
    for (const fs::directory_entry& item : fs::directory_iterator(nativePath(dataFolder(vault.path)))) {
        const QString name = QString::fromStdString(item.path().filename());
        const QByteArray text = name.toUtf8();
        if (expected.contains(vault.head.format == 1 ? text : QByteArray::fromHex(text)))
            continue;
        if (isSealedName(name))
            report.countLeftOver();
        else
            report.problem(QStringLiteral("data/") + name, surplus);
    }
}

/// Puts what is in a vault into an empty folder.
class Restoration {
public:
    Restoration(const OpenedVault& vault, const QString& target, Report& report)
        : m_vault(vault), m_target(target), m_report(report), m_parts(target + QStringLiteral("/.orvseal-XXXXXX"))
    {
        if (!m_parts.isValid())
            throw Base(QStringLiteral("%1 cannot be written: %2").arg(target, m_parts.errorString()));
    }

    /// Makes the folders, writable until all is in them.
    void makeFolders()
    {
        forEach(Entry::Folder, [this](const Entry& entry) {
            if (!entry.path.isEmpty())
                makeFolder(placeOf(entry));
        });
    }

    /// A file appears under its name once it is complete.
    void putFile(const Entry& entry)
    {
        const QString partPath = m_parts.filePath(entry.nameInVault());
        NewFile part(partPath);
        unseal(entry, m_vault.path, m_vault.cipher, m_report,
            [&part](const char* data, qint64 size) { part.writeSparse(data, size); });
        part.close();
        setAttributes(partPath, entry);
        // One at a time: where case does not count, two names may be one.
        const std::lock_guard<std::mutex> lock(m_placing);
        part.keepAs(placeOf(entry));
    }

    /// Links come after the files, so that nothing is ever written through one.
    void makeLinks()
    {
        forEach(Entry::HardLink, [this](const Entry& entry) {
            std::error_code error;
            const QString file = m_target + '/' + entry.target;
            fs::create_hard_link(nativePath(file), nativePath(placeOf(entry)), error);
            if (error)
                throw Base(QString::fromStdString(error.message()));
        });
        forEach(Entry::Link, [this](const Entry& entry) {
            std::error_code error;
            fs::create_symlink(nativePath(entry.target), nativePath(placeOf(entry)), error);
            if (error)
                throw Base(QString::fromStdString(error.message()));
            giveToOwner(placeOf(entry), entry);
            setModified(placeOf(entry), entry.modified);
        });
    }

    /// Folders get their times and permissions last and the deepest first: filling one changes its time, and may be
    /// forbidden afterwards.
    void finishFolders()
    {
        m_parts.remove();
        for (auto entry = m_vault.entries.rbegin(); entry != m_vault.entries.rend(); ++entry) {
            if (entry->type != Entry::Folder)
                continue;
            m_report.attempt(entry->path, [&] { setAttributes(placeOf(*entry), *entry); });
        }
    }

private:
    QString placeOf(const Entry& entry) const { return m_target + '/' + entry.path; }

    void giveToOwner(const QString& place, const Entry& entry)
    {
        if (entry.owner != Entry::Nobody && !setOwner(place, entry.owner, entry.group))
            m_report.countForeign();
    }

    void setAttributes(const QString& place, const Entry& entry)
    {
        giveToOwner(place, entry); // first: a change of the owner may change the permissions
        setModified(place, entry.modified);
        setPermissions(place, entry.permissions);
    }

    void forEach(Entry::Type type, const std::function<void(const Entry&)>& work)
    {
        for (const Entry& entry : m_vault.entries) {
            if (entry.type == type)
                m_report.attempt(entry.path, [&] { work(entry); });
        }
    }

    const OpenedVault& m_vault;
    const QString m_target;
    Report& m_report;
    std::mutex m_placing;
    QTemporaryDir m_parts; // files on their way; removes itself with whatever is left in it
};

QString permissionText(const Entry& entry)
{
    static constexpr char Types[] = "-dlh"; // in the order of Entry::Type
    QString text(1, QLatin1Char(Types[entry.type]));
    for (int bit = 8; bit >= 0; --bit)
        text += QLatin1Char(entry.permissions >> bit & 1 ? "xwr"[bit % 3] : '-');
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
    prepareEmptyFolder(target, vaultPath);
    begin(vault, QStringLiteral("opening"), report);
    Restoration restoration(vault, target, report);
    restoration.makeFolders();
    unsealAll(vault, options, report, [&](const Entry& entry) { restoration.putFile(entry); });
    restoration.makeLinks();
    restoration.finishFolders();
    report.finish(QStringLiteral("opened"), QString());
}

void verifyVault(const QString& vaultPath, const Options& options, Report& report)
{
    OpenedVault vault = unlock(vaultPath, options);
    begin(vault, QStringLiteral("verifying"), report);
    unsealAll(vault, options, report,
        [&](const Entry& entry) { unseal(entry, vault.path, vault.cipher, report, [](const char*, qint64) {}); });
    reportSurplus(vault, report);
    report.finish(QStringLiteral("verified"), QString());
}

void listVault(const QString& vaultPath, const Options& options)
{
    const OpenedVault vault = unlock(vaultPath, options);
    for (const Entry& entry : vault.entries) {
        if (entry.path.isEmpty())
            continue; // the sealed folder itself
        stopIfInterrupted();
        const QString size = entry.type == Entry::File ? sizeText(entry.size) : QString();
        const QDateTime modified = QDateTime::fromMSecsSinceEpoch(entry.modified / 1000000, Qt::UTC);
        const bool isLink = entry.type == Entry::Link || entry.type == Entry::HardLink;
        const QString target = isLink ? QStringLiteral(" -> ") + printable(entry.target) : QString();
        print(QStringLiteral("%1 %2 %3  ")
                  .arg(permissionText(entry))
                  .arg(size, 10)
                  .arg(modified.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))) +
            printable(entry.path) + target);
    }
}

} // namespace orvseal

#include "Commands.h"
#include "Console.h"
#include "Files.h"
#include "Vault.h"
#include "Work.h"

#include <QDateTime>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <mutex>
#include <sys/stat.h>

using Orv::Exception::Base;
using Orv::Exception::InvalidData;

namespace fs = std::filesystem;

namespace orvseal {

namespace {

constexpr qint64 MostBytes = qint64(1) << 53;

/// A vault whose password was right and whose manifest can be believed.
struct OpenedVault {
    QString path;
    Cipher cipher;
    std::vector<Entry> entries;
    std::vector<const Entry*> files = {};
    qint64 bytes = 0;
};

OpenedVault unlock(const QString& path, const Options& options)
{
    const VaultHead head = readHead(path);
    requireManifest(path);
    const Cipher cipher = makeCipher(head, obtainPassword(options.passwordFile, false));
    OpenedVault vault{path, cipher, readManifest(path, head, cipher)};
    for (const Entry& entry : vault.entries) {
        if (entry.type != Entry::File)
            continue;
        vault.files.push_back(&entry);
        // Wrong sizes may add up to more than a number holds; it only serves to show the progress.
        vault.bytes = std::min(vault.bytes + entry.size, MostBytes);
    }
    return vault;
}

QSharedPointer<QFile> openSealed(const OpenedVault& vault, const Entry& entry)
{
    const auto sealed = QSharedPointer<QFile>::create(sealedPath(vault.path, entry));
    const FileState state = openToRead(*sealed, QStringLiteral("its sealed file %1: ").arg(entry.sealedName));
    if (state.size != vault.cipher.sealedSize(entry.size))
        throw InvalidData(QStringLiteral("damaged: its sealed file %1 has a wrong size").arg(entry.sealedName));
    return sealed;
}

/// Hands the plain text of a file to `sink`. Throws if that turns out not to be what was sealed, which is known for
/// sure only at the end.
void unseal(const OpenedVault& vault, const Entry& entry, const QSharedPointer<QFile>& sealed, Report& report,
    const Cipher::Sink& sink)
{
    qint64 count = 0;
    TreeHash hash;
    vault.cipher.run(Cipher::Decrypt, entry.iv, sealed, [&](const char* data, qint64 size) {
        hash.addData(data, size);
        count += size;
        report.advance(size);
        sink(data, size);
    });
    if (count != entry.size || hash.finish() != entry.treeHash)
        throw InvalidData(QStringLiteral("damaged: its sealed file %1 is not what was written").arg(entry.sealedName));
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

/// Files in the data folder that belong to no entry.
void reportSurplus(const OpenedVault& vault, Report& report)
{
    QSet<QString> expected;
    for (const Entry* file : vault.files)
        expected.insert(file->sealedName);
    std::error_code error;
    fs::directory_iterator item(nativePath(dataFolder(vault.path)), error);
    for (; !error && item != fs::directory_iterator(); item.increment(error)) {
        const QString name = QString::fromStdString(item->path().filename());
        if (!expected.contains(name))
            report.problem(QStringLiteral("data/") + name, QStringLiteral("surplus: it belongs to no entry"));
    }
    if (error)
        report.problem(QStringLiteral("data"), QString::fromStdString(error.message()));
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
        forEach(Entry::Folder, [this](const Entry& entry) { makeFolder(placeOf(entry)); });
    }

    /// A file appears under its name once it is complete.
    void putFile(const Entry& entry)
    {
        const QSharedPointer<QFile> sealed = openSealed(m_vault, entry);
        const QString partPath = m_parts.filePath(entry.sealedName);
        NewFile part(partPath);
        part.reserve(entry.size);
        unseal(m_vault, entry, sealed, m_report, [&part](const char* data, qint64 size) { part.write(data, size); });
        part.close();
        setModified(partPath, entry.modified);
        setPermissions(partPath, entry.permissions);
        // One at a time: where case does not count, two names may be one.
        const std::lock_guard<std::mutex> lock(m_placing);
        part.keepAs(placeOf(entry));
    }

    /// Links come after the files, so that nothing is ever written through one.
    void makeLinks()
    {
        forEach(Entry::Link, [this](const Entry& entry) {
            std::error_code error;
            fs::create_symlink(nativePath(entry.target), nativePath(placeOf(entry)), error);
            if (error)
                throw Base(QString::fromStdString(error.message()));
            setModified(placeOf(entry), entry.modified);
        });
    }

    /// Folders get their times and permissions last and the deepest first: filling one changes its time, and may be
    /// forbidden afterwards.
    void finishFolders()
    {
        for (auto entry = m_vault.entries.rbegin(); entry != m_vault.entries.rend(); ++entry) {
            if (entry->type != Entry::Folder)
                continue;
            m_report.attempt(entry->path, [&] {
                setModified(placeOf(*entry), entry->modified);
                setPermissions(placeOf(*entry), entry->permissions);
            });
        }
    }

private:
    QString placeOf(const Entry& entry) const { return m_target + '/' + entry.path; }

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
    static constexpr char Types[] = "-dl"; // in the order of Entry::Type
    QString text(1, QLatin1Char(Types[entry.type]));
    for (int bit = 8; bit >= 0; --bit)
        text += QLatin1Char(entry.permissions >> bit & 1 ? "xwr"[bit % 3] : '-');
    if (entry.permissions & S_ISVTX)
        text[9] = entry.permissions & 1 ? 't' : 'T';
    return text;
}

} // namespace

void openVault(const QString& vaultPath, const QString& target, const Options& options, Report& report)
{
    const OpenedVault vault = unlock(vaultPath, options);
    prepareEmptyFolder(target, vaultPath);
    report.begin(QStringLiteral("opening"), qint64(vault.files.size()), vault.bytes);
    Restoration restoration(vault, target, report);
    restoration.makeFolders();
    unsealAll(vault, options, report, [&](const Entry& entry) { restoration.putFile(entry); });
    restoration.makeLinks();
    restoration.finishFolders();
    report.finish(QStringLiteral("opened"));
}

void verifyVault(const QString& vaultPath, const Options& options, Report& report)
{
    const OpenedVault vault = unlock(vaultPath, options);
    report.begin(QStringLiteral("verifying"), qint64(vault.files.size()), vault.bytes);
    unsealAll(vault, options, report, [&](const Entry& entry) {
        unseal(vault, entry, openSealed(vault, entry), report, [](const char*, qint64) {});
    });
    reportSurplus(vault, report);
    report.finish(QStringLiteral("verified"));
}

void listVault(const QString& vaultPath, const Options& options)
{
    const OpenedVault vault = unlock(vaultPath, options);
    for (const Entry& entry : vault.entries) {
        stopIfInterrupted();
        const QString size = entry.type == Entry::File ? sizeText(entry.size) : QString();
        const QDateTime modified = QDateTime::fromMSecsSinceEpoch(entry.modified, Qt::UTC);
        const QString target = entry.type == Entry::Link ? QStringLiteral(" -> ") + printable(entry.target) : QString();
        print(QStringLiteral("%1 %2 %3  ")
                  .arg(permissionText(entry))
                  .arg(size, 10)
                  .arg(modified.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))) +
            printable(entry.path) + target);
    }
}

} // namespace orvseal

#include "Update.h"

#include "Work.h"

namespace fs = std::filesystem;

namespace orvseal {

Update::Update(const QString& vault, const QString& source, Report& report)
    : m_path(vault), m_report(report), m_lock(vault + LockFile)
{
    requireOutside(vault, source);
    requireOutside(source, vault);
    m_isNewDirectory = !exists(vault);
    if (m_isNewDirectory)
        makeDirectory(vault);
    try {
        lock();
        if (exists(vault + HeadFile)) {
            const VaultHead head = readHead(vault);
            if (exists(manifestPath(vault, head))) {
                requireManifest(vault, head); // and "data"
                m_oldHead = head;
            }
        } else {
            for (const auto& item : fs::directory_iterator(nativePath(vault))) {
                if (item.path().filename() != "lock" && item.path().filename() != "vault.json.new")
                    fail("%1 exists and is neither a vault nor an empty directory", vault);
            }
        }
    } catch (...) {
        undo();
        throw;
    }
}

Update::~Update()
{
    try {
        undo();
    } catch (const std::exception& failure) {
        m_report.problem(m_path, QString::fromUtf8(failure.what()));
    }
}

const Entries& Update::readBefore(const VaultKeys& oldKeys, const Entries& known)
{
    if (m_oldHead)
        m_before = readManifest(m_path, *m_oldHead, oldKeys, known);
    return m_before;
}

void Update::begin(const VaultHead& newHead)
{
    m_hasBegun = true;
    if (m_oldHead)
        return;
    if (exists(m_path + HeadFile))
        m_report.count(Report::Incomplete);
    writeHead(m_path, newHead);
    if (!exists(m_path + DataDirectory))
        makeDirectory(m_path + DataDirectory);
    else if (typeOf(m_path + DataDirectory) != fs::file_type::directory)
        fail("\"data\" in %1 is not a directory", m_path);
    removeSurplus(newHead, m_before);
}

void Update::finish(const VaultHead& head, const VaultKeys& keys, const Entries& entries, bool hasChanged)
{
    if (hasChanged) {
        Replacement manifest(manifestPath(m_path, head));
        writeManifest(manifest, head, keys, entries);
        m_hasBegun = false; // a rename that fails may have been done, so nothing may be removed any more
        manifest.commit();
        if (m_oldHead && m_oldHead->json != head.json)
            writeHead(m_path, head); // which names the new manifest
        flushDirectory(m_path);
    }
    m_hasBegun = false;
    m_isNewDirectory = false;
    removeSurplus(head, entries);
}

void Update::lock()
{
    constexpr std::uintmax_t LargestLock = 4096; // bytes; QLockFile reads all of it
    const QString path = m_path + LockFile;
    const fs::file_type type = typeOf(path);
    std::error_code error;
    if (type != fs::file_type::not_found &&
        (type != fs::file_type::regular || fs::file_size(nativePath(path), error) > LargestLock))
        fail("%1 is not a lock file of orvseal", path);
    m_lock.setStaleLockTime(0); // a run may take days; a process that has ended is known by its number
    if (m_lock.tryLock(0))
        return;
    // A run that was killed just after it had created its lock left it empty, without a number. The lock of a run that
    // still goes on is not removed: the system keeps it locked.
    const auto isEmpty = [&] { return fs::file_size(path, error) == 0; };
    constexpr int WritingTime = 100; // ms, more than enough for a run to write its lock
    if (isEmpty() && (m_lock.tryLock(WritingTime) || (isEmpty() && m_lock.removeStaleLockFile() && m_lock.tryLock(0))))
        return;
    if (m_lock.error() == QLockFile::LockFailedError)
        fail("another run is writing to %1; if there is none, remove %2", m_path, path);
    fail("%1 is not a directory, or cannot be written", m_path);
}

/// Removes sealed files that no entry needs, and manifests that the head does not name.
void Update::removeSurplus(const VaultHead& head, const Entries& entries)
{
    for (const QString& name : manifestNames()) {
        if (name != head.manifestName)
            QFile::remove(m_path + '/' + name);
    }
    for (const QString& name : surplusNames(m_path, entries)) {
        if (isSealedName(name) && !QFile::remove(m_path + DataDirectory + '/' + name))
            m_report.problem("data/" + name, "it cannot be removed");
    }
}

void Update::undo()
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

} // namespace orvseal

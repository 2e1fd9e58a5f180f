#include "Scan.h"

#include "Work.h"

#include <Orv/Utility/FileTypeCheck.h>

#include <map>

namespace fs = std::filesystem;

namespace orvseal {

namespace {

/// The entry does not belong in a vault. (Other exceptions: it cannot be read.)
class Skipped : public Orv::Exception::Base {
public:
    using Base::Base;
};

QString decoded(const std::string& name)
{
    return QString::fromStdString('/' + name).mid(1); // Qt would drop a byte-order mark at the beginning
}

/// The manifest is UTF-8: any other name would be restored as a different one.
QString textOf(const std::string& name)
{
    const QString text = decoded(name);
    if (text.toStdString() != name)
        fail<Skipped>("skipped: its name or target is not valid UTF-8");
    return text;
}

/// Throws if it cannot be sealed. Only special files do not belong in a vault; others may be sealed another time.
void requireSuitable(const QString& path)
{
    QString reason;
    const int verdict = Orv::Utility::validateFileType(path, reason);
    if (verdict == Orv::Utility::NotForBackup)
        fail<Skipped>("skipped: %1", reason);
    if (verdict != Orv::Utility::Suitable)
        throw Orv::Exception::Base(reason);
}

class Scan {
public:
    Scan(const QString& source, Report& report) : m_source(source), m_report(report) { }

    ScanResult run()
    {
        m_result.entries.push_back(makeEntry(QString()));
        readDirectory(QString());
        while (!m_directories.empty()) {
            const QString directory = m_directories.back();
            m_directories.pop_back();
            attempt(directory, [&] { readDirectory(directory + '/'); });
        }
        Entries& entries = m_result.entries;
        std::sort(entries.begin(), entries.end(), ByPath());
        // Some file systems list a name twice while its directory changes.
        const auto isSamePath = [](const Entry& a, const Entry& b) { return a.path == b.path; };
        entries.erase(std::unique(entries.begin(), entries.end(), isSamePath), entries.end());
        linkNames();
        return std::move(m_result);
    }

private:
    using FileId = std::pair<dev_t, ino_t>;

    void attempt(const QString& path, const std::function<void()>& work)
    {
        m_report.attempt(path, [&] {
            try {
                work();
            } catch (const Skipped&) {
                throw;
            } catch (...) {
                m_result.failed.insert(path);
                throw;
            }
        });
    }

    /// `prefix` is the directory's relative path and a slash; empty for the source directory itself.
    void readDirectory(const QString& prefix)
    {
        // Qt's own iterator omits names that are not UTF-8, and dangling links by default.
        std::error_code error;
        fs::directory_iterator item(nativePath(m_source + '/' + prefix), error);
        for (; !error && item != fs::directory_iterator(); item.increment(error)) {
            const std::string name = item->path().filename();
            attempt(prefix + decoded(name), [&] { m_result.entries.push_back(makeEntry(prefix + textOf(name))); });
        }
        throwIf(error);
    }

    Entry makeEntry(const QString& path)
    {
        const QString place = path.isEmpty() ? m_source : m_source + '/' + path;
        const FileState state = stateOf(path.isEmpty() ? place + '/' : place); // the source itself may be a link
        Entry entry;
        entry.path = path;
        entry.setAttributes(state);
        if (S_ISLNK(state.st_mode)) {
            entry.type = Entry::Link;
            std::error_code error;
            const fs::path target = fs::read_symlink(nativePath(place), error);
            throwIf(error);
            entry.target = textOf(target);
        } else {
            requireSuitable(place);
        }
        if (S_ISDIR(state.st_mode)) {
            entry.type = Entry::Directory;
            if (!path.isEmpty())
                m_directories.push_back(path);
        } else if (entry.type == Entry::File) {
            entry.size = state.st_size;
            if (state.st_nlink > 1)
                m_ids.emplace(path, FileId(state.st_dev, state.st_ino));
        }
        const Extras extras = extrasOf(nativePath(place).c_str());
        m_report.count(Report::Attributes, extras.attributes);
        m_report.count(Report::AccessList, extras.accessList);
        m_report.count(Report::SetIdBits, (state.st_mode & (S_ISUID | S_ISGID)) != 0);
        return entry;
    }

    /// The first name of a file becomes the file, and its other names become hard links.
    void linkNames()
    {
        std::map<FileId, QString> firstNames;
        for (Entry& entry : m_result.entries) {
            const auto id = m_ids.find(entry.path);
            if (id == m_ids.end() || firstNames.emplace(id->second, entry.path).second)
                continue;
            entry.type = Entry::HardLink;
            entry.target = firstNames[id->second];
            entry.size = 0;
        }
    }

    const QString m_source;
    Report& m_report;
    std::vector<QString> m_directories; // still to be read
    std::map<QString, FileId> m_ids;    // of files with several names
    ScanResult m_result;
};

} // namespace

ScanResult scan(const QString& source, Report& report)
{
    return Scan(source, report).run();
}

} // namespace orvseal

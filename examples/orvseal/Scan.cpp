#include "Scan.h"

#include "Files.h"
#include "System.h"

#include <Orv/Exception.h>
#include <Orv/Utility/FileTypeCheck.h>

#include <algorithm>
#include <map>

using Orv::Exception::Base;
using Orv::Utility::validateFileType;

namespace fs = std::filesystem;

namespace orvseal {

namespace {

/// An entry that is not for a vault, rather than one that cannot be read.
class Skipped : public Base {
public:
    explicit Skipped(const QString& reason) : Base(QStringLiteral("skipped: ") + reason) { }
};

void throwIf(const std::error_code& error)
{
    if (error)
        throw Base(QString::fromStdString(error.message()));
}

/// Behind a slash, because Qt drops a byte-order mark from the beginning of a text.
QString decoded(const std::string& name)
{
    return QString::fromStdString('/' + name).mid(1);
}

/// The manifest holds text: a name that is none would not come back as it was.
QString textOf(const std::string& name)
{
    const QString text = decoded(name);
    if (text.toStdString() != name)
        throw Skipped(QStringLiteral("its name or target is not valid UTF-8"));
    return text;
}

class Scan {
public:
    Scan(const QString& source, const Entries& before, Report& report)
        : m_source(source), m_before(before), m_report(report)
    {
    }

    ScanResult run()
    {
        m_result.entries.push_back(makeEntry(QString()));
        readFolder(QString());
        while (!m_folders.empty()) {
            const QString folder = m_folders.back();
            m_folders.pop_back();
            attempt(folder, [&] { readFolder(folder + '/'); });
        }
        std::sort(m_result.entries.begin(), m_result.entries.end(),
            [](const Entry& a, const Entry& b) { return a.path < b.path; });
        linkNames();
        return std::move(m_result);
    }

private:
    using FileId = std::pair<quint64, quint64>;

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

    /// `prefix` is the folder's relative path with a slash behind it; empty for the source folder itself.
    void readFolder(const QString& prefix)
    {
        // Qt's own iterator leaves out names that are not text, and dangling links unless asked.
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
        const FileState state = stateOf(path.isEmpty() ? place + '/' : place); // the folder may be given as a link
        Entry entry;
        const Entry* old = find(m_before, path);
        entry.path = old != nullptr ? old->path : path;
        entry.permissions = state.permissions;
        entry.modified = state.modified;
        entry.owner = state.owner;
        entry.group = state.group;
        if (state.type == FileState::Link) {
            entry.type = Entry::Link;
            std::error_code error;
            const fs::path target = fs::read_symlink(nativePath(place), error);
            throwIf(error);
            entry.target = textOf(target);
        } else if (QString reason; validateFileType(place, reason) != Orv::Utility::Suitable) {
            throw Skipped(reason);
        } else if (state.type == FileState::Folder) {
            entry.type = Entry::Folder;
            if (!path.isEmpty())
                m_folders.push_back(path);
        } else {
            entry.size = state.size;
            if (state.names > 1)
                m_ids.emplace(path, FileId(state.device, state.inode));
        }
        m_report.countExtras(extrasOf(nativePath(place).c_str()), state.lendsRights);
        return entry;
    }

    /// Of the names of one file, the first is the file, and the others are hard links to it.
    void linkNames()
    {
        std::map<FileId, QString> firstNames;
        for (const auto& [path, id] : m_ids) {
            const auto [first, isFirst] = firstNames.emplace(id, path);
            if (isFirst)
                continue;
            auto& entry = const_cast<Entry&>(*find(m_result.entries, path));
            entry.type = Entry::HardLink;
            entry.target = first->second;
            entry.size = 0;
        }
    }

    const QString m_source;
    const Entries& m_before;
    Report& m_report;
    std::vector<QString> m_folders;  // still to be read
    std::map<QString, FileId> m_ids; // of files with several names
    ScanResult m_result;
};

} // namespace

ScanResult scan(const QString& source, const Entries& before, Report& report)
{
    return Scan(source, before, report).run();
}

} // namespace orvseal

#include "Bench.h"

#include <Orv/Core/FS/FileInfo.h>

#include <QDir>
#include <QTemporaryDir>

#include <filesystem>

using Orv::Core::FS::FileInfo;

namespace {

constexpr int Count = 100000;
constexpr int CountPerDirectory = 1000;

/// The files, created on first use.
class Entries {
public:
    Entries()
    {
        for (int i = 0; i < Count; ++i) {
            const QString directory = m_directory.filePath(QString::number(i / CountPerDirectory));
            if (i % CountPerDirectory == 0)
                QDir().mkdir(directory);
            m_paths += directory + QLatin1Char('/') + QString::number(i);
            QFile(m_paths.last()).open(QIODevice::WriteOnly);
        }
    }
    const QStringList& paths() const { return m_paths; }

private:
    QTemporaryDir m_directory;
    QStringList m_paths;
};

template <class Snapshot> void run(benchmark::State& state, Snapshot snapshot)
{
    static const Entries entries;
    for (auto _ : state) {
        for (const QString& path : entries.paths())
            snapshot(path);
    }
    state.SetItemsProcessed(state.iterations() * Count);
}

void readWithQt(const QString& path)
{
    const QFileInfo info(path);
    benchmark::DoNotOptimize(info.exists());
    benchmark::DoNotOptimize(info.absoluteFilePath());
    benchmark::DoNotOptimize(info.filePath());
    benchmark::DoNotOptimize(info.size());
    benchmark::DoNotOptimize(info.isFile());
    benchmark::DoNotOptimize(info.isDir());
    benchmark::DoNotOptimize(info.fileTime(QFile::FileBirthTime).toUTC());
    benchmark::DoNotOptimize(info.lastModified().toUTC());
    benchmark::DoNotOptimize(info.permissions());
}

void readWithStandardLibrary(const QString& path)
{
    namespace fs = std::filesystem;
    const fs::path place(path.toStdString());
    const fs::file_status status = fs::status(place);
    benchmark::DoNotOptimize(fs::is_directory(status));
    benchmark::DoNotOptimize(fs::is_regular_file(status));
    benchmark::DoNotOptimize(status.permissions());
    benchmark::DoNotOptimize(fs::file_size(place));
    benchmark::DoNotOptimize(fs::last_write_time(place));
    benchmark::DoNotOptimize(fs::absolute(place));
}

} // namespace

void addFileInfoRows()
{
    const std::string subject = "snapshots of 100000 entries";
    addRow(subject, "orvCore", [](benchmark::State& state) {
        run(state, [](const QString& path) { benchmark::DoNotOptimize(FileInfo(path).size()); });
    });
    addRow(subject, "QFileInfo", [](benchmark::State& state) { run(state, readWithQt); });
    addRow(subject, "std::filesystem", [](benchmark::State& state) { run(state, readWithStandardLibrary); });
}

#include "Bench.h"

#include <Orv/Utility/StreamCopy.h>

#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>
#include <vector>

using Orv::Utility::StreamCopy;

namespace {

constexpr int ChunkSize = 1024 * 1024;
constexpr int Chunks = 64;

/// The file to copy, created on first use.
class Files {
public:
    Files()
    {
        QFile file(source());
        if (!m_directory.isValid() || !file.open(QIODevice::WriteOnly))
            return;
        for (int i = 0; i < Chunks; ++i)
            file.write(QByteArray(ChunkSize, char(i)));
    }
    QString source() const { return m_directory.filePath(QStringLiteral("source")); }
    QString target() const { return m_directory.filePath(QStringLiteral("target")); }

private:
    QTemporaryDir m_directory;
};

const Files& files()
{
    static const Files files;
    return files;
}

void runOrvCore(benchmark::State& state)
{
    const QString sourcePath = files().source();
    const QString targetPath = files().target();
    for (auto _ : state) {
        QFile source(sourcePath);
        QFile target(targetPath);
        source.open(QIODevice::ReadOnly);
        target.open(QIODevice::WriteOnly);
        if (StreamCopy(ChunkSize).exec(target, source, 0) != qint64(ChunkSize) * Chunks)
            state.SkipWithError("not copied");
    }
    state.SetBytesProcessed(state.iterations() * ChunkSize * Chunks);
}

void runBaselineLoop(benchmark::State& state)
{
    const QByteArray sourcePath = QFile::encodeName(files().source());
    const QByteArray targetPath = QFile::encodeName(files().target());
    for (auto _ : state) {
        const int source = ::open(sourcePath, O_RDONLY | O_CLOEXEC);
        const int target = ::open(targetPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        std::vector<char> chunk(ChunkSize);
        qint64 copied = 0;
        for (ssize_t size = 0; (size = ::read(source, chunk.data(), chunk.size())) > 0;)
            copied += ::write(target, chunk.data(), size_t(size));
        if (copied != qint64(ChunkSize) * Chunks)
            state.SkipWithError("not copied");
        ::close(source);
        ::close(target);
    }
    state.SetBytesProcessed(state.iterations() * ChunkSize * Chunks);
}

} // namespace

void addStreamCopyRows()
{
    const std::string subject = "copy of a 64 MiB file in 1 MiB chunks";
    // Warm up: the first copies also pay for page faults.
    addRow(subject, "orvCore", runOrvCore)->MinTime(0.3)->MinWarmUpTime(0.3);
    addRow(subject, "read and write", runBaselineLoop)->MinTime(0.3)->MinWarmUpTime(0.3);
}

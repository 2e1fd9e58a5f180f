// The heart of the program, and the place to begin reading: a file goes through the library's encryptor and hash tree
// into a vault, and back again. Vault.h and Manifest.h define a vault; Seal.cpp and Open.cpp handle whole directories.

#include "SealedFile.h"

#include "TreeHash.h"
#include "Work.h"

#include <new>

using Orv::Core::Encryption::EncryptorBase;
using Orv::Exception::InvalidData;

namespace fs = std::filesystem;

namespace orvseal {

namespace {

/// A file that hashes what is read from it, so that it is read only once.
class HashingFile : public QFile {
public:
    using QFile::QFile;

    /// Nothing can be read afterwards.
    QByteArray finishHash() { return m_hash.finish(); }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        const qint64 size = QFile::readData(data, maxSize);
        if (size > 0)
            m_hash.addData(data, size);
        return size;
    }

private:
    TreeHash m_hash;
};

/// One file on its way into the vault.
class SealedFile {
public:
    static constexpr int ChunkSize = 64 * 1024; // bytes; the chunks of a group fit into the processor's cache

    SealedFile(const QString& sourcePath, const QString& vault, const VaultKeys& keys, Entry& entry)
        : m_entry(entry), m_source(QSharedPointer<HashingFile>::create(sourcePath)),
          m_before(openToRead(*m_source, QString())), // the scan may have been long ago
          m_sealed(entry.sealedPath(vault)), m_encryptor(keys.makeEncryptor(VaultKeys::Encrypt, entry.iv, m_source)),
          m_chunk(ChunkSize, Qt::Uninitialized)
    {
    }

    const QString& path() const { return m_entry.path; }
    EncryptorBase* encryptor() { return m_encryptor.get(); }
    char* chunk() { return m_chunk.data(); }

    /// Writes the first `size` bytes of the chunk, which the encryptor gave. Returns whether there is more to come, and
    /// if not, completes the entry.
    bool store(qint64 size, Report& report)
    {
        requireRead(*m_encryptor, *m_source, size);
        requireUnchanged(m_encryptor->bytesRead() <= m_before.st_size); // or it might go on growing for ever
        m_sealed.write(m_chunk.constData(), size);
        report.advance(m_encryptor->bytesRead() - m_reported);
        m_reported = m_encryptor->bytesRead();
        if (!m_encryptor->atEnd())
            return true;
        m_sealed.close();
        const FileState now = stateOf(*m_source);
        requireUnchanged(m_encryptor->bytesRead() == now.st_size && now.st_size == m_before.st_size &&
            modifiedTime(now) == modifiedTime(m_before));
        m_sealed.keep();
        m_entry.size = m_before.st_size;
        m_entry.setAttributes(m_before); // not those of a file that had the name during the scan
        m_entry.treeHash = m_source->finishHash();
        report.fileDone();
        return false;
    }

private:
    static void requireUnchanged(bool unchanged)
    {
        if (!unchanged)
            fail("changed while it was read");
    }

    Entry& m_entry;
    const QSharedPointer<HashingFile> m_source;
    const FileState m_before;
    NewFile m_sealed;
    const std::unique_ptr<EncryptorBase> m_encryptor;
    QByteArray m_chunk;
    qint64 m_reported = 0;
};

} // namespace

void sealTogether(const std::vector<Entry*>& group, const QString& source, const QString& vault, const VaultKeys& keys,
    Report& report)
{
    std::vector<std::unique_ptr<SealedFile>> files;
    for (Entry* entry : group) {
        report.attempt(entry->path,
            [&] { files.push_back(std::make_unique<SealedFile>(source + '/' + entry->path, vault, keys, *entry)); });
    }
    while (!files.empty()) {
        QVector<EncryptorBase*> encryptors;
        QVector<char*> chunks;
        for (const auto& file : files) {
            encryptors.append(file->encryptor());
            chunks.append(file->chunk());
        }
        const QVector<qint64> sizes = EncryptorBase::readTogether(encryptors, chunks, SealedFile::ChunkSize);
        std::size_t unfinished = 0;
        for (std::size_t i = 0; i < files.size(); ++i) {
            bool isUnfinished = false; // not after a failure either
            report.attempt(files[i]->path(), [&] { isUnfinished = files[i]->store(sizes[int(i)], report); });
            if (isUnfinished)
                std::swap(files[unfinished++], files[i]);
        }
        files.resize(unfinished);
    }
}

void unseal(
    const Entry& entry, const QString& vault, const VaultKeys& keys, Report& report, const VaultKeys::Sink& sink)
{
    const auto sealed = QSharedPointer<QFile>::create(entry.sealedPath(vault));
    const QString name = entry.nameInVault();
    std::error_code ignored; // opening the file then gives the reason
    if (fs::symlink_status(nativePath(sealed->fileName()), ignored).type() == fs::file_type::not_found)
        fail<InvalidData>("damaged: its sealed file %1 is missing", name);
    if (openToRead(*sealed, "its sealed file " + name + ": ").st_size != keys.sealedSize(entry.size))
        fail<InvalidData>("damaged: its sealed file %1 has a wrong size", name);

    bool isPadded = true;
    qint64 count = 0;
    TreeHash hash;
    try {
        keys.run(VaultKeys::Decrypt, entry.iv, sealed, [&](const char* data, qint64 size) {
            hash.addData(data, size);
            count += size;
            report.advance(size);
            sink(data, size);
        });
    } catch (const Orv::Exception::Base&) {
        throw; // a reason of ours
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        isPadded = false; // the cipher library met a wrong padding
    }
    if (!isPadded || count != entry.size || hash.finish() != entry.treeHash)
        fail<InvalidData>("damaged: its sealed file %1 is not what was written", name);
}

} // namespace orvseal

#include "Cipher.h"

#include "Work.h"

#include <Orv/Core/Encryption/Key.h>

using namespace Orv::Core::Encryption;

namespace orvseal {

Cipher::Cipher(Algorithm algorithm, QByteArray key) : m_algorithm(algorithm), m_key(std::move(key))
{
}

QByteArray Cipher::randomIv() const
{
    return Key::random(Key::ivLength(m_algorithm));
}

qint64 Cipher::sealedSize(qint64 plainSize) const
{
    const qint64 blockSize = Key::ivLength(m_algorithm);
    return (plainSize / blockSize + 1) * blockSize;
}

std::unique_ptr<EncryptorBase> Cipher::makeEncryptor(
    Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source) const
{
    std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(m_algorithm, direction == Encrypt, Cbc));
    encryptor->setKey(m_key);
    encryptor->setIv(iv);
    encryptor->setSource(source);
    encryptor->init();
    return encryptor;
}

void Cipher::run(
    Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source, const Sink& sink) const
{
    const std::unique_ptr<EncryptorBase> encryptor = makeEncryptor(direction, iv, source);
    constexpr int ChunkSize = 256 * 1024; // bytes; one for each job
    QByteArray chunk(ChunkSize, Qt::Uninitialized);
    while (!encryptor->atEnd()) {
        stopIfInterrupted();
        const qint64 size = encryptor->readData(chunk.data(), chunk.size());
        requireRead(*encryptor, *source, size);
        sink(chunk.constData(), size);
    }
}

void requireRead(const EncryptorBase& encryptor, const QIODevice& source, qint64 size)
{
    if (encryptor.sourceFailed())
        throw Orv::Exception::Base(source.errorString());
    // A file returns as much as is requested until its end, so an empty read before the end is no pause.
    if (size == 0 && !encryptor.atEnd())
        fail("it became shorter while it was read");
}

} // namespace orvseal

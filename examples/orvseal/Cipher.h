#pragma once

#include <Orv/Core/Encryption/EncryptorBase.h>

#include <QByteArray>
#include <QIODevice>
#include <QSharedPointer>

#include <functional>
#include <memory>

namespace orvseal {

/// The algorithm and the key of a vault. Each stream has its own IV. Thread-safe.
class Cipher {
public:
    using Sink = std::function<void(const char* data, qint64 size)>;
    enum Direction { Decrypt, Encrypt };

    Cipher(Orv::Core::Encryption::Algorithm algorithm, QByteArray key);

    QByteArray randomIv() const;
    /// The encrypted size of `plainSize` bytes: the padding fills the last block, or is a whole one.
    qint64 sealedSize(qint64 plainSize) const;

    /// An encryptor of `source` that is ready to be read.
    std::unique_ptr<Orv::Core::Encryption::EncryptorBase> makeEncryptor(
        Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source) const;

    /// Encrypts or decrypts all of `source` and passes the result to `sink` in chunks. Throws what the library and the
    /// sink throw, and if the source fails or a signal has been received.
    void run(
        Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source, const Sink& sink) const;

private:
    const Orv::Core::Encryption::Algorithm m_algorithm;
    const QByteArray m_key;
};

/// Checks the last read of `encryptor`, which returned `size` bytes. Throws if its source, a file, failed or became
/// shorter.
void requireRead(const Orv::Core::Encryption::EncryptorBase& encryptor, const QIODevice& source, qint64 size);

} // namespace orvseal

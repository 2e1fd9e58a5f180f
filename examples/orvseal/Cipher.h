#pragma once

#include <Orv/Core/Encryption/EncryptorBase.h>

#include <QByteArray>
#include <QIODevice>
#include <QSharedPointer>

#include <functional>
#include <memory>

namespace orvseal {

/// The algorithm and the key of a vault. Every stream has an IV of its own. Thread-safe.
class Cipher {
public:
    using Sink = std::function<void(const char* data, qint64 size)>;
    enum Direction { Decrypt, Encrypt };

    Cipher(Orv::Core::Encryption::Algorithm algorithm, QByteArray key);

    QByteArray randomIv() const;
    /// How long a stream of `plainSize` bytes becomes: the padding fills the last block, or is one.
    qint64 sealedSize(qint64 plainSize) const;

    /// An encryptor of `source` that is ready to be read.
    std::unique_ptr<Orv::Core::Encryption::EncryptorBase> makeEncryptor(
        Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source) const;

    /// Sends all of `source` through the cipher and hands the result to `sink`, portion by portion. Throws what the
    /// library and the sink throw, and when the source fails or an interrupt has come.
    void run(
        Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source, const Sink& sink) const;

private:
    const Orv::Core::Encryption::Algorithm m_algorithm;
    const QByteArray m_key;
};

/// Throws if the last read of `encryptor` gave `size` bytes because its source, which is a file, failed or became
/// shorter than it was.
void requireRead(const Orv::Core::Encryption::EncryptorBase& encryptor, const QIODevice& source, qint64 size);

} // namespace orvseal

#include "Cipher.h"

#include "Work.h"

#include <Orv/Core/Encryption/EncryptorBase.h>
#include <Orv/Core/Encryption/Key.h>

#include <QFileDevice>

#include <memory>

using namespace Orv::Core::Encryption;
using Orv::Exception::Base;

namespace orvseal {

namespace {

constexpr int PortionSize = 256 * 1024; // bytes; several jobs have one each

/// Throws if the source has failed, which can look like its end.
void requireRead(const QIODevice& source)
{
    const auto* file = qobject_cast<const QFileDevice*>(&source);
    if (file && file->error() != QFileDevice::NoError)
        throw Base(file->errorString());
}

} // namespace

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

void Cipher::run(
    Direction direction, const QByteArray& iv, const QSharedPointer<QIODevice>& source, const Sink& sink) const
{
    const std::unique_ptr<EncryptorBase> encryptor(EncryptorBase::create(m_algorithm, direction == Encrypt, Cbc));
    encryptor->setKey(m_key);
    encryptor->setIv(iv);
    encryptor->setSource(source);
    encryptor->init();

    QByteArray portion(PortionSize, Qt::Uninitialized);
    while (!encryptor->atEnd()) {
        stopIfInterrupted();
        const qint64 size = encryptor->readData(portion.data(), portion.size());
        // Files give all they are asked for until they end: no bytes before the end are a failure, not a pause.
        if (size == 0 && !encryptor->atEnd()) {
            requireRead(*source);
            throw Base(QStringLiteral("it became shorter while it was read"));
        }
        sink(portion.constData(), size);
    }
    requireRead(*source);
}

} // namespace orvseal

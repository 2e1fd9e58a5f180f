#include <Orv/Core/Encryption/EncryptorBase.h>

#include "Core/Encryption/StreamTransformation_p.h"

#include <Orv/Core/Encryption/Encryptors.h>
#include <Orv/Core/Encryption/Key.h>

#include <algorithm>
#include <cstring>

using CryptoPP::byte;
using CryptoPP::StreamTransformationFilter;

namespace Orv::Core::Encryption {

EncryptorBase* EncryptorBase::create(Algorithm algorithm, bool encrypt, Type type)
{
    switch (algorithm) {
    case Des:
        return new EncryptorDes(encrypt, type);
    case Des112:
        return new EncryptorDes112(encrypt, type);
    case Des3:
        return new EncryptorDes3(encrypt, type);
    case Aes128:
        return new EncryptorAes128(encrypt, type);
    case Aes192:
        return new EncryptorAes192(encrypt, type);
    case Aes256:
        return new EncryptorAes256(encrypt, type);
    default:
        return nullptr;
    }
}

EncryptorBase::EncryptorBase(Algorithm algorithm, bool encrypt, Type type)
    : m_algorithm(algorithm), m_type(type), m_encrypt(encrypt),
      m_transformation(std::make_unique<StreamTransformation>())
{
}

EncryptorBase::~EncryptorBase() = default;

void EncryptorBase::setSource(QSharedPointer<QIODevice> source)
{
    m_source = std::move(source);
}

void EncryptorBase::setKey(const QByteArray& key)
{
    m_key = key;
}

void EncryptorBase::setIv(const QByteArray& iv)
{
    if (iv.isEmpty() && m_type != Ecb)
        generateIv();
    else
        m_iv = iv;
}

void EncryptorBase::appendRandomIv(unsigned short size)
{
    m_iv += Key::random(size);
}

bool EncryptorBase::init()
{
    if (!m_transformation->mode)
        return false;
    m_transformation->filter = std::make_unique<StreamTransformationFilter>(
        *m_transformation->mode, nullptr, StreamTransformationFilter::PKCS_PADDING);
    return true;
}

qint64 EncryptorBase::readData(char* data, qint64 maxSize)
{
    if (m_source->atEnd() && m_finished) {
        const int size = m_buffer.size();
        std::memcpy(data, m_buffer.constData(), size);
        m_buffer.clear();
        return size;
    }

    const qint64 shortfall = std::max<qint64>(0, maxSize - m_buffer.size());
    const qint64 request = (shortfall + m_blockSize - 1) / m_blockSize * m_blockSize;
    const QByteArray chunk = m_source->read(request);

    StreamTransformationFilter& filter = *m_transformation->filter;
    filter.Put(reinterpret_cast<const byte*>(chunk.constData()), chunk.size());
    if (m_source->atEnd()) {
        filter.MessageEnd();
        m_finished = true;
    }

    std::array<char, 1024> scratch;
    while (const std::size_t got = filter.Get(reinterpret_cast<byte*>(scratch.data()), scratch.size()))
        m_buffer.append(scratch.data(), static_cast<int>(got));

    const int count = static_cast<int>(std::clamp<qint64>(maxSize, 0, m_buffer.size()));
    std::memcpy(data, m_buffer.constData(), count);
    m_buffer.remove(0, count);
    return count;
}

} // namespace Orv::Core::Encryption

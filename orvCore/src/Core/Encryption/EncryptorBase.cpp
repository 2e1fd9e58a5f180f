#include <Orv/Core/Encryption/EncryptorBase.h>

#include "Core/Encryption/StreamTransformation_p.h"

#include <Orv/Core/Encryption/Encryptors.h>
#include <Orv/Core/Encryption/Key.h>

#include <QScopeGuard>

#include <algorithm>

using CryptoPP::byte;
using CryptoPP::StreamTransformationFilter;

namespace Orv::Core::Encryption {

namespace {
constexpr qint64 LargestRead = 1 << 30; // bytes; a byte array cannot hold more than twice as many
}

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
        std::copy_n(m_buffer.constData(), size, data);
        m_buffer.clear();
        return size;
    }

    const qint64 shortfall = std::max<qint64>(0, maxSize - m_buffer.size());
    const qint64 blocks = shortfall / m_blockSize + (shortfall % m_blockSize != 0);
    const qint64 request = std::min(blocks, LargestRead / m_blockSize) * m_blockSize;
    const qint64 direct = transformFromSource(request, data, maxSize);

    const int count = static_cast<int>(std::clamp<qint64>(maxSize - direct, 0, m_buffer.size()));
    std::copy_n(m_buffer.constData(), count, data + direct);
    m_buffer.remove(0, count);
    return direct + count;
}

/// Reads `request` bytes from the source. What they become is appended to the buffer; but if the buffer is empty and
/// the stream is not at its end, whole blocks that fit go straight to `data`, with room for `room` bytes, and their
/// size is returned.
///
/// Only what has to wait for the end of the source passes through the filter, which adds or checks the padding.
/// (Sending everything through the filter is the plain way and gives the same bytes from each call, but copies them
/// several times over.)
qint64 EncryptorBase::transformFromSource(qint64 request, char* data, qint64 room)
{
    StreamTransformation& transformation = *m_transformation;
    const int buffered = m_buffer.size();
    const int held = transformation.held;
    const int size = buffered + held + static_cast<int>(request);
    m_buffer.reserve(size); // also keeps the memory when the buffer runs empty
    m_buffer.resize(size);
    int filled = buffered; // nothing of a failed call is handed out
    const auto trim = qScopeGuard([this, &filled] { m_buffer.resize(filled); });
    auto* area = reinterpret_cast<byte*>(m_buffer.data()) + buffered;
    std::copy_n(transformation.heldBytes.data(), held, area);

    const qint64 received = m_source->read(reinterpret_cast<char*>(area + held), request);
    const int available = held + static_cast<int>(std::max<qint64>(0, received));
    const int whole = transformation.ended ? 0 : readyBytes(available);

    const bool atEnd = m_source->atEnd();
    if (atEnd || transformation.ended) {
        transformation.mode->ProcessData(area, area, whole);
        filled = finishThroughFilter(buffered, whole, available, atEnd);
        return 0;
    }
    const qint64 wholeRoom = buffered == 0 ? room / m_blockSize * m_blockSize : 0;
    const int direct = static_cast<int>(std::clamp<qint64>(wholeRoom, 0, whole));
    transformation.mode->ProcessData(reinterpret_cast<byte*>(data), area, direct);
    transformation.mode->ProcessData(area + direct, area + direct, whole - direct);
    transformation.held = available - whole;
    std::copy_n(area + whole, transformation.held, transformation.heldBytes.data());
    std::copy(area + direct, area + whole, area);
    filled = buffered + whole - direct;
    return direct;
}

/// How many of the bytes at hand can be transformed now: all whole blocks, but for the last one while decrypting, which
/// may turn out to hold the padding.
int EncryptorBase::readyBytes(int available) const
{
    const int kept = m_encrypt ? 0 : m_blockSize;
    return std::max(0, available - kept) / m_blockSize * m_blockSize;
}

/// The buffer holds `buffered` bytes from before, then `whole` bytes just transformed, then, up to `available`, the
/// ones for the filter.
///
/// Returns how many bytes the buffer holds then. A sequential source may grow again after its end; the filter then goes
/// on as the cipher library means it to, which no longer gives output once a message was complete.
int EncryptorBase::finishThroughFilter(int buffered, int whole, int available, bool atEnd)
{
    StreamTransformation& transformation = *m_transformation;
    StreamTransformationFilter& filter = *transformation.filter;
    const auto* area = reinterpret_cast<const byte*>(m_buffer.constData()) + buffered;
    filter.Put(area + whole, available - whole);
    transformation.held = 0;
    transformation.ended = true;
    if (atEnd) {
        try {
            filter.MessageEnd();
        } catch (...) {
            // For a later call that may complete the stream
            filter.AttachedTransformation()->Put(area, whole);
            throw;
        }
        m_finished = true;
    }

    const auto rest = static_cast<int>(filter.MaxRetrievable());
    m_buffer.resize(buffered + whole + rest);
    filter.Get(reinterpret_cast<byte*>(m_buffer.data()) + buffered + whole, rest);
    return m_buffer.size();
}

} // namespace Orv::Core::Encryption

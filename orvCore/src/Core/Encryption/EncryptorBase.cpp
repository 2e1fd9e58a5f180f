#include <Orv/Core/Encryption/EncryptorBase.h>

#include "Core/Encryption/StreamTransformation_p.h"
#include "Core/Encryption/TransformTogether_p.h"

#include <Orv/Core/Encryption/Key.h>
#include <Orv/Exception.h>

#include <QBuffer>
#include <QFileDevice>

#include <algorithm>
#include <set>
#include <typeinfo>

using CryptoPP::byte;
using CryptoPP::StreamTransformationFilter;

namespace Orv::Core::Encryption {

namespace {

constexpr qint64 LargestRead = 1 << 30; // bytes
constexpr int WriteToChunk = 64 * 1024; // bytes

std::size_t roundDown(std::size_t size, std::size_t blockSize)
{
    return size / blockSize * blockSize;
}

} // namespace

/// The result of one read of the source.
struct EncryptorBase::Input {
    const byte* data = nullptr;
    std::size_t size = 0;

    Input takeFirst(std::size_t count)
    {
        const Input first = {data, count};
        data += count;
        size -= count;
        return first;
    }
};

/// The state of a call of readData(), which has three steps: read the source (beginRead), transform `blocks`, all whole
/// blocks that fit into the caller's buffer, and store the remainder (finishRead).
struct EncryptorBase::Pass {
    char* data;
    qint64 room;
    qint64 count = 0;  // bytes already in `data`
    Input blocks = {}; // to be transformed into `data` after these bytes
    Input rest = {};
    std::size_t restReady = 0; // bytes of `rest` that can be transformed now
    bool atEnd = false;        // the source is at its end
};

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
    m_transformation->key.assign(key.begin(), key.end());
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
    StreamTransformation& stream = *m_transformation;
    stream.input.clear();
    stream.output.clear();
    m_paddingDone = false;
    m_sourceFailed = false;
    m_bytesRead = 0;
    m_memoryPosition = -1;
    if (!stream.mode)
        return false;
    stream.filter =
        std::make_unique<StreamTransformationFilter>(*stream.mode, nullptr, StreamTransformationFilter::PKCS_PADDING);
    return true;
}

bool EncryptorBase::atEnd() const
{
    return m_transformation->output.empty() && m_paddingDone;
}

qint64 EncryptorBase::readData(char* data, qint64 maxSize)
{
    Pass pass = beginRead(data, maxSize);
    m_transformation->mode->ProcessData(reinterpret_cast<byte*>(data + pass.count), pass.blocks.data, pass.blocks.size);
    return finishRead(pass);
}

/// Reads the source. Returns buffered output first, then the blocks that began in earlier input.
EncryptorBase::Pass EncryptorBase::beginRead(char* data, qint64 maxSize)
{
    StreamTransformation& stream = *m_transformation;
    Pass pass{data, maxSize};
    if (m_source->atEnd() && m_paddingDone) {
        pass.count = returnOutput(data, stream.output.size());
        return pass;
    }

    const qint64 shortfall = std::max<qint64>(0, maxSize - qint64(stream.output.size()));
    const qint64 blocks = shortfall / m_blockSize + (shortfall % m_blockSize != 0);
    pass.rest = readSource(std::min(blocks, LargestRead / m_blockSize) * m_blockSize);
    pass.atEnd = m_source->atEnd();
    if (m_paddingDone)
        return pass; // the source grew after its end: no more output
    pass.count = returnOutput(data, maxSize);

    std::size_t ready = readyBytes(stream.input.size() + pass.rest.size);
    if (!stream.input.empty()) {
        const std::size_t begun = std::min(ready, roundDown(stream.input.size() + m_blockSize - 1, m_blockSize));
        const Input missing = pass.rest.takeFirst(std::max(begun, stream.input.size()) - stream.input.size());
        stream.input.insert(stream.input.end(), missing.data, missing.data + missing.size);
        transformToOutput(begun);
        pass.count += returnOutput(data + pass.count, maxSize - pass.count);
        ready -= begun;
    }
    const auto room = static_cast<std::size_t>(std::max<qint64>(0, maxSize - pass.count));
    pass.blocks = pass.rest.takeFirst(std::min(ready, roundDown(room, m_blockSize)));
    pass.restReady = ready - pass.blocks.size;
    return pass;
}

/// Stores the input that does not fit or cannot be transformed yet. Returns the result of the call.
qint64 EncryptorBase::finishRead(Pass& pass)
{
    StreamTransformation& stream = *m_transformation;
    pass.count += static_cast<qint64>(pass.blocks.size);
    stream.input.insert(stream.input.end(), pass.rest.data, pass.rest.data + pass.rest.size);
    transformToOutput(pass.restReady);
    if (pass.atEnd || m_paddingDone)
        transformLast(pass.atEnd);
    pass.count += returnOutput(pass.data + pass.count, pass.room - pass.count);
    return pass.count;
}

/// Reads up to `size` bytes of the source.
EncryptorBase::Input EncryptorBase::readSource(qint64 size)
{
    Input input = readMemory(size);
    if (input.size == 0) {
        SecretBytes& chunk = m_transformation->chunk;
        if (chunk.size() < static_cast<std::size_t>(size))
            chunk = SecretBytes(static_cast<std::size_t>(size));
        const qint64 received = m_source->read(reinterpret_cast<char*>(chunk.data()), size);
        input = {chunk.data(), static_cast<std::size_t>(std::max<qint64>(0, received))};
        const auto* const file = qobject_cast<const QFileDevice*>(m_source.data());
        if (received < 0 || !m_source->isOpen() || (file && file->error() != QFileDevice::NoError))
            m_sourceFailed = true;
        if (received > 0)
            m_memoryPosition = std::max(m_memoryPosition, m_source->pos());
    }
    if (!m_paddingDone) // later bytes are not part of the stream
        m_bytesRead += static_cast<qint64>(input.size);
    return input;
}

/// Returns the bytes of a QBuffer in place, because copying them takes up to half as long as decrypting them. Empty if
/// read() might return other bytes: in text mode, for a subclass, and after ungetChar(), which moves the position back.
EncryptorBase::Input EncryptorBase::readMemory(qint64 size)
{
    QIODevice& source = *m_source;
    if (typeid(source) != typeid(QBuffer) || !source.isReadable() || source.isTextModeEnabled() ||
        source.isTransactionStarted() || source.pos() != m_memoryPosition)
        return {};
    const QByteArray& content = static_cast<const QBuffer&>(source).data();
    const qint64 given = std::clamp<qint64>(content.size() - m_memoryPosition, 0, size);
    const auto* const data = reinterpret_cast<const byte*>(content.constData()) + m_memoryPosition;
    m_memoryPosition += given;
    source.seek(m_memoryPosition);
    return {data, static_cast<std::size_t>(given)};
}

/// The number of `available` bytes that can be transformed now: all whole blocks; while decrypting, all but the last,
/// which may contain the padding.
std::size_t EncryptorBase::readyBytes(std::size_t available) const
{
    const std::size_t kept = m_encrypt ? 0 : m_blockSize;
    return available < kept ? 0 : roundDown(available - kept, m_blockSize);
}

/// Transforms the first `size` bytes of the input.
void EncryptorBase::transformToOutput(std::size_t size)
{
    StreamTransformation& stream = *m_transformation;
    const std::size_t before = stream.output.size();
    stream.output.resize(before + size);
    stream.mode->ProcessData(stream.output.data() + before, stream.input.data(), size);
    stream.input.erase(stream.input.begin(), stream.input.begin() + static_cast<std::ptrdiff_t>(size));
}

/// Sends the rest of the input through the padding filter, which adds the padding or checks and removes it.
void EncryptorBase::transformLast(bool atEnd)
{
    StreamTransformation& stream = *m_transformation;
    stream.filter->Put(stream.input.data(), stream.input.size());
    stream.input.clear();
    if (!atEnd)
        return;
    stream.filter->MessageEnd(); // throws on wrong padding
    m_paddingDone = true;

    const auto size = static_cast<std::size_t>(stream.filter->MaxRetrievable());
    const std::size_t before = stream.output.size();
    stream.output.resize(before + size);
    stream.filter->Get(stream.output.data() + before, size);
}

qint64 EncryptorBase::returnOutput(char* data, qint64 room)
{
    SecretBytes& output = m_transformation->output;
    const auto count = std::clamp<qint64>(room, 0, static_cast<qint64>(output.size()));
    std::copy_n(output.data(), count, data);
    output.erase(output.begin(), output.begin() + count);
    return count;
}

QVector<qint64> EncryptorBase::readTogether(
    const QVector<EncryptorBase*>& encryptors, const QVector<char*>& data, qint64 maxSize)
{
    if (encryptors.size() != data.size())
        throw Exception::Base(QStringLiteral("As many data areas as encryptors are needed"));
    if (std::set<EncryptorBase*>(encryptors.begin(), encryptors.end()).size() != std::size_t(encryptors.size()))
        throw Exception::Base(QStringLiteral("An encryptor is listed twice"));

    std::vector<Pass> passes;
    std::vector<BlockRun> runs;
    for (int i = 0; i < encryptors.size(); ++i) {
        const Pass& pass = passes.emplace_back(encryptors[i]->beginRead(data[i], maxSize));
        runs.push_back({encryptors[i]->m_transformation.get(), pass.blocks.data,
            reinterpret_cast<byte*>(pass.data + pass.count), pass.blocks.size});
    }
    transformTogether(std::move(runs));

    QVector<qint64> counts;
    for (int i = 0; i < encryptors.size(); ++i)
        counts.append(encryptors[i]->finishRead(passes[static_cast<std::size_t>(i)]));
    return counts;
}

bool EncryptorBase::writeTo(QIODevice& destination)
{
    SecretBytes chunk(WriteToChunk);
    auto* const data = reinterpret_cast<char*>(chunk.data());
    while (!atEnd()) {
        const qint64 readBefore = m_bytesRead;
        const qint64 size = readData(data, WriteToChunk);
        const bool isStalled = size == 0 && m_bytesRead == readBefore && !atEnd();
        if (m_sourceFailed || isStalled || destination.write(data, size) != size)
            return false;
    }
    auto* const file = qobject_cast<QFileDevice*>(&destination);
    return !m_sourceFailed && (!file || file->flush());
}

} // namespace Orv::Core::Encryption

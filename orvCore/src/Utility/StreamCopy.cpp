#include <Orv/Utility/StreamCopy.h>

#include <Orv/Core/ModuleName.h>
#include <Orv/Log/OrvDebug.h>

#include <QByteArray>

#include <algorithm>
#include <limits>

namespace Orv::Utility {

namespace {
/// The maximum size of `QIODevice::read(qint64)`, which returns a byte array.
constexpr qint64 LargestRead = std::numeric_limits<int>::max() - qint64(sizeof(QByteArrayData)) - 1;
} // namespace

qint64 StreamCopy::exec(QIODevice& destination, QIODevice& source, qint64 maxBytes)
{
    if (!destination.isWritable() || !source.isReadable())
        return -1;
    if (maxBytes == 0)
        maxBytes = std::numeric_limits<qint64>::max();

    const qint64 largest = std::max<qint64>(0, std::min({m_chunkSize, maxBytes, LargestRead}));
    QByteArray chunk;
    qint64 copied = 0;
    while (!source.atEnd() && copied < maxBytes) {
        if (chunk.size() < largest)
            chunk = QByteArray(int(largest), Qt::Uninitialized); // allocated once; not for an empty source
        const qint64 size = source.read(chunk.data(), std::min(largest, maxBytes - copied));
        if (size < 0)
            break;
        if (destination.write(chunk.constData(), size) != size) {
            OrvDebug(CORE_MODULE_NAME).error() << "StreamCopy: error write to destination stream";
            return -1;
        }
        copied += size;
    }
    return copied;
}

} // namespace Orv::Utility

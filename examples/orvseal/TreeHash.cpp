#include "TreeHash.h"

#include <algorithm>

namespace orvseal {

namespace {
constexpr qint64 FullPart = 1024 * 1024; // bytes
}

void TreeHash::addData(const char* data, qint64 size)
{
    while (size > 0) {
        const qint64 count = std::min(size, FullPart - m_partSize);
        m_part.addData(QByteArray::fromRawData(data, int(count)));
        m_partSize += count;
        if (m_partSize == FullPart)
            endPart();
        data += count;
        size -= count;
    }
}

QByteArray TreeHash::finish()
{
    if (m_partSize > 0 || m_tree.getCurrentState().isEmpty())
        endPart();
    m_tree.finish();
    return m_tree.getFinalHash();
}

void TreeHash::endPart()
{
    m_tree.addNextHash(m_part.result());
    m_part.reset();
    m_partSize = 0;
}

} // namespace orvseal

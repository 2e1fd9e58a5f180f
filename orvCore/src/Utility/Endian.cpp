#include <Orv/Utility/Endian.h>

#include <algorithm>
#include <limits>

namespace Orv::Utitlity {

namespace {

/// Whether a byte array can have `size` bytes at `offset`.
bool isValidRange(int offset, int size)
{
    const bool isValid = offset >= 0 && offset <= std::numeric_limits<int>::max() - size;
    Q_ASSERT_X(isValid, "Endian", "invalid range of a byte array");
    return isValid;
}

} // namespace

bool Endian::grow(QByteArray& data, int offset, int size)
{
    if (!isValidRange(offset, size))
        return false;
    const qsizetype oldSize = data.size();
    if (oldSize < offset + size) {
        data.resize(offset + size);
        std::fill(data.begin() + oldSize, data.end(), '\0');
    }
    return true;
}

void Endian::readOutside(const QByteArray& data, int offset, void* target, int size)
{
    Q_ASSERT_X(holds(data, offset, size), "Endian", "reading outside the array");
    if (offset < 0 || offset >= data.size())
        return;
    std::copy(data.begin() + offset, data.end(), static_cast<char*>(target));
}

void Endian::WriteBytesLittleEndian(const QUuid& id, QByteArray& data, int offset)
{
    if (!isValidRange(offset, 16))
        return;
    WriteBytesLittleEndian(id.data1, data, offset);
    WriteBytesLittleEndian(id.data2, data, offset + 4);
    WriteBytesLittleEndian(id.data3, data, offset + 6);
    for (int i = 0; i < 8 && holds(data, offset + 8 + i, 1); ++i)
        data.data()[offset + 8 + i] = static_cast<char>(id.data4[i]);
}

QUuid Endian::ToGuidLittleEndian(const QByteArray& data, int offset)
{
    if (!isValidRange(offset, 16))
        return {};
    const QByteArray tail = BytesToString(data, offset + 8, 8);
    QUuid id(ToUInt32LittleEndian(data, offset), ToUInt16LittleEndian(data, offset + 4),
        ToUInt16LittleEndian(data, offset + 6), 0, 0, 0, 0, 0, 0, 0, 0);
    std::copy(tail.begin(), tail.end(), id.data4);
    return id;
}

void Endian::StringToBytes(const QByteArray& source, QByteArray& data, int offset, int length)
{
    if (length <= 0)
        return;
    const QByteArray field = source.left(length); // a copy, in case source and data are the same array
    if (!grow(data, offset, length))
        return;
    char* const begin = data.data() + offset;
    std::fill(std::copy(field.begin(), field.end(), begin), begin + length, '\0');
}

QByteArray Endian::BytesToString(const QByteArray& data, int offset, int length)
{
    if (length <= 0)
        return {};
    if (holds(data, offset, length))
        return data.mid(offset, length);
    QByteArray field(length, '\0');
    readOutside(data, offset, field.data(), length);
    return field;
}

} // namespace Orv::Utitlity

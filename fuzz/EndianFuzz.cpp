#include "Fuzz.h"

#include <Orv/Utility/Endian.h>

#include <algorithm>
#include <limits>

using Orv::Utitlity::Endian;

namespace {

constexpr int Largest = std::numeric_limits<int>::max();
constexpr int Smallest = std::numeric_limits<int>::min();

/// Places in and just behind the array, and such as no array has. (One that an array could have, had it gigabytes, is
/// not among them.)
int takeOffset(FuzzedDataProvider& input)
{
    const int kind = input.ConsumeIntegralInRange(0, 9);
    if (kind == 0)
        return input.PickValueInArray({Smallest, Smallest + 1, -1, Largest - 1, Largest});
    return kind == 1 ? input.ConsumeIntegralInRange(-20, 0) : input.ConsumeIntegralInRange(0, 300);
}

/// The array as numbers, beyond whose ends there are zeros.
QByteArray plainRead(const QByteArray& data, int offset, int size)
{
    QByteArray bytes(std::max(0, size), '\0');
    for (qint64 i = 0; i < size && offset >= 0; ++i)
        bytes[static_cast<int>(i)] = offset + i < data.size() ? data[static_cast<int>(offset + i)] : '\0';
    return bytes;
}

void plainWrite(QByteArray& data, int offset, const QByteArray& bytes)
{
    if (offset < 0 || bytes.size() > Largest - offset)
        return;
    while (data.size() < offset + bytes.size())
        data += '\0';
    data.replace(offset, bytes.size(), bytes);
}

QByteArray digitsOf(quint64 value, int size, bool isBig)
{
    QByteArray digits;
    for (int i = 0; i < size; ++i)
        digits += static_cast<char>(value >> (8 * (isBig ? size - 1 - i : i)) & 0xFF);
    return digits;
}

template <class T>
void checkInteger(FuzzedDataProvider& input, QByteArray& data, T (*fromLittle)(const QByteArray&, int),
    T (*fromBig)(const QByteArray&, int))
{
    const T value = input.ConsumeIntegral<T>();
    const int offset = takeOffset(input);
    const bool isBig = input.ConsumeBool();
    const int size = sizeof(T);

    const QByteArray before = plainRead(data, offset, size);
    require(digitsOf(static_cast<quint64>(fromLittle(data, offset)), size, false) == before,
        "little-endian bytes are read");
    require(digitsOf(static_cast<quint64>(fromBig(data, offset)), size, true) == before, "big-endian bytes are read");

    QByteArray expected = data;
    plainWrite(expected, offset, digitsOf(static_cast<quint64>(value), size, isBig));
    if (isBig)
        Endian::WriteBytesBigEndian(value, data, offset);
    else
        Endian::WriteBytesLittleEndian(value, data, offset);
    require(data == expected, "the bytes of the value are written, and no others");
}

void checkGuid(FuzzedDataProvider& input, QByteArray& data)
{
    const int offset = takeOffset(input);
    const QUuid id = QUuid::fromRfc4122(QByteArray::fromStdString(input.ConsumeBytesAsString(16)));
    const auto layoutOf = [](const QUuid& of) {
        QByteArray layout = of.toRfc4122();
        std::reverse(layout.begin(), layout.begin() + 4);
        std::reverse(layout.begin() + 4, layout.begin() + 6);
        std::reverse(layout.begin() + 6, layout.begin() + 8);
        return layout;
    };
    require(layoutOf(Endian::ToGuidLittleEndian(data, offset)) == plainRead(data, offset, 16), "the id is read");

    QByteArray expected = data;
    if (offset >= 0 && offset <= Largest - 16) {
        plainWrite(expected, offset, layoutOf(id).left(8)); // the array grows for these alone
        plainWrite(expected, offset, layoutOf(id).left(std::min(16, expected.size() - offset)));
    }
    Endian::WriteBytesLittleEndian(id, data, offset);
    require(data == expected, "what fits of the id is written, and nothing else");
}

void checkField(FuzzedDataProvider& input, QByteArray& data)
{
    const int offset = takeOffset(input);
    int length = input.ConsumeIntegralInRange(-3, 100);
    length = length == 1 ? 2 : length; // one byte has a place in an array of gigabytes, see takeOffset
    require(Endian::BytesToString(data, offset, length) == plainRead(data, offset, length), "the field is read");

    const bool isOwn = input.ConsumeBool();
    const QByteArray source = isOwn ? data : QByteArray::fromStdString(input.ConsumeRandomLengthString(120));
    QByteArray expected = data;
    if (length > 0)
        plainWrite(expected, offset, source.left(length).leftJustified(length, '\0'));
    Endian::StringToBytes(isOwn ? data : source, data, offset, length);
    require(data == expected, "the field is written, and nothing else");
}

void checkStep(FuzzedDataProvider& input, QByteArray& data)
{
    using Step = void (*)(FuzzedDataProvider&, QByteArray&);
    static const Step steps[] = {
        [](auto& from, auto& at) { checkInteger(from, at, Endian::ToUInt16LittleEndian, Endian::ToUInt16BigEndian); },
        [](auto& from, auto& at) { checkInteger(from, at, Endian::ToUInt32LittleEndian, Endian::ToUInt32BigEndian); },
        [](auto& from, auto& at) { checkInteger(from, at, Endian::ToUInt64LittleEndian, Endian::ToUInt64BigEndian); },
        [](auto& from, auto& at) { checkInteger(from, at, Endian::ToInt16LittleEndian, Endian::ToInt16BigEndian); },
        [](auto& from, auto& at) { checkInteger(from, at, Endian::ToInt32LittleEndian, Endian::ToInt32BigEndian); },
        [](auto& from, auto& at) { checkInteger(from, at, Endian::ToInt64LittleEndian, Endian::ToInt64BigEndian); },
        checkGuid,
        checkField,
    };
    steps[input.ConsumeIntegralInRange(0, 7)](input, data);
}

} // namespace

/// Any row of reads and writes has the results of the plain version, inside the array and outside.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    QByteArray array = QByteArray::fromStdString(input.ConsumeRandomLengthString(64));
    while (input.remaining_bytes() > 0)
        checkStep(input, array);
    return 0;
}

#include <Orv/Utility/Endian.h>

#include "KnownAnswers.h"

#include <algorithm>
#include <limits>

using Orv::Utitlity::Endian;

namespace {

template <class T> using Reader = T (*)(const QByteArray&, int);

/// Writes a value into the middle of an array and reads it back, in both orders. `digits` is its big-endian form in
/// hex.
template <class T> void checkOrders(Reader<T> fromLittle, Reader<T> fromBig, T value, const char* digits)
{
    SCOPED_TRACE(digits);
    const QByteArray big = QByteArray::fromHex(digits);
    QByteArray little = big;
    std::reverse(little.begin(), little.end());
    QByteArray data(big.size() + 2, 'x');
    const QByteArray shared = data;
    Endian::WriteBytesBigEndian(value, data, 1);
    EXPECT_EQ(data.toHex(), ('x' + big + 'x').toHex());
    EXPECT_EQ(fromBig(data, 1), value);
    Endian::WriteBytesLittleEndian(value, data, 1);
    EXPECT_EQ(data.toHex(), ('x' + little + 'x').toHex());
    EXPECT_EQ(fromLittle(data, 1), value);
    EXPECT_EQ(shared, QByteArray(big.size() + 2, 'x')) << "implicitly shared copies are unchanged";

    QByteArray grown("ab");
    Endian::WriteBytesLittleEndian(value, grown, 1);
    EXPECT_EQ(grown, 'a' + little);
    grown = "ab";
    Endian::WriteBytesBigEndian(value, grown, 4);
    EXPECT_EQ(grown, QByteArray("ab\0\0", 4) + big);
}

} // namespace

TEST(Endian, Integers)
{
    checkOrders<unsigned short>(Endian::ToUInt16LittleEndian, Endian::ToUInt16BigEndian, 0x80FF, "80ff");
    checkOrders<unsigned int>(Endian::ToUInt32LittleEndian, Endian::ToUInt32BigEndian, 0xFFFEFD01, "fffefd01");
    checkOrders<unsigned long long>(
        Endian::ToUInt64LittleEndian, Endian::ToUInt64BigEndian, 0x80818283FFFEFDFC, "80818283fffefdfc");
    checkOrders<short>(Endian::ToInt16LittleEndian, Endian::ToInt16BigEndian, -32513, "80ff");
    checkOrders<int>(Endian::ToInt32LittleEndian, Endian::ToInt32BigEndian, -2, "fffffffe");
    checkOrders<long long>(Endian::ToInt64LittleEndian, Endian::ToInt64BigEndian, -2, "fffffffffffffffe");
}

TEST(Endian, Guids)
{
    const QUuid id("{00112233-4455-6677-8899-aabbccddeeff}");
    const QByteArray layout = QByteArray::fromHex("33221100554477668899aabbccddeeff");
    QByteArray data(20, 'x');
    Endian::WriteBytesLittleEndian(id, data, 3);
    EXPECT_EQ(data.toHex(), ("xxx" + layout + "x").toHex());
    EXPECT_EQ(Endian::ToGuidLittleEndian(data, 3), id);

    for (const int size : {1, 8, 11, 15}) {
        QByteArray small(size, 'x');
        Endian::WriteBytesLittleEndian(id, small, 0);
        EXPECT_EQ(small.toHex(), layout.left(std::max(8, size)).toHex()) << "grows for the first half only";
    }
}

TEST(Endian, Fields)
{
    for (const KnownAnswer& row : tableOfAnswers("fields.txt")) {
        QByteArray data(6, '-');
        Endian::StringToBytes(row["source"], data, row["offset"].toInt(), row["length"].toInt());
        EXPECT_EQ(data, QByteArray::fromPercentEncoding(row["result"])) << row["row"].constData();
    }
    QByteArray own("abcdef");
    Endian::StringToBytes(own, own, 2, 6);
    EXPECT_EQ(own, "ababcdef");

    const QByteArray data("ab\0\0cd", 6);
    EXPECT_EQ(Endian::BytesToString(data, 1, 3), QByteArray("b\0\0", 3));
    EXPECT_TRUE(Endian::BytesToString(data, 1, -1).isEmpty());
}

TEST(Endian, OutsideTheArray)
{
#ifndef QT_NO_DEBUG
    GTEST_SKIP() << "debug builds assert";
#endif
    constexpr int Largest = std::numeric_limits<int>::max();
    const QByteArray data("\x01\x02\x03");
    EXPECT_EQ(Endian::ToUInt32LittleEndian(data, 1), 0x0302u) << "missing bytes are zero";
    EXPECT_EQ(Endian::ToUInt32BigEndian(data, 1), 0x02030000u);
    for (const int offset : {3, 4, -1, -2, Largest, Largest - 2, -Largest - 1}) {
        EXPECT_EQ(Endian::ToUInt64LittleEndian(data, offset), 0u) << offset;
        EXPECT_TRUE(Endian::ToGuidLittleEndian(data, offset).isNull()) << offset;
        EXPECT_EQ(Endian::BytesToString(data, offset, 2), QByteArray(2, '\0')) << offset;
    }
    for (const int offset : {-1, -8, -Largest - 1, Largest}) {
        QByteArray target = data;
        Endian::WriteBytesLittleEndian(0x11223344, target, offset);
        Endian::WriteBytesLittleEndian(QUuid::createUuid(), target, offset);
        Endian::StringToBytes("abc", target, offset, 3);
        EXPECT_EQ(target, data) << offset;
    }
}

#include <Orv/Utility/Endian.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using Orv::Utitlity::Endian;

namespace {

/// Writes a value into the middle of an array and reads it back, in both orders. `digits` are its bytes in big-endian
/// order.
template <class T> struct Order {
    using Reader = T (*)(const QByteArray&, int);
    Reader fromLittle;
    Reader fromBig;

    void check(T value, const char* digits) const
    {
        const QByteArray big = QByteArray::fromHex(digits);
        QByteArray little = big;
        std::reverse(little.begin(), little.end());
        const int size = sizeof value;

        QByteArray data(size + 2, 'x');
        const QByteArray shared = data;
        Endian::WriteBytesBigEndian(value, data, 1);
        EXPECT_EQ(data.toHex(), ('x' + big + 'x').toHex()) << digits;
        EXPECT_EQ(fromBig(data, 1), value) << digits;
        Endian::WriteBytesLittleEndian(value, data, 1);
        EXPECT_EQ(data.toHex(), ('x' + little + 'x').toHex()) << digits;
        EXPECT_EQ(fromLittle(data, 1), value) << digits;
        EXPECT_EQ(shared, QByteArray(size + 2, 'x')) << "a copy held elsewhere stays";

        QByteArray grown("ab");
        Endian::WriteBytesLittleEndian(value, grown, 1);
        EXPECT_EQ(grown, 'a' + little) << digits;
        grown = "ab";
        Endian::WriteBytesBigEndian(value, grown, 4);
        EXPECT_EQ(grown, QByteArray("ab\0\0", 4) + big) << digits;
    }
};

} // namespace

TEST(Endian, Integers)
{
    const Order<unsigned short> uint16{Endian::ToUInt16LittleEndian, Endian::ToUInt16BigEndian};
    uint16.check(0x80FF, "80ff");
    const Order<unsigned int> uint32{Endian::ToUInt32LittleEndian, Endian::ToUInt32BigEndian};
    uint32.check(0x11223344, "11223344");
    uint32.check(0xFFFEFDFC, "fffefdfc");
    const Order<unsigned long long> uint64{Endian::ToUInt64LittleEndian, Endian::ToUInt64BigEndian};
    uint64.check(0x0102030405060708, "0102030405060708");
    uint64.check(0x80818283FFFEFDFC, "80818283fffefdfc");
    const Order<short> int16{Endian::ToInt16LittleEndian, Endian::ToInt16BigEndian};
    int16.check(-32513, "80ff");
    const Order<int> int32{Endian::ToInt32LittleEndian, Endian::ToInt32BigEndian};
    int32.check(-2, "fffffffe");
    const Order<long long> int64{Endian::ToInt64LittleEndian, Endian::ToInt64BigEndian};
    int64.check(std::numeric_limits<long long>::min(), "8000000000000000");
}

TEST(Endian, Guids)
{
    const QUuid id("{00112233-4455-6677-8899-aabbccddeeff}");
    const QByteArray layout = QByteArray::fromHex("33221100554477668899aabbccddeeff");
    QByteArray data(20, 'x');
    Endian::WriteBytesLittleEndian(id, data, 3);
    EXPECT_EQ(data.toHex(), ("xxx" + layout + "x").toHex());
    EXPECT_EQ(Endian::ToGuidLittleEndian(data, 3), id);

    for (int size = 0; size < 16; ++size) {
        QByteArray small(size, 'x');
        Endian::WriteBytesLittleEndian(id, small, 0);
        EXPECT_EQ(small.toHex(), layout.left(std::max(size, 8)).toHex()) << "grown for the first half only: " << size;
    }
}

TEST(Endian, Fields)
{
    struct Row {
        const char* source;
        int offset;
        int length;
        QByteArray result;
    };
    const Row rows[] = {{"abc", 2, 5, QByteArray("--abc\0\0", 7)}, {"abcdef", 0, 3, "abc---"},
        {"", 1, 2, QByteArray("-\0\0---", 6)}, {"abc", 0, 0, "------"}, {"abc", 0, -1, "------"},
        {"abc", 8, 2, QByteArray("------\0\0ab", 10)}};
    for (const Row& row : rows) {
        QByteArray data(6, '-');
        Endian::StringToBytes(row.source, data, row.offset, row.length);
        EXPECT_EQ(data.toHex(), row.result.toHex()) << row.source << row.offset << row.length;
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
    GTEST_SKIP() << "a caller's error, which debug builds assert";
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

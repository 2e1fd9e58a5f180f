// Behaviour of Qt 6 only: byte arrays larger than 2 GiB.
#include <Orv/Utility/Endian.h>

#include <gtest/gtest.h>

using Orv::Utitlity::Endian;

TEST(Qt6, WritingAFieldKeepsAnArrayAbove2GiB)
{
    constexpr qsizetype Size = (qsizetype(1) << 31) + 1;
    QByteArray data(Size, Qt::Uninitialized); // untouched pages need no memory
    Endian::StringToBytes("field", data, 8, 5);
    EXPECT_EQ(data.size(), Size);
    EXPECT_EQ(Endian::BytesToString(data, 8, 5), "field");
}

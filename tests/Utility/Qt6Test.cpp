// Byte arrays of a size that Qt 5 does not have
#include <Orv/Utility/Endian.h>

#include <gtest/gtest.h>

using Orv::Utitlity::Endian;

TEST(Qt6, WritingAFieldKeepsAnArrayAbove2GiB)
{
    constexpr qsizetype Size = (qsizetype(1) << 31) + 1;
    QByteArray data(Size, Qt::Uninitialized); // takes no memory where nothing is written
    Endian::StringToBytes("field", data, 8, 5);
    EXPECT_EQ(data.size(), Size);
    EXPECT_EQ(Endian::BytesToString(data, 8, 5), "field");
}

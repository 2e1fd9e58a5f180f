#include <Orv/Utility/MathUtilities.h>
#include <Orv/Utility/SizeToString.h>

#include "KnownAnswers.h"

using Extensions::MathUtilities;
using Orv::Utility::SizeToString;

TEST(SizeToString, BothFormats)
{
    for (const KnownAnswer& row : tableOfAnswers("sizes.txt")) {
        const SizeToString size(row["size"].toULongLong());
        EXPECT_EQ(size.toString(SizeToString::Decimal), row["decimal"]) << row["row"].constData();
        EXPECT_EQ(size.toString(SizeToString::Binary), row["binary"]) << row["row"].constData();
        EXPECT_EQ(size.toString(static_cast<SizeToString::Format>(2)), row["binary"]) << row["row"].constData();
    }
}

TEST(MathUtilities, Rounding)
{
    for (const KnownAnswer& row : tableOfAnswers("rounding.txt")) {
        const int value = row["value"].toInt();
        const int step = row["step"].toInt();
        SCOPED_TRACE(row["row"].constData());
        EXPECT_EQ(MathUtilities::RoundUp(value, step), row["up"].toInt());
        EXPECT_EQ(MathUtilities::RoundDown(value, step), row["down"].toInt());
        EXPECT_EQ(MathUtilities::Ceil(value, step), row["ceil"].toInt());
    }
    EXPECT_EQ(MathUtilities::RoundUp(6000000001ll, 1000ll), 6000001000ll);
    EXPECT_EQ(MathUtilities::Ceil(6000000001ll, 1000ll), 6000001ll);
    EXPECT_EQ(MathUtilities::Ceil(4000000001u, 1000u), 4000001u);
    EXPECT_EQ(MathUtilities::Ceil(4294967295u, 2u), 0u) << "wraps";
}

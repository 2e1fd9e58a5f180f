#include <Orv/Utility/MathUtilities.h>
#include <Orv/Utility/SizeToString.h>

#include <gtest/gtest.h>

#include <limits>

using Extensions::MathUtilities;
using Orv::Utility::SizeToString;

TEST(SizeToString, BothFormats)
{
    struct Row {
        unsigned long long size;
        const char* decimal;
        const char* binary;
    };
    const Row rows[] = {
        {0, "0.00 B", "0.00 B"},
        {999, "999.00 B", "999.00 B"},
        {1000, "1.00 KB", "1000.00 B"},
        {1024, "1.02 KB", "1.00 KiB"},
        {1536, "1.54 KB", "1.50 KiB"},
        {999999, "1000.00 KB", "976.56 KiB"},
        {1000000, "1.00 MB", "976.56 KiB"},
        {1048575, "1.05 MB", "1024.00 KiB"},
        {1ull << 20, "1.05 MB", "1.00 MiB"},
        {1ull << 30, "1.07 GB", "1.00 GiB"},
        {1ull << 40, "1.10 TB", "1.00 TiB"},
        {1ull << 50, "1.13 PB", "1.00 PiB"},
        {1000000000, "1.00 GB", "953.67 MiB"},
        {1000000000000, "1.00 TB", "931.32 GiB"},
        {1000000000000000, "1.00 PB", "909.49 TiB"},
        {std::numeric_limits<unsigned long long>::max(), "18446.74 PB", "16384.00 PiB"},
    };
    for (const Row& row : rows) {
        const SizeToString size(row.size);
        EXPECT_EQ(size.toString(SizeToString::Decimal).toStdString(), row.decimal) << row.size;
        EXPECT_EQ(size.toString(SizeToString::Binary).toStdString(), row.binary) << row.size;
        EXPECT_EQ(size.toString(static_cast<SizeToString::Format>(2)).toStdString(), row.binary) << row.size;
    }
}

TEST(MathUtilities, Rounding)
{
    struct Row {
        int value;
        int step;
        int up;
        int down;
        int ceil;
    };
    const Row rows[] = {{5, 4, 8, 4, 2}, {8, 4, 8, 8, 2}, {7, 4, 8, 4, 2}, {9, 4, 12, 8, 3}, {0, 4, 0, 0, 0},
        {1, 1, 1, 1, 1}, {-5, 4, 0, -4, 0}, {-3, 4, 0, 0, 0}, {5, -4, 0, 4, 0}};
    for (const Row& row : rows) {
        EXPECT_EQ(MathUtilities::RoundUp(row.value, row.step), row.up) << row.value;
        EXPECT_EQ(MathUtilities::RoundDown(row.value, row.step), row.down) << row.value;
        EXPECT_EQ(MathUtilities::Ceil(row.value, row.step), row.ceil) << row.value;
        EXPECT_EQ(MathUtilities::RoundUp(qint64(row.value), qint64(row.step)), row.up) << row.value;
        EXPECT_EQ(MathUtilities::Ceil(qint64(row.value), qint64(row.step)), row.ceil) << row.value;
    }
    EXPECT_EQ(MathUtilities::RoundUp(6000000001ll, 1000ll), 6000001000ll);
    EXPECT_EQ(MathUtilities::Ceil(6000000001ll, 1000ll), 6000001ll);
    EXPECT_EQ(MathUtilities::Ceil(4000000001u, 1000u), 4000001u);
    EXPECT_EQ(MathUtilities::Ceil(4294967295u, 2u), 0u) << "wraps";
}

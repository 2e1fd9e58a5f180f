#include <Orv/Utility/SafeBase64.h>

#include <gtest/gtest.h>

using Orv::Utitlity::SafeBase64;

TEST(SafeBase64, BothWays)
{
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"", ""},
        {QByteArray::fromHex("fbff"), "-~8_"},
        {QByteArray::fromHex("00"), "AA__"},
        {QByteArray::fromHex("fbeffbefbeff"), "--~7777~"},
    };
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(SafeBase64(bytes).to(), text);
        EXPECT_EQ(SafeBase64(text).from().toHex(), bytes.toHex()) << text.constData();
    }
}

TEST(SafeBase64, EveryLengthComesBack)
{
    QByteArray bytes;
    for (int i = 0; i < 600; ++i) {
        const QByteArray text = SafeBase64(bytes).to();
        EXPECT_EQ(text.size(), (bytes.size() + 2) / 3 * 4);
        ASSERT_EQ(SafeBase64(text).from(), bytes) << i;
        bytes.append(static_cast<char>(i * 7));
    }
}

TEST(SafeBase64, UnknownCharactersAreSkipped)
{
    for (const QByteArray& text : {QByteArray("-+~8_"), QByteArray("+-~8"), QByteArray("-~ 8"), QByteArray("-~=8*_")})
        EXPECT_EQ(SafeBase64(text).from().toHex(), "fbff") << text.constData();
    const QByteArray slash("-/8_");
    EXPECT_EQ(SafeBase64(slash).from().toHex(), "fbff") << "one that is not skipped";
}

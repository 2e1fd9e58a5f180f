#include <Orv/Utility/SafeBase64.h>

using Orv::Utitlity::SafeBase64;

TEST(SafeBase64, KnownAnswers)
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

TEST(SafeBase64, UnknownCharactersAreSkipped)
{
    QByteArray bytes(200000, Qt::Uninitialized); // longer than a decoding block
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(qint64(i) * i >> 7);
    EXPECT_EQ(SafeBase64(SafeBase64(bytes).to().replace('A', "_A=")).from(), bytes);
    for (const char* const text : {"-+~8_", "+-~8", "-~ 8", "-~=8*_", "-/8_"}) // except "/", which is decoded
        EXPECT_EQ(SafeBase64(QByteArray(text)).from().toHex(), "fbff") << text;
}

// Qt's own decoder needs memory for three times the size here, and its size overflows an int.
TEST(SafeBase64, LargeText)
{
    constexpr int Size = ORV_LARGE_TEXT;
    QByteArray text(Size, 'A');
    text.replace(Size - 4, 4, "-~8_");
    const QByteArray bytes = SafeBase64(text).from();
    EXPECT_EQ(bytes.size(), Size / 4 * 3 - 1);
    EXPECT_EQ(bytes.right(3).toHex(), "00fbff");
}

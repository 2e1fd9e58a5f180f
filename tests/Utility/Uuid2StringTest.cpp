#include <Orv/Utility/Uuid2String.h>

using Orv::Utitlity::Uuid2String;

TEST(Uuid2String, StringsAndWindowsLayout)
{
    const QUuid id("{00112233-4455-6677-8899-AABBCCDDEEFF}");
    EXPECT_EQ(Uuid2String::classic(id), QStringLiteral("{00112233-4455-6677-8899-aabbccddeeff}"));
    EXPECT_EQ(Uuid2String::windows(id), QStringLiteral("00112233-4455-6677-8899-aabbccddeeff"));
    EXPECT_EQ(Uuid2String::windows({}), QStringLiteral("00000000-0000-0000-0000-000000000000"));
    const QByteArray layout = QByteArray::fromHex("33221100554477668899aabbccddeeff");
    EXPECT_EQ(Uuid2String::winBase64ToUuid(layout), id);
    EXPECT_EQ(Uuid2String::winBase64ToUuid(layout + 'x'), id);
    EXPECT_TRUE(Uuid2String::winBase64ToUuid(layout.left(15)).isNull());
}

TEST(Uuid2String, ShortGuids)
{
    const QString nullText = QStringLiteral("00000000-0000-0000-0000-000000000000");
    const std::pair<const char*, QString> rows[] = {
        {"MyIRAFVEd2aImaq7zN3u!w", QStringLiteral("00112233-4455-6677-8899-aabbccddeeff")},
        {"--!7-!v7-!v7-!v7-!v7-w", QStringLiteral("fbfbeffb-fbfb-fbfb-fbfb-fbfbfbfbfbfb")},
        {"MyIRAFVEd2aImaq7zN3u!?", nullText},
        {"MyIRAFVEd2aImaq7zN3u!", {}},
        {"MyIRAFVEd2aImaq7zN3u!ww", {}},
        {"", {}},
    };
    for (const auto& [text, expected] : rows) {
        const QString result = Uuid2String::fromWinShortGuid(text);
        EXPECT_EQ(result, expected) << text << " " << result.toStdString();
        EXPECT_EQ(result.isNull(), expected.isNull()) << text;
        if (!result.isEmpty() && result != nullText) {
            EXPECT_EQ(Uuid2String::toWinShortGuid(QUuid(result)), text);
        }
    }
}

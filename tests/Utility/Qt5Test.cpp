// Behaviour of Qt 5 only: names in the locale's encoding, and a random generator that clients seed.
#include <Orv/Utility/FileTypeCheck.h>
#include <Orv/Utility/RandomString.h>

#include "DirectoryTest.h"

#include <QScopeGuard>
#include <QTextCodec>

using Orv::Utitlity::RandomString;

class Qt5Test : public DirectoryTest { };

TEST_F(Qt5Test, FileTypesOfNamesInTheEncodingOfTheLocale)
{
    const QString path = pathOf(QStringLiteral("größe"));
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    const auto restore =
        qScopeGuard([before = QTextCodec::codecForLocale()] { QTextCodec::setCodecForLocale(before); });
    QString reason;
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    EXPECT_EQ(Orv::Utility::validateFileType(path, reason), Orv::Utility::Suitable);
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    EXPECT_EQ(Orv::Utility::validateFileType(path, reason), Orv::Utility::StatFailed);
}

TEST_F(Qt5Test, RandomStringFollowsTheSeededSequence)
{
    const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789");
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    qsrand(7);
    QString expected;
    while (expected.size() < 20)
        expected += letters[qrand() % 62];
    qsrand(7);
    QT_WARNING_POP
    EXPECT_EQ(RandomString::generateSimple(20), expected);
}

#include <Orv/Core/Encryption/Encryptors.h>
#include <Orv/Core/Encryption/Key.h>

#include "KnownAnswers.h"

#include <QCryptographicHash>

#include <set>

using namespace Orv::Core::Encryption;

TEST(Key, NamesAndLengths)
{
    const QByteArray longest = Key::generate(Aes256, "secret", "salt", 10);
    for (const KnownAnswer& row : tableOfAnswers("algorithms.txt")) {
        const auto algorithm = static_cast<Algorithm>(row["algorithm"].toInt());
        const int length = row["key"].toInt();
        SCOPED_TRACE(row["row"].constData());
        EXPECT_EQ(Key::name(algorithm), row["name"]);
        EXPECT_EQ(Key::length(algorithm), length);
        EXPECT_EQ(Key::ivLength(algorithm), row["iv"].toInt());
        EXPECT_EQ(Key::randomKey(algorithm).size(), length);
        EXPECT_EQ(Key::generateAdvanced(algorithm, "secret", "salt", 10), longest.left(length));
    }
}

TEST(Key, AlgorithmFromNameOrWindowsCode)
{
    for (const KnownAnswer& row : tableOfAnswers("algorithmnames.txt")) {
        const QByteArray name = row["name"];
        const int length = row["key"].toInt();
        const Algorithm found = name.startsWith("windows ") ? Key::algorithmFromWindows(name.mid(8).toInt(), length)
                                                            : Key::algorithmFromName(name, length);
        EXPECT_EQ(found, row["algorithm"].toInt()) << row["row"].constData();
    }
}

TEST(Key, KnownAnswers)
{
    for (const KnownAnswer& row : tableOfAnswers("pbkdf2.txt")) {
        const QByteArray key = Key::generate(
            Aes256, QByteArray::fromHex(row["password"]), QByteArray::fromHex(row["salt"]), row["iterations"].toInt());
        EXPECT_EQ(key.toHex().left(row["key"].size()), row["key"]) << row["name"].constData();
    }
}

TEST(Key, NoSaltStandsForEightZeroBytes)
{
    const QByteArray simple = Key::generateSimple(Aes256, "secret");
    EXPECT_EQ(simple, Key::generate(Aes256, "secret", QByteArray(), 1000));
    EXPECT_EQ(simple, Key::generate(Aes256, "secret", QByteArray(8, '\0'), 1000));
    EXPECT_NE(simple, Key::generate(Aes256, "secret", QByteArray(7, '\0'), 1000));
}

TEST(Key, LocalKeyIsPbkdf1)
{
    for (const QByteArray& password : {QByteArray(), QByteArray("secret"), QByteArray("a\0b", 3)}) {
        QByteArray expected = password;
        for (int i = 0; i < 100; ++i)
            expected = QCryptographicHash::hash(expected, QCryptographicHash::Sha1);
        EXPECT_EQ(Key::generateLocal(password).toHex(), expected.left(16).toHex());
    }
}

TEST(Key, RandomBytes)
{
    EXPECT_TRUE(Key::random(0).isEmpty());
    EXPECT_EQ(Key::randomSalt().size(), 8);
    const QByteArray many = Key::random(65535);
    EXPECT_EQ(many.size(), 65535);
    EXPECT_EQ(std::set<char>(many.begin(), many.end()).size(), 256u) << "all byte values";
    EXPECT_NE(Key::random(32).right(16), Key::random(32).right(16));
}

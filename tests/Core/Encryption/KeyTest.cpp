#include <Orv/Core/Encryption/Encryptors.h>
#include <Orv/Core/Encryption/Key.h>

#include "KnownAnswers.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

using namespace Orv::Core::Encryption;

TEST(Key, NamesAndLengths)
{
    struct Row {
        int algorithm;
        const char* name;
        int length;
        int ivLength;
    };
    const Row rows[] = {{0, "DES", 8, 8}, {1, "TripleDES", 16, 8}, {2, "TripleDES", 24, 8}, {3, "AES", 16, 16},
        {4, "AES", 24, 16}, {5, "AES", 32, 16}, {6, "NO", 0, 0}, {7, "NO", 0, 0}, {-1, "NO", 0, 0}};
    for (const Row& row : rows) {
        const auto algorithm = static_cast<Algorithm>(row.algorithm);
        EXPECT_EQ(Key::name(algorithm), QString(row.name)) << row.algorithm;
        EXPECT_EQ(Key::length(algorithm), row.length) << row.algorithm;
        EXPECT_EQ(Key::ivLength(algorithm), row.ivLength) << row.algorithm;
        EXPECT_EQ(Key::randomKey(algorithm).size(), row.length) << row.algorithm;
        EXPECT_EQ(Key::generate(algorithm, "p", "salt", 2).size(), row.length) << row.algorithm;
    }
}

TEST(Key, AlgorithmFromName)
{
    struct Row {
        const char* name;
        int keyLength;
        Algorithm algorithm;
    };
    const Row rows[] = {{"AES", 16, Aes128}, {"AES", 24, Aes192}, {"AES", 32, Aes256}, {"AES", 8, None},
        {"DES", 8, Des}, {"DES", 16, None}, {"TripleDES", 16, Des112}, {"TripleDES", 24, Des3}, {"TripleDES", 8, None},
        {"aes", 16, None}, {" AES", 16, None}, {"NO", 0, None}, {"", 0, None}};
    for (const Row& row : rows)
        EXPECT_EQ(Key::algorithmFromName(row.name, row.keyLength), row.algorithm) << row.name << row.keyLength;
}

TEST(Key, AlgorithmFromWindows)
{
    struct Row {
        int code;
        int keyLength;
        Algorithm algorithm;
    };
    const Row rows[] = {{1, 8, Des}, {1, 999, Des}, {2, 16, Des112}, {2, 24, Des3}, {2, 8, Des3}, {3, 16, Aes128},
        {3, 24, Aes192}, {3, 32, Aes256}, {3, 20, None}, {0, 16, None}, {4, 16, None}, {-1, 8, None}};
    for (const Row& row : rows)
        EXPECT_EQ(Key::algorithmFromWindows(row.code, row.keyLength), row.algorithm)
            << row.code << " " << row.keyLength;
}

TEST(Key, KnownAnswers)
{
    for (const KnownAnswer& answer : knownAnswers("pbkdf2.txt")) {
        const QByteArray key = Key::generate(Aes256, QByteArray::fromHex(answer["password"]),
            QByteArray::fromHex(answer["salt"]), answer["iterations"].toInt());
        EXPECT_EQ(key.toHex().left(answer["key"].size()), answer["key"]) << answer["name"].constData();
    }
}

TEST(Key, NoSaltStandsForEightZeroBytes)
{
    const QByteArray simple = Key::generateSimple(Aes256, "secret");
    EXPECT_EQ(simple, Key::generate(Aes256, "secret", QByteArray(), 1000));
    EXPECT_EQ(simple, Key::generate(Aes256, "secret", QByteArray(8, '\0'), 1000));
    EXPECT_NE(simple, Key::generate(Aes256, "secret", QByteArray(7, '\0'), 1000));
}

TEST(Key, OnlyTheLengthDependsOnTheAlgorithm)
{
    const QByteArray longest = Key::generate(Aes256, "secret", "salt", 10);
    for (const Algorithm algorithm : {Des, Des112, Des3, Aes128, Aes192})
        EXPECT_EQ(Key::generateAdvanced(algorithm, "secret", "salt", 10), longest.left(Key::length(algorithm)));
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
    EXPECT_EQ(Key::random(65535).size(), 65535);
    EXPECT_EQ(Key::randomSalt().size(), 8);
    EXPECT_NE(Key::random(32), Key::random(32));
}

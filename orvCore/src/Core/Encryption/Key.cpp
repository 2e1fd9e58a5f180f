#include <Orv/Core/Encryption/Key.h>

#include "Core/Encryption/Bytes_p.h"
#include "Core/Encryption/Pbkdf2_p.h"

#include <Orv/Core/Encryption/Encryptors.h>

#include <cryptopp/osrng.h>
#include <cryptopp/pwdbased.h>
#include <cryptopp/secblock.h>
#include <cryptopp/sha.h>

#include <algorithm>
#include <iterator>

using CryptoPP::SecByteBlock;

namespace Orv::Core::Encryption {

namespace {

QByteArray toByteArray(const SecByteBlock& block)
{
    return QByteArray(reinterpret_cast<const char*>(block.data()), static_cast<int>(block.size()));
}

struct Row {
    const char* name;
    Algorithm algorithm;
    unsigned short keyLength;
    unsigned short ivLength;
};

constexpr char AesName[] = "AES";
constexpr char TripleDesName[] = "TripleDES";

constexpr Row Algorithms[] = {
    {"DES", Des, EncryptorDes::KeyLength, EncryptorDes::IvLength},
    {TripleDesName, Des112, EncryptorDes112::KeyLength, EncryptorDes112::IvLength},
    {TripleDesName, Des3, EncryptorDes3::KeyLength, EncryptorDes3::IvLength},
    {AesName, Aes128, EncryptorAes128::KeyLength, EncryptorAes::IvLength},
    {AesName, Aes192, EncryptorAes192::KeyLength, EncryptorAes::IvLength},
    {AesName, Aes256, EncryptorAes256::KeyLength, EncryptorAes::IvLength},
};

constexpr Row NoAlgorithm = {"NO", None, 0, 0};

template <class Predicate> const Row& rowWith(Predicate predicate)
{
    const auto* const row = std::find_if(std::begin(Algorithms), std::end(Algorithms), predicate);
    return row == std::end(Algorithms) ? NoAlgorithm : *row;
}

const Row& rowOf(Algorithm algorithm)
{
    return rowWith([algorithm](const Row& row) { return row.algorithm == algorithm; });
}

} // namespace

QString Key::name(Algorithm algorithm)
{
    return QString::fromLatin1(rowOf(algorithm).name);
}

Algorithm Key::algorithmFromName(const QString& name, int keyLength)
{
    const auto matches = [&](const Row& row) { return name == QLatin1String(row.name) && keyLength == row.keyLength; };
    return rowWith(matches).algorithm;
}

Algorithm Key::algorithmFromWindows(int windowsAlgorithm, int keyLength)
{
    switch (windowsAlgorithm) {
    case 1:
        return Des;
    case 2:
        return keyLength == EncryptorDes112::KeyLength ? Des112 : Des3;
    case 3:
        return algorithmFromName(QLatin1String(AesName), keyLength);
    default:
        return None;
    }
}

unsigned short Key::length(Algorithm algorithm)
{
    return rowOf(algorithm).keyLength;
}

unsigned short Key::ivLength(Algorithm algorithm)
{
    return rowOf(algorithm).ivLength;
}

QByteArray Key::generate(Algorithm algorithm, const QByteArray& password, const QByteArray& salt, int iterations)
{
    const unsigned short size = length(algorithm);
    if (size == 0)
        return {};

    // Other clients use eight zero bytes if there is no salt.
    const QByteArray usedSalt = salt.isEmpty() ? QByteArray(8, '\0') : salt;
    SecByteBlock key(size);
    pbkdf2(key, password, usedSalt, static_cast<unsigned>(iterations));
    return toByteArray(key);
}

QByteArray Key::generateSimple(Algorithm algorithm, const QByteArray& password)
{
    return generate(algorithm, password, QByteArray(), ITERATION_SIMPLE);
}

QByteArray Key::generateAdvanced(
    Algorithm algorithm, const QByteArray& password, const QByteArray& salt, int iterations)
{
    return generate(algorithm, password, salt, iterations);
}

QByteArray Key::generateLocal(const QByteArray& password)
{
    SecByteBlock key(16);
    CryptoPP::PKCS5_PBKDF1<CryptoPP::SHA1>().DeriveKey(
        key, key.size(), 0, bytes(password), password.size(), nullptr, 0, 100, 0.0);
    return toByteArray(key);
}

QByteArray Key::random(unsigned short size)
{
    SecByteBlock block(size);
    CryptoPP::OS_GenerateRandomBlock(false, block, block.size());
    return toByteArray(block);
}

QByteArray Key::randomKey(Algorithm algorithm)
{
    return random(length(algorithm));
}

QByteArray Key::randomSalt()
{
    return random(8);
}

} // namespace Orv::Core::Encryption

#include <Orv/Core/Encryption/Key.h>

#include <Orv/Core/Encryption/Encryptors.h>

#include <cryptopp/osrng.h>
#include <cryptopp/pwdbased.h>
#include <cryptopp/secblock.h>
#include <cryptopp/sha.h>

using CryptoPP::byte;
using CryptoPP::SecByteBlock;

namespace Orv::Core::Encryption {

namespace {

const byte* bytes(const QByteArray& array)
{
    return reinterpret_cast<const byte*>(array.constData());
}

QByteArray toByteArray(const SecByteBlock& block)
{
    return QByteArray(reinterpret_cast<const char*>(block.data()), static_cast<int>(block.size()));
}

Algorithm aesOfLength(int keyLength)
{
    switch (keyLength) {
    case EncryptorAes128::KeyLength:
        return Aes128;
    case EncryptorAes192::KeyLength:
        return Aes192;
    case EncryptorAes256::KeyLength:
        return Aes256;
    default:
        return None;
    }
}

} // namespace

QString Key::name(Algorithm algorithm)
{
    switch (algorithm) {
    case Des:
        return QStringLiteral("DES");
    case Des112:
    case Des3:
        return QStringLiteral("TripleDES");
    case Aes128:
    case Aes192:
    case Aes256:
        return QStringLiteral("AES");
    default:
        return QStringLiteral("NO");
    }
}

Algorithm Key::algorithmFromName(const QString& name, int keyLength)
{
    if (name == Key::name(Aes256))
        return aesOfLength(keyLength);
    if (name == Key::name(Des))
        return keyLength == EncryptorDes::KeyLength ? Des : None;
    if (name == Key::name(Des3)) {
        if (keyLength == EncryptorDes112::KeyLength)
            return Des112;
        if (keyLength == EncryptorDes3::KeyLength)
            return Des3;
    }
    return None;
}

Algorithm Key::algorithmFromWindows(int windowsAlgorithm, int keyLength)
{
    switch (windowsAlgorithm) {
    case 1:
        return Des;
    case 2:
        return keyLength == EncryptorDes112::KeyLength ? Des112 : Des3;
    case 3:
        return aesOfLength(keyLength);
    default:
        return None;
    }
}

unsigned short Key::length(Algorithm algorithm)
{
    switch (algorithm) {
    case Des:
        return EncryptorDes::KeyLength;
    case Des112:
        return EncryptorDes112::KeyLength;
    case Des3:
        return EncryptorDes3::KeyLength;
    case Aes128:
        return EncryptorAes128::KeyLength;
    case Aes192:
        return EncryptorAes192::KeyLength;
    case Aes256:
        return EncryptorAes256::KeyLength;
    default:
        return 0;
    }
}

unsigned short Key::ivLength(Algorithm algorithm)
{
    switch (algorithm) {
    case Des:
        return EncryptorDes::IvLength;
    case Des112:
        return EncryptorDes112::IvLength;
    case Des3:
        return EncryptorDes3::IvLength;
    case Aes128:
    case Aes192:
    case Aes256:
        return EncryptorAes::IvLength;
    default:
        return 0;
    }
}

QByteArray Key::generate(Algorithm algorithm, const QByteArray& password, const QByteArray& salt, int iterations)
{
    const unsigned short size = length(algorithm);
    if (size == 0)
        return {};

    // Other clients derive keys without a salt from eight zero bytes.
    const QByteArray usedSalt = salt.isEmpty() ? QByteArray(8, '\0') : salt;
    SecByteBlock key(size);
    CryptoPP::PKCS5_PBKDF2_HMAC<CryptoPP::SHA1>().DeriveKey(
        key, key.size(), 0, bytes(password), password.size(), bytes(usedSalt), usedSalt.size(), iterations, 0.0);
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

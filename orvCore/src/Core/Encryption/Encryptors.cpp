#include <Orv/Core/Encryption/Encryptors.h>

#include "Core/Encryption/Bytes_p.h"
#include "Core/Encryption/StreamTransformation_p.h"

#include <cryptopp/aes.h>
#include <cryptopp/des.h>
#include <cryptopp/modes.h>

namespace Orv::Core::Encryption {

namespace {

template <class Mode> std::unique_ptr<CryptoPP::SymmetricCipher> makeMode(const SecretBytes& key, const QByteArray& iv)
{
    auto mode = std::make_unique<Mode>();
    if (mode->IsResynchronizable()) // false for ECB, which has no IV
        mode->SetKeyWithIV(key.data(), key.size(), bytes(iv), static_cast<std::size_t>(iv.size()));
    else
        mode->SetKey(key.data(), key.size());
    return mode;
}

} // namespace

/// If the cipher library throws for a wrong length, the object is unchanged.
template <class Cipher> bool EncryptorBase::initMode()
{
    using CbcMode = CryptoPP::CBC_Mode<Cipher>;
    using EcbMode = CryptoPP::ECB_Mode<Cipher>;
    StreamTransformation& stream = *m_transformation;
    std::unique_ptr<CryptoPP::SymmetricCipher> mode;
    std::unique_ptr<CryptoPP::BlockTransformation> parallelCipher;
    if (m_type == Cbc && m_encrypt) {
        mode = makeMode<typename CbcMode::Encryption>(stream.key, m_iv);
        parallelCipher = std::make_unique<typename Cipher::Encryption>(stream.key.data(), stream.key.size());
    } else if (m_type == Cbc) {
        mode = makeMode<typename CbcMode::Decryption>(stream.key, m_iv);
    } else if (m_type == Ecb && m_encrypt) {
        mode = makeMode<typename EcbMode::Encryption>(stream.key, m_iv);
    } else if (m_type == Ecb) {
        mode = makeMode<typename EcbMode::Decryption>(stream.key, m_iv);
    }
    stream.filter.reset(); // it references the old mode
    stream.mode = std::move(mode);
    stream.parallelCipher = std::move(parallelCipher);
    stream.parallelKey = stream.parallelCipher ? stream.key : SecretBytes();
    return EncryptorBase::init();
}

EncryptorBase* EncryptorBase::create(Algorithm algorithm, bool encrypt, Type type)
{
    switch (algorithm) {
    case Des:
        return new EncryptorDes(encrypt, type);
    case Des112:
        return new EncryptorDes112(encrypt, type);
    case Des3:
        return new EncryptorDes3(encrypt, type);
    case Aes128:
        return new EncryptorAes128(encrypt, type);
    case Aes192:
        return new EncryptorAes192(encrypt, type);
    case Aes256:
        return new EncryptorAes256(encrypt, type);
    default:
        return nullptr;
    }
}

EncryptorDes::EncryptorDes(bool encrypt, Type type) : EncryptorBase(Des, encrypt, type)
{
    setBlockSize(CryptoPP::DES::BLOCKSIZE);
}

EncryptorDes::~EncryptorDes() = default;

bool EncryptorDes::init()
{
    return initMode<CryptoPP::DES>();
}

void EncryptorDes::generateIv()
{
    appendRandomIv(IvLength);
}

EncryptorDes112::EncryptorDes112(bool encrypt, Type type) : EncryptorBase(Des112, encrypt, type)
{
    setBlockSize(CryptoPP::DES_EDE2::BLOCKSIZE);
}

EncryptorDes112::~EncryptorDes112() = default;

bool EncryptorDes112::init()
{
    return initMode<CryptoPP::DES_EDE2>();
}

void EncryptorDes112::generateIv()
{
    appendRandomIv(IvLength);
}

EncryptorDes3::EncryptorDes3(bool encrypt, Type type) : EncryptorBase(Des3, encrypt, type)
{
    setBlockSize(CryptoPP::DES_EDE3::BLOCKSIZE);
}

EncryptorDes3::~EncryptorDes3() = default;

bool EncryptorDes3::init()
{
    return initMode<CryptoPP::DES_EDE3>();
}

void EncryptorDes3::generateIv()
{
    appendRandomIv(IvLength);
}

EncryptorAes::EncryptorAes(Algorithm algorithm, bool encrypt, Type type) : EncryptorBase(algorithm, encrypt, type)
{
    setBlockSize(CryptoPP::AES::BLOCKSIZE);
}

EncryptorAes::~EncryptorAes() = default;

bool EncryptorAes::init()
{
    return initMode<CryptoPP::AES>();
}

void EncryptorAes::generateIv()
{
    appendRandomIv(IvLength);
}

EncryptorAes128::EncryptorAes128(bool encrypt, Type type) : EncryptorAes(Aes128, encrypt, type)
{
}

EncryptorAes128::~EncryptorAes128() = default;

EncryptorAes192::EncryptorAes192(bool encrypt, Type type) : EncryptorAes(Aes192, encrypt, type)
{
}

EncryptorAes192::~EncryptorAes192() = default;

EncryptorAes256::EncryptorAes256(bool encrypt, Type type) : EncryptorAes(Aes256, encrypt, type)
{
}

EncryptorAes256::~EncryptorAes256() = default;

} // namespace Orv::Core::Encryption

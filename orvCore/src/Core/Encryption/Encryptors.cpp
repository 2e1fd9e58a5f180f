#include <Orv/Core/Encryption/Encryptors.h>

#include "Core/Encryption/StreamTransformation_p.h"

#include <cryptopp/aes.h>
#include <cryptopp/des.h>
#include <cryptopp/modes.h>

namespace Orv::Core::Encryption {

namespace {

const CryptoPP::byte* bytes(const QByteArray& array)
{
    return reinterpret_cast<const CryptoPP::byte*>(array.constData());
}

template <class Mode>
std::unique_ptr<CryptoPP::StreamTransformation> makeCbc(const QByteArray& key, const QByteArray& iv)
{
    auto mode = std::make_unique<Mode>();
    mode->SetKeyWithIV(bytes(key), key.size(), bytes(iv), iv.size());
    return mode;
}

template <class Mode> std::unique_ptr<CryptoPP::StreamTransformation> makeEcb(const QByteArray& key)
{
    auto mode = std::make_unique<Mode>();
    mode->SetKey(bytes(key), key.size());
    return mode;
}

/// The keyed mode; null for a type that does not exist. The cipher library checks the lengths and throws.
template <class Cipher>
std::unique_ptr<CryptoPP::StreamTransformation> makeMode(
    bool encrypt, Type type, const QByteArray& key, const QByteArray& iv)
{
    using CbcMode = CryptoPP::CBC_Mode<Cipher>;
    using EcbMode = CryptoPP::ECB_Mode<Cipher>;
    switch (type) {
    case Cbc:
        return encrypt ? makeCbc<typename CbcMode::Encryption>(key, iv)
                       : makeCbc<typename CbcMode::Decryption>(key, iv);
    case Ecb:
        return encrypt ? makeEcb<typename EcbMode::Encryption>(key) : makeEcb<typename EcbMode::Decryption>(key);
    }
    return nullptr;
}

} // namespace

EncryptorDes::EncryptorDes(bool encrypt, Type type) : EncryptorBase(Des, encrypt, type)
{
    setBlockSize(CryptoPP::DES::BLOCKSIZE);
}

EncryptorDes::~EncryptorDes() = default;

bool EncryptorDes::init()
{
    transformation().setMode(makeMode<CryptoPP::DES>(isEncrypting(), type(), key(), iv()));
    return EncryptorBase::init();
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
    transformation().setMode(makeMode<CryptoPP::DES_EDE2>(isEncrypting(), type(), key(), iv()));
    return EncryptorBase::init();
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
    transformation().setMode(makeMode<CryptoPP::DES_EDE3>(isEncrypting(), type(), key(), iv()));
    return EncryptorBase::init();
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
    transformation().setMode(makeMode<CryptoPP::AES>(isEncrypting(), type(), key(), iv()));
    return EncryptorBase::init();
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

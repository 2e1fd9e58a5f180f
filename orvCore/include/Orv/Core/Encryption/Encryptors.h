#pragma once

#include <Orv/Core/Encryption/EncryptorBase.h>

/// The cipher classes. Each one keys its own block cipher and knows the length of its IV; streaming and padding are
/// those of EncryptorBase. Lengths are in bytes.
namespace Orv::Core::Encryption {

class ORV_EXPORT EncryptorDes : public EncryptorBase {
public:
    static constexpr unsigned short KeyLength = 8;
    static constexpr unsigned short IvLength = 8;

    EncryptorDes(bool encrypt, Type type);
    ~EncryptorDes() override;
    bool init() override;
    void generateIv() override;
};

class ORV_EXPORT EncryptorDes112 : public EncryptorBase {
public:
    static constexpr unsigned short KeyLength = 16;
    static constexpr unsigned short IvLength = 8;

    EncryptorDes112(bool encrypt, Type type);
    ~EncryptorDes112() override;
    bool init() override;
    void generateIv() override;
};

class ORV_EXPORT EncryptorDes3 : public EncryptorBase {
public:
    static constexpr unsigned short KeyLength = 24;
    static constexpr unsigned short IvLength = 8;

    EncryptorDes3(bool encrypt, Type type);
    ~EncryptorDes3() override;
    bool init() override;
    void generateIv() override;
};

/// AES with the size of the key it is given: 16, 24 or 32 bytes, whatever the class.
class ORV_EXPORT EncryptorAes : public EncryptorBase {
public:
    static constexpr unsigned short IvLength = 16;

    EncryptorAes(Algorithm algorithm, bool encrypt, Type type);
    ~EncryptorAes() override;
    bool init() override;
    void generateIv() override;
};

class ORV_EXPORT EncryptorAes128 : public EncryptorAes {
public:
    static constexpr unsigned short KeyLength = 16;

    EncryptorAes128(bool encrypt, Type type);
    ~EncryptorAes128() override;
};

class ORV_EXPORT EncryptorAes192 : public EncryptorAes {
public:
    static constexpr unsigned short KeyLength = 24;

    EncryptorAes192(bool encrypt, Type type);
    ~EncryptorAes192() override;
};

class ORV_EXPORT EncryptorAes256 : public EncryptorAes {
public:
    static constexpr unsigned short KeyLength = 32;

    EncryptorAes256(bool encrypt, Type type);
    ~EncryptorAes256() override;
};

} // namespace Orv::Core::Encryption

#pragma once

#include <Orv/Core/Encryption/EncryptorBase.h>

/// Keys, and encryption and decryption of streams. Each cipher class provides its block cipher and its IV length;
/// EncryptorBase provides streaming and padding.
namespace Orv::Core::Encryption {

/// DES (FIPS 46-3).
class ORV_EXPORT EncryptorDes : public EncryptorBase {
public:
    /// Key length in bytes.
    static constexpr unsigned short KeyLength = 8;
    /// IV length in bytes: the cipher's block size.
    static constexpr unsigned short IvLength = 8;

    /// Encrypts if `encrypt` is true, otherwise decrypts.
    EncryptorDes(bool encrypt, Type type);
    ~EncryptorDes() override;
    bool init() override;
    void generateIv() override;
};

/// Triple DES with two keys (FIPS 46-3, keying option 2): encrypt, decrypt, encrypt.
class ORV_EXPORT EncryptorDes112 : public EncryptorBase {
public:
    /// Key length in bytes.
    static constexpr unsigned short KeyLength = 16;
    /// IV length in bytes: the cipher's block size.
    static constexpr unsigned short IvLength = 8;

    /// Encrypts if `encrypt` is true, otherwise decrypts.
    EncryptorDes112(bool encrypt, Type type);
    ~EncryptorDes112() override;
    bool init() override;
    void generateIv() override;
};

/// Triple DES with three keys (FIPS 46-3, keying option 1): encrypt, decrypt, encrypt.
class ORV_EXPORT EncryptorDes3 : public EncryptorBase {
public:
    /// Key length in bytes.
    static constexpr unsigned short KeyLength = 24;
    /// IV length in bytes: the cipher's block size.
    static constexpr unsigned short IvLength = 8;

    /// Encrypts if `encrypt` is true, otherwise decrypts.
    EncryptorDes3(bool encrypt, Type type);
    ~EncryptorDes3() override;
    bool init() override;
    void generateIv() override;
};

/// AES (FIPS 197). The length of the key that is set (16, 24 or 32 bytes) selects the variant, in the subclasses too.
class ORV_EXPORT EncryptorAes : public EncryptorBase {
public:
    /// IV length in bytes: the cipher's block size.
    static constexpr unsigned short IvLength = 16;

    /// Encrypts if `encrypt` is true, otherwise decrypts. `algorithm` is returned by `algorithm()` and has no other
    /// effect.
    EncryptorAes(Algorithm algorithm, bool encrypt, Type type);
    ~EncryptorAes() override;
    bool init() override;
    void generateIv() override;
};

/// EncryptorAes with the algorithm `Aes128`: 16-byte keys.
class ORV_EXPORT EncryptorAes128 : public EncryptorAes {
public:
    /// Key length in bytes.
    static constexpr unsigned short KeyLength = 16;

    /// Encrypts if `encrypt` is true, otherwise decrypts.
    EncryptorAes128(bool encrypt, Type type);
    ~EncryptorAes128() override;
};

/// EncryptorAes with the algorithm `Aes192`: 24-byte keys.
class ORV_EXPORT EncryptorAes192 : public EncryptorAes {
public:
    /// Key length in bytes.
    static constexpr unsigned short KeyLength = 24;

    /// Encrypts if `encrypt` is true, otherwise decrypts.
    EncryptorAes192(bool encrypt, Type type);
    ~EncryptorAes192() override;
};

/// EncryptorAes with the algorithm `Aes256`: 32-byte keys.
class ORV_EXPORT EncryptorAes256 : public EncryptorAes {
public:
    /// Key length in bytes.
    static constexpr unsigned short KeyLength = 32;

    /// Encrypts if `encrypt` is true, otherwise decrypts.
    EncryptorAes256(bool encrypt, Type type);
    ~EncryptorAes256() override;
};

} // namespace Orv::Core::Encryption

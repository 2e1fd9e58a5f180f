#pragma once

#include <Orv/Core/Encryption/EncryptorBase.h>

/// Keys, and streams that are encrypted or decrypted while they are read. Each cipher class keys its own block cipher
/// and knows the length of its IV; streaming and padding are those of EncryptorBase.
namespace Orv::Core::Encryption {

/// DES (FIPS 46-3).
class ORV_EXPORT EncryptorDes : public EncryptorBase {
public:
    /// The key's length in bytes.
    static constexpr unsigned short KeyLength = 8;
    /// The IV's length in bytes, which is the cipher's block size.
    static constexpr unsigned short IvLength = 8;

    /// Encrypts if `encrypt` is set, else decrypts.
    EncryptorDes(bool encrypt, Type type);
    ~EncryptorDes() override;
    bool init() override;
    void generateIv() override;
};

/// Triple DES with two keys (FIPS 46-3, keying option 2): encrypt, decrypt, encrypt.
class ORV_EXPORT EncryptorDes112 : public EncryptorBase {
public:
    /// The key's length in bytes.
    static constexpr unsigned short KeyLength = 16;
    /// The IV's length in bytes, which is the cipher's block size.
    static constexpr unsigned short IvLength = 8;

    /// Encrypts if `encrypt` is set, else decrypts.
    EncryptorDes112(bool encrypt, Type type);
    ~EncryptorDes112() override;
    bool init() override;
    void generateIv() override;
};

/// Triple DES with three keys (FIPS 46-3, keying option 1): encrypt, decrypt, encrypt.
class ORV_EXPORT EncryptorDes3 : public EncryptorBase {
public:
    /// The key's length in bytes.
    static constexpr unsigned short KeyLength = 24;
    /// The IV's length in bytes, which is the cipher's block size.
    static constexpr unsigned short IvLength = 8;

    /// Encrypts if `encrypt` is set, else decrypts.
    EncryptorDes3(bool encrypt, Type type);
    ~EncryptorDes3() override;
    bool init() override;
    void generateIv() override;
};

/// AES (FIPS 197) with the size of the key it is given: 16, 24 or 32 bytes, whatever the class.
class ORV_EXPORT EncryptorAes : public EncryptorBase {
public:
    /// The IV's length in bytes, which is the cipher's block size.
    static constexpr unsigned short IvLength = 16;

    /// Encrypts if `encrypt` is set, else decrypts. `algorithm` is only what `algorithm()` says.
    EncryptorAes(Algorithm algorithm, bool encrypt, Type type);
    ~EncryptorAes() override;
    bool init() override;
    void generateIv() override;
};

/// EncryptorAes under the name of the algorithm with 16-byte keys.
class ORV_EXPORT EncryptorAes128 : public EncryptorAes {
public:
    /// The key's length in bytes.
    static constexpr unsigned short KeyLength = 16;

    /// Encrypts if `encrypt` is set, else decrypts.
    EncryptorAes128(bool encrypt, Type type);
    ~EncryptorAes128() override;
};

/// EncryptorAes under the name of the algorithm with 24-byte keys.
class ORV_EXPORT EncryptorAes192 : public EncryptorAes {
public:
    /// The key's length in bytes.
    static constexpr unsigned short KeyLength = 24;

    /// Encrypts if `encrypt` is set, else decrypts.
    EncryptorAes192(bool encrypt, Type type);
    ~EncryptorAes192() override;
};

/// EncryptorAes under the name of the algorithm with 32-byte keys.
class ORV_EXPORT EncryptorAes256 : public EncryptorAes {
public:
    /// The key's length in bytes.
    static constexpr unsigned short KeyLength = 32;

    /// Encrypts if `encrypt` is set, else decrypts.
    EncryptorAes256(bool encrypt, Type type);
    ~EncryptorAes256() override;
};

} // namespace Orv::Core::Encryption

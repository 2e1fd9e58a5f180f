#pragma once

#include <QtGlobal>

namespace Orv::Core::Encryption {

/// The ciphers. The numbers are stored and exchanged with other programs.
enum Algorithm : qint32 {
    Des = 0,    ///< single DES (FIPS 46-3), 8-byte key
    Des112 = 1, ///< two-key triple DES (EDE, FIPS 46-3), 16-byte key
    Des3 = 2,   ///< three-key triple DES (EDE, FIPS 46-3), 24-byte key
    Aes128 = 3, ///< AES (FIPS 197), 16-byte key
    Aes192 = 4, ///< AES (FIPS 197), 24-byte key
    Aes256 = 5, ///< AES (FIPS 197), 32-byte key
    None = 6,   ///< no encryption, or an unknown algorithm
};

/// How blocks are chained (NIST SP 800-38A).
enum Type : qint32 {
    Cbc = 0, ///< cipher-block chaining; needs an IV
    Ecb = 1, ///< electronic code book; no IV
};

} // namespace Orv::Core::Encryption

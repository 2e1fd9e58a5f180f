#pragma once

#include <QtGlobal>

namespace Orv::Core::Encryption {

/// The ciphers. The numbers are stored and exchanged with other programs.
enum Algorithm : qint32 {
    Des = 0,    ///< single DES, 8-byte key
    Des112 = 1, ///< two-key triple DES (EDE), 16-byte key
    Des3 = 2,   ///< three-key triple DES (EDE), 24-byte key
    Aes128 = 3, ///< AES, 16-byte key
    Aes192 = 4, ///< AES, 24-byte key
    Aes256 = 5, ///< AES, 32-byte key
    None = 6,   ///< no encryption, or an unknown algorithm
};

/// How blocks are chained.
enum Type : qint32 {
    Cbc = 0, ///< cipher-block chaining; needs an IV
    Ecb = 1, ///< electronic code book; no IV
};

} // namespace Orv::Core::Encryption

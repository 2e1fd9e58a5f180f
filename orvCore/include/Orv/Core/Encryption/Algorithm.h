#pragma once

#include <Orv/Export.h>

#include <QObject>

namespace Orv::Core::Encryption {
Q_NAMESPACE_EXPORT(ORV_EXPORT)

/// The ciphers. The values are stored and exchanged with other programs. `QMetaEnum::fromType<Algorithm>()` lists them
/// with their names, `None` last.
///
/// @warning Use DES and triple DES for existing data only: DES keys can be searched exhaustively, and 8-byte blocks are
/// too small for large amounts of data.
enum Algorithm : qint32 {
    Des = 0,    ///< single DES (FIPS 46-3), 8-byte key
    Des112 = 1, ///< two-key triple DES (EDE, FIPS 46-3), 16-byte key
    Des3 = 2,   ///< three-key triple DES (EDE, FIPS 46-3), 24-byte key
    Aes128 = 3, ///< AES (FIPS 197), 16-byte key
    Aes192 = 4, ///< AES (FIPS 197), 24-byte key
    Aes256 = 5, ///< AES (FIPS 197), 32-byte key
    None = 6,   ///< no encryption, or an unknown algorithm
};
Q_ENUM_NS(Algorithm)

/// How blocks are chained (NIST SP 800-38A). Neither protects against tampering.
enum Type : qint32 {
    Cbc = 0, ///< cipher-block chaining; needs an IV
    Ecb = 1, ///< electronic code book; no IV. For existing data only: equal blocks stay equal, which shows patterns.
};

} // namespace Orv::Core::Encryption

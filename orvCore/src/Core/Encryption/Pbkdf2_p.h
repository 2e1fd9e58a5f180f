#pragma once

#include <QByteArray>

#include <cryptopp/secblock.h>

namespace Orv::Core::Encryption {

/// Fills `key` with PBKDF2-HMAC-SHA1 (RFC 8018, section 5.2) of `password` and `salt`. 0 iterations count as 1.
///
/// The same as Crypto++'s `PKCS5_PBKDF2_HMAC<SHA1>`, which compresses four blocks of SHA-1 in each iteration: the
/// padded password again for both halves of the HMAC. Here that is done once (RFC 2104, section 4), which takes
/// about half the time.
void pbkdf2(CryptoPP::SecByteBlock& key, const QByteArray& password, const QByteArray& salt, unsigned iterations);

} // namespace Orv::Core::Encryption

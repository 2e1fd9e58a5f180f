#pragma once

#include <QByteArray>

#include <cryptopp/cryptlib.h>

namespace Orv::Core::Encryption {

/// The array's bytes as Crypto++ expects them.
inline const CryptoPP::byte* bytes(const QByteArray& array)
{
    return reinterpret_cast<const CryptoPP::byte*>(array.constData());
}

} // namespace Orv::Core::Encryption

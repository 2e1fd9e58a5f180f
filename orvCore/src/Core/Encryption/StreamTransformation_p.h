#pragma once

#include <cryptopp/cryptlib.h>
#include <cryptopp/filters.h>
#include <cryptopp/secblock.h>

#include <memory>
#include <vector>

namespace Orv::Core::Encryption {

/// Bytes that are wiped when freed. QByteArray cannot guarantee that, because copies share its memory.
using SecretBytes = std::vector<CryptoPP::byte, CryptoPP::AllocatorWithCleanup<CryptoPP::byte>>;

/// An encryptor's stream state: its buffers, and the cipher library's objects.
class StreamTransformation {
public:
    SecretBytes key;
    std::unique_ptr<CryptoPP::SymmetricCipher> mode;
    std::unique_ptr<CryptoPP::StreamTransformationFilter> filter; // adds or checks the padding; references the mode
    std::unique_ptr<CryptoPP::BlockTransformation>
        parallelCipher;      // for readTogether(); null unless encrypting with CBC
    SecretBytes parallelKey; // key of parallelCipher; `key` may be newer

    SecretBytes input;  // read but not transformed; less than two blocks between calls
    SecretBytes output; // transformed but not returned; less than three blocks between calls
    SecretBytes chunk;  // receives one read of the source; never shrinks
};

} // namespace Orv::Core::Encryption

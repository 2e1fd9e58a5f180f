#pragma once

#include <cryptopp/cryptlib.h>
#include <cryptopp/filters.h>
#include <cryptopp/secblock.h>

#include <memory>
#include <vector>

namespace Orv::Core::Encryption {

/// Bytes that are wiped when they are freed. A QByteArray cannot promise that: its copies share their memory.
using SecretBytes = std::vector<CryptoPP::byte, CryptoPP::AllocatorWithCleanup<CryptoPP::byte>>;

/// What an encryptor keeps of a stream, and the cipher library's objects that transform it.
class StreamTransformation {
public:
    SecretBytes key;
    std::unique_ptr<CryptoPP::SymmetricCipher> mode;
    std::unique_ptr<CryptoPP::StreamTransformationFilter> filter;  // adds or checks the padding; refers to the mode
    std::unique_ptr<CryptoPP::BlockTransformation> parallelCipher; // for readTogether; null unless CBC encrypts
    SecretBytes parallelKey;                                       // of that cipher; `key` may be a newer one

    SecretBytes input;  // read and not yet transformed: less than two blocks between calls
    SecretBytes output; // transformed and not yet returned: less than three blocks between calls
    SecretBytes chunk;  // where one read of the source goes; never shrinks
};

} // namespace Orv::Core::Encryption

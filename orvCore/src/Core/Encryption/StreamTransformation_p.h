#pragma once

#include <cryptopp/aes.h>
#include <cryptopp/filters.h>

#include <array>
#include <memory>

namespace Orv::Core::Encryption {

/// The cipher library's objects behind an encryptor: the keyed mode, and the padding filter around it.
class StreamTransformation {
public:
    /// Replaces the mode, for a new stream. The filter refers to the old one and goes with it.
    void setMode(std::unique_ptr<CryptoPP::StreamTransformation> newMode)
    {
        filter.reset();
        mode = std::move(newMode);
        held = 0;
        ended = false;
    }

    std::unique_ptr<CryptoPP::StreamTransformation> mode; // outlives the filter, being declared before it
    std::unique_ptr<CryptoPP::StreamTransformationFilter> filter;

    // Input that waits for more: less than a block, and while decrypting the last whole block too.
    std::array<char, 2 * CryptoPP::AES::BLOCKSIZE> heldBytes{};
    int held = 0;
    bool ended = false; // the source's end was met: from then on, input passes through the filter
};

} // namespace Orv::Core::Encryption

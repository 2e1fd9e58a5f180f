#pragma once

#include "Core/Encryption/StreamTransformation_p.h"

#include <cstddef>
#include <vector>

namespace Orv::Core::Encryption {

/// Whole blocks of one stream, and where they go.
struct BlockRun {
    StreamTransformation* stream;
    const CryptoPP::byte* from;
    CryptoPP::byte* to;
    std::size_t size; // bytes
};

/// Transforms each run as `stream->mode->ProcessData(to, from, size)` does, and leaves each mode in the same state.
/// Runs that CBC encrypts with the same cipher and key advance together, since a single CBC stream waits for the
/// processor after each block.
void transformTogether(std::vector<BlockRun> runs);

} // namespace Orv::Core::Encryption

#pragma once

#include "Core/Encryption/StreamTransformation_p.h"

#include <cstddef>
#include <vector>

namespace Orv::Core::Encryption {

/// Whole blocks of one stream and their destination.
struct BlockRun {
    StreamTransformation* stream;
    const CryptoPP::byte* from;
    CryptoPP::byte* to;
    std::size_t size; // bytes
};

/// Calls `stream->mode->ProcessData(to, from, size)` for each run, or produces the same output and state. Runs
/// encrypted with CBC and the same cipher and key advance in lockstep: within one CBC stream, each block depends on the
/// previous one, which leaves most of the processor's pipeline idle.
void transformTogether(std::vector<BlockRun> runs);

} // namespace Orv::Core::Encryption

#include "Core/Encryption/TransformTogether_p.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <typeindex>

using CryptoPP::BlockTransformation;
using CryptoPP::byte;

namespace Orv::Core::Encryption {

namespace {

using Run = std::vector<BlockRun>::iterator;

constexpr std::ptrdiff_t LargestGroup = 8; // streams; more do not fit into the L1 cache
constexpr std::size_t LargestBlock = 16;   // bytes

auto cipherOf(const BlockRun& run)
{
    const BlockTransformation& cipher = *run.stream->parallelCipher;
    return std::make_tuple(std::type_index(typeid(cipher)), std::cref(run.stream->parallelKey));
}

/// Orders runs by cipher and key, then by length, longest first.
bool isBefore(const BlockRun& a, const BlockRun& b)
{
    return std::tuple_cat(cipherOf(a), std::make_tuple(b.size)) < std::tuple_cat(cipherOf(b), std::make_tuple(a.size));
}

/// CBC (NIST SP 800-38A, 6.2) over one block of each run at a time. Runs are sorted by length, longest first: a
/// finished run drops out, and the last remaining one continues alone.
template <std::size_t BlockSize> void encryptInLockStep(Run first, Run last)
{
    const BlockTransformation& cipher = *first->stream->parallelCipher;
    alignas(LargestBlock) std::array<byte, LargestGroup * BlockSize> plain;
    alignas(LargestBlock) std::array<byte, LargestGroup * BlockSize> sealed; // input to the chaining of the next block
    for (Run run = first; run != last; ++run) {
        run->stream->mode->ProcessData(run->to, run->from, BlockSize);
        std::copy_n(run->to, BlockSize, sealed.data() + (run - first) * BlockSize);
    }

    std::size_t done = BlockSize;
    for (; last != first; --last) {
        const auto count = static_cast<std::size_t>(last - first);
        BlockRun& shortest = *(last - 1);
        for (; count > 1 && done < shortest.size; done += BlockSize) {
            for (std::size_t i = 0; i < count; ++i)
                std::copy_n(first[i].from + done, BlockSize, plain.data() + i * BlockSize);
            cipher.AdvancedProcessBlocks(plain.data(), sealed.data(), sealed.data(), count * BlockSize,
                BlockTransformation::BT_XorInput | BlockTransformation::BT_AllowParallel);
            for (std::size_t i = 0; i < count; ++i)
                std::copy_n(sealed.data() + i * BlockSize, BlockSize, first[i].to + done);
        }
        shortest.stream->mode->Resynchronize(shortest.to + done - BlockSize);
        shortest.stream->mode->ProcessData(shortest.to + done, shortest.from + done, shortest.size - done);
    }
}

} // namespace

void transformTogether(std::vector<BlockRun> runs)
{
    const auto isParallel = [](const BlockRun& run) { return run.stream->parallelCipher && run.size > 0; };
    const Run alone = std::partition(runs.begin(), runs.end(), isParallel);
    for (Run run = alone; run != runs.end(); ++run)
        run->stream->mode->ProcessData(run->to, run->from, run->size);

    std::sort(runs.begin(), alone, isBefore);
    for (Run first = runs.begin(); first != alone;) {
        const Run limit = first + std::min(LargestGroup, alone - first);
        const Run last =
            std::find_if(first, limit, [first](const BlockRun& run) { return cipherOf(run) != cipherOf(*first); });
        if (first->stream->parallelCipher->BlockSize() == LargestBlock)
            encryptInLockStep<16>(first, last);
        else
            encryptInLockStep<8>(first, last);
        first = last;
    }
}

} // namespace Orv::Core::Encryption

#include "Core/Encryption/Pbkdf2_p.h"

#include "Core/Encryption/Bytes_p.h"

#include <cryptopp/hmac.h>
#include <cryptopp/misc.h>
#include <cryptopp/sha.h>

#include <algorithm>

using CryptoPP::BIG_ENDIAN_ORDER;
using CryptoPP::HMAC;
using CryptoPP::SecByteBlock;
using CryptoPP::SHA1;
using CryptoPP::word32;

namespace Orv::Core::Encryption {

namespace {

// As words in the machine's byte order; wiped by their destructors
constexpr size_t HashSize = SHA1::DIGESTSIZE / sizeof(word32);
constexpr size_t BlockSize = SHA1::BLOCKSIZE / sizeof(word32);
using Hash = CryptoPP::FixedSizeAlignedSecBlock<word32, HashSize>;
using Block = CryptoPP::FixedSizeAlignedSecBlock<word32, BlockSize>;

/// The state of SHA-1 after one block: the password, combined with `pad`.
Hash stateAfter(SecByteBlock password, CryptoPP::byte pad)
{
    password.CleanGrow(SHA1::BLOCKSIZE);
    for (CryptoPP::byte& each : password)
        each ^= pad;
    Block block;
    CryptoPP::GetUserKey(BIG_ENDIAN_ORDER, block.data(), BlockSize, password, password.size());
    Hash state;
    SHA1::InitState(state);
    SHA1::Transform(state, block);
    return state;
}

} // namespace

void pbkdf2(SecByteBlock& key, const QByteArray& password, const QByteArray& salt, unsigned iterations)
{
    SecByteBlock shortPassword(bytes(password), size_t(password.size()));
    if (shortPassword.size() > SHA1::BLOCKSIZE) {
        shortPassword.New(SHA1::DIGESTSIZE);
        SHA1().CalculateDigest(shortPassword, bytes(password), size_t(password.size()));
    }
    const Hash inner = stateAfter(shortPassword, 0x36);
    const Hash outer = stateAfter(shortPassword, 0x5c);

    SecByteBlock digest(SHA1::DIGESTSIZE);
    word32 number = 0;
    for (size_t done = 0; done < key.size(); done += digest.size()) {
        HMAC<SHA1> hmac(shortPassword, shortPassword.size());
        hmac.Update(bytes(salt), size_t(salt.size()));
        CryptoPP::PutWord(false, BIG_ENDIAN_ORDER, digest, ++number);
        hmac.Update(digest, sizeof(number));
        hmac.Final(digest);

        Block block; // a hash, and the padding that SHA-1 gives a block and a hash
        CryptoPP::GetUserKey(BIG_ENDIAN_ORDER, block.data(), BlockSize, digest, digest.size());
        Hash sum;
        std::copy_n(block.begin(), HashSize, sum.begin());
        block[HashSize] = 0x80000000;
        block[BlockSize - 1] = 8 * (SHA1::BLOCKSIZE + SHA1::DIGESTSIZE);
        Hash state;
        for (unsigned i = 1; i < iterations; ++i) {
            for (const Hash* start : {&inner, &outer}) {
                std::copy_n(start->begin(), HashSize, state.begin());
                SHA1::Transform(state, block);
                std::copy_n(state.begin(), HashSize, block.begin());
            }
            for (size_t word = 0; word < HashSize; ++word)
                sum[word] ^= block[word];
        }
        for (size_t word = 0; word < HashSize; ++word)
            CryptoPP::PutWord(false, BIG_ENDIAN_ORDER, digest + word * sizeof(word32), sum[word]);
        std::copy_n(digest.begin(), std::min(digest.size(), key.size() - done), key.begin() + done);
    }
}

} // namespace Orv::Core::Encryption

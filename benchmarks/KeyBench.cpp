#include "Bench.h"

#include <Orv/Core/Encryption/Key.h>

#include <cryptopp/pwdbased.h>
#include <cryptopp/sha.h>
#include <openssl/evp.h>

#include <array>

using namespace Orv::Core::Encryption;

namespace {

const QByteArray Password("correct horse battery staple");
const QByteArray Salt("12345678");
constexpr int Iterations = Key::ITERATION_ADVANCED;

using Result = std::array<unsigned char, 32>;

} // namespace

void addKeyRows()
{
    const std::string subject = "PBKDF2, 50000 iterations";
    addRow(subject, "orvCore", [](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(Key::generateAdvanced(Aes256, Password, Salt, Iterations));
    });
    addRow(subject, "Crypto++", [](benchmark::State& state) {
        for (auto _ : state) {
            Result key;
            CryptoPP::PKCS5_PBKDF2_HMAC<CryptoPP::SHA1>().DeriveKey(key.data(), key.size(), 0, bytes(Password),
                size_t(Password.size()), bytes(Salt), size_t(Salt.size()), Iterations);
            benchmark::DoNotOptimize(key);
        }
    });
    addRow(subject, "OpenSSL", [](benchmark::State& state) {
        for (auto _ : state) {
            Result key;
            PKCS5_PBKDF2_HMAC_SHA1(Password.constData(), Password.size(), bytes(Salt), Salt.size(), Iterations,
                int(key.size()), key.data());
            benchmark::DoNotOptimize(key);
        }
    });
}

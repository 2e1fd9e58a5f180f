#include "Fuzz.h"

#include "Core/Encryption/PlainEncryptor.h"

#include <algorithm>

using namespace Orv::Core::Encryption;

namespace {

Cipher takeCipher(FuzzedDataProvider& input)
{
    Cipher cipher;
    cipher.algorithm = input.PickValueInArray({Des, Des112, Des3, Aes128, Aes192, Aes256});
    cipher.type = input.PickValueInArray({Cbc, Ecb});
    // What key it is makes no difference to how a stream is cut up.
    for (int i = 0; i < Key::length(cipher.algorithm); ++i)
        cipher.key += static_cast<char>(i * 7);
    if (cipher.type == Cbc)
        cipher.iv = QByteArray(Key::ivLength(cipher.algorithm), 'i');
    cipher.encrypt = input.ConsumeBool();
    return cipher;
}

std::vector<int> takeSizes(FuzzedDataProvider& input)
{
    std::vector<int> sizes(input.ConsumeIntegralInRange<std::size_t>(0, 20));
    const int largest = input.PickValueInArray({5, 40, NarrowDevice::Failure});
    std::generate(sizes.begin(), sizes.end(), [&] { return input.ConsumeIntegralInRange(0, largest); });
    return sizes;
}

/// All of it at once, the plain way.
QByteArray plainly(const Cipher& cipher, const QByteArray& content)
{
    const auto source = QSharedPointer<NarrowDevice>::create(QIODevice::ReadOnly);
    source->content = content;
    PlainEncryptor encryptor(cipher, source);
    QByteArray all;
    while (!encryptor.atEnd()) {
        const Outcome outcome = outcomeOf(encryptor, 4096);
        require(outcome.error.isEmpty(), "a stream that was sealed can be opened");
        all += outcome.bytes;
    }
    return all;
}

} // namespace

/// Each call of an encryptor has the outcome of the plain one, whatever the stream and in whatever portions it comes
/// and is asked for; and what was encrypted can be decrypted.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    StreamCase stream;
    stream.cipher = takeCipher(input);
    const bool isDamaged = input.ConsumeBool();
    stream.isSequential = input.ConsumeBool();
    stream.portions = takeSizes(input);
    stream.requests = takeSizes(input);
    stream.growingCall = input.ConsumeIntegralInRange(1, 400);
    const int growth = input.ConsumeIntegralInRange(0, 50);
    const QByteArray given = restOf(input);
    stream.growth = given.left(growth);
    const bool isSealed = !stream.cipher.encrypt && !isDamaged;
    stream.content = isSealed ? plainly(stream.cipher.inverse(), given) : given;

    QByteArray whole;
    const char* const difference = differenceFromPlain(stream, whole);
    require(difference == nullptr, difference);
    if (!whole.isNull())
        require(plainly(stream.cipher.inverse(), whole) == stream.content, "the way back leads to where it began");
    return 0;
}

#include <Orv/Utility/SafeBase64.h>

#include <algorithm>
#include <array>

namespace Orv::Utitlity {

namespace {

char toSafe(char character)
{
    return character == '+' ? '-' : character == '=' ? '_' : character == '/' ? '~' : character;
}

constexpr int DecodedBlock = 64 * 1024; // characters; a multiple of 4, because 4 characters encode 3 bytes

/// Maps safe characters to Base64 characters. 0 for those that the decoder skips: the padding "_", "+" (which stands
/// for the padding "="), and all characters outside the alphabet.
constexpr std::array<char, 256> base64Characters()
{
    std::array<char, 256> characters{};
    for (const char character : "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/")
        characters[static_cast<unsigned char>(character)] = character;
    characters['-'] = '+';
    characters['~'] = '/';
    return characters;
}

} // namespace

QByteArray SafeBase64::to() const
{
    QByteArray text = m_data.toBase64();
    std::transform(text.begin(), text.end(), text.begin(), toSafe);
    return text;
}

QByteArray SafeBase64::from() const
{
    // In blocks: Qt's decoder needs a second array of the full size and overflows above two thirds of the maximum size.
    static constexpr std::array<char, 256> Characters = base64Characters();
    QByteArray bytes;
    bytes.reserve((qsizetype(m_data.size()) + 3) / 4 * 3);
    QByteArray block(DecodedBlock, Qt::Uninitialized);
    int filled = 0;
    for (const char character : m_data) {
        const char base64 = Characters[static_cast<unsigned char>(character)];
        if (base64 == 0)
            continue;
        block.data()[filled++] = base64;
        if (filled == DecodedBlock) {
            bytes += QByteArray::fromBase64(block);
            filled = 0;
        }
    }
    return bytes += QByteArray::fromBase64(block.left(filled));
}

} // namespace Orv::Utitlity

#include "Fuzz.h"

#include <Orv/Utility/SafeBase64.h>

#include <algorithm>

using Orv::Utitlity::SafeBase64;

namespace {

bool isSafe(char character)
{
    static const QByteArray characters("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-~_");
    return characters.contains(character);
}

/// The text without the characters that are skipped, in the alphabet of the standard for URLs.
QByteArray toUrlForm(const QByteArray& text)
{
    QByteArray result;
    for (const char character : text) {
        if (character == '~' || character == '/')
            result += '_';
        else if (isSafe(character) && character != '_')
            result += character;
    }
    return result;
}

} // namespace

/// Bytes come back from their text, and any text is read as the standard form for URLs would be.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QByteArray text = SafeBase64(bytes).to();
    require(text.size() == (bytes.size() + 2) / 3 * 4, "three bytes are four characters");
    require(std::all_of(text.begin(), text.end(), isSafe), "the text is a safe one");
    require(SafeBase64(text).from() == bytes, "the bytes come back from their text");

    const QByteArray decoded = SafeBase64(bytes).from();
    require(decoded.size() <= bytes.size() / 4 * 3 + 2, "four characters are no more than three bytes");
    require(decoded == QByteArray::fromBase64(toUrlForm(bytes), QByteArray::Base64UrlEncoding),
        "the bytes are those of the form for URLs");
    return 0;
}

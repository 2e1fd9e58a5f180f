#include "Fuzz.h"

#include <Orv/Utility/StringFilters.h>

using Orv::Utility::StringFilters;

namespace {

/// By hand: the pattern matcher refuses halves of characters.
QString unescaped(const QString& text)
{
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] == '\\')
            require(++i < text.size() && (text[i] == '\\' || text[i] == '"'), "a backslash has something to escape");
        result += text[i];
    }
    return result;
}

} // namespace

/// The filters take away what they should and nothing else.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const bool isUtf16 = input.ConsumeBool();
    const QChar trailing = QLatin1Char(input.ConsumeIntegral<char>());
    const QByteArray bytes = restOf(input);
    // Any code units, also halves of a character, or mostly plain text
    const QString text = isUtf16 ? QString(reinterpret_cast<const QChar*>(bytes.constData()), bytes.size() / 2)
                                 : QString::fromUtf8(bytes);

    QString name = text;
    for (const char character : {'/', '\\', ':', '*', '?', '"', '>', '<', '|'})
        name.remove(QLatin1Char(character));
    require(StringFilters::prefixFilter(text) == name, "the characters that file names must not have are gone");
    require(StringFilters::prefixFilter(name) == name, "a filtered name stays as it is");

    for (const QChar character : {trailing, text.isEmpty() ? trailing : text.back()}) {
        const QString stem = StringFilters::removeTrailingChar(text, character);
        require(!stem.endsWith(character), "no such character is left at the end");
        require(stem + QString(text.size() - stem.size(), character) == text, "nothing else is taken away");
    }

    const QString escaped = StringFilters::escape(text);
    require(unescaped(escaped) == text, "what is escaped can be taken back");
    require(escaped.count('"') == text.count('"') && escaped.size() == text.size() + text.count('"') + text.count('\\'),
        "there is a backslash for each special character");
    return 0;
}

#include <Orv/Utility/StringFilters.h>

#include <algorithm>

namespace Orv::Utility {

namespace {

constexpr QStringView InvalidCharacters = u"/\\:*?\"><|";

} // namespace

QString StringFilters::prefixFilter(const QString& text)
{
    QString result = text;
    const auto end = std::remove_if(
        result.begin(), result.end(), [](QChar character) { return InvalidCharacters.contains(character); });
    result.truncate(end - result.begin());
    return result;
}

QString StringFilters::removeTrailingChar(const QString& text, const QChar& ch)
{
    const auto last = std::find_if(text.rbegin(), text.rend(), [ch](QChar character) { return character != ch; });
    return text.left(text.rend() - last);
}

QString StringFilters::escape(const QString& text)
{
    if (text.isEmpty())
        return text;
    QString result;
    result.reserve(text.size());
    for (const QChar character : text) {
        if (character == QLatin1Char('\\') || character == QLatin1Char('"'))
            result += QLatin1Char('\\');
        result += character;
    }
    return result;
}

} // namespace Orv::Utility

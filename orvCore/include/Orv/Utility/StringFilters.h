#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// String clean-up. Every function accepts any input and returns a new string, in linear time.
class ORV_EXPORT StringFilters {
public:
    /// Removes the characters that are invalid in file names: / \ : * ? " > < |
    static QString prefixFilter(const QString& text);
    /// Removes all trailing `ch`.
    static QString removeTrailingChar(const QString& text, const QChar& ch);
    /// Inserts a backslash before every backslash and every double quote.
    static QString escape(const QString& text);
};

} // namespace Orv::Utility

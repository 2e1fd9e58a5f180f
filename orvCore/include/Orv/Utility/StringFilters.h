#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// Cleans texts. Every input yields a text, in linear time; the argument stays as it is.
class ORV_EXPORT StringFilters {
public:
    /// Without the characters that file names must not have: / \ : * ? " > < |
    static QString prefixFilter(const QString& text);
    /// Without the run of `ch` at the end.
    static QString removeTrailingChar(const QString& text, const QChar& ch);
    /// With a backslash before every backslash and every double quote.
    static QString escape(const QString& text);
};

} // namespace Orv::Utility

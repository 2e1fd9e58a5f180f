#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Core {

/// The compression algorithms of the product, and their names in settings and messages.
class ORV_EXPORT Compression {
public:
    /// The numbers are exchanged with other programs.
    enum Algorithm : qint32 { Unknown = 0, GZip = 1, Deflate = 2, LZ4 = 3, LZ4High = 4 };

    /// The enumerator's name as text; "Unknown" for any value outside the enumeration.
    static QString toAlgorithmString(Algorithm algorithm);

    /// The algorithm of that name, in any case of letters; `Unknown` for any other text. Blanks count.
    static Algorithm fromAlgorithmString(const QString& name);
};

} // namespace Orv::Core

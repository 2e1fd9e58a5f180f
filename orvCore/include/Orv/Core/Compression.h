#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Core {

/// The compression algorithms of the product, and their names in settings and messages.
class ORV_EXPORT Compression {
public:
    /// The numbers are exchanged with other programs.
    enum Algorithm : qint32 {
        Unknown = 0, ///< none of these
        GZip = 1,    ///< the gzip file format (RFC 1952)
        Deflate = 2, ///< DEFLATE (RFC 1951)
        LZ4 = 3,     ///< LZ4 at its ordinary speed
        LZ4High = 4, ///< LZ4 in its slower, denser mode
    };

    /// The enumerator's name as text; "Unknown" for any value outside the enumeration.
    static QString toAlgorithmString(Algorithm algorithm);

    /// The algorithm of that name, in any case of letters; `Unknown` for any other text. Blanks count.
    static Algorithm fromAlgorithmString(const QString& name);
};

} // namespace Orv::Core

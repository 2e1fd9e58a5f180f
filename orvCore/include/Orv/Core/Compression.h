#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Core {

/// The compression algorithms of the product and their names in settings and messages.
class ORV_EXPORT Compression {
public:
    /// The values are exchanged with other programs and must not change.
    enum Algorithm : qint32 {
        Unknown = 0, ///< no known algorithm
        GZip = 1,    ///< the gzip file format (RFC 1952)
        Deflate = 2, ///< DEFLATE (RFC 1951)
        LZ4 = 3,     ///< LZ4, default level
        LZ4High = 4, ///< LZ4 HC: slower, compresses better
    };

    /// Returns the name of the enumerator; "Unknown" for values outside the enumeration.
    static QString toAlgorithmString(Algorithm algorithm);

    /// Returns the algorithm called `name`, ignoring case but not white space; `Unknown` for any other string.
    static Algorithm fromAlgorithmString(const QString& name);
};

} // namespace Orv::Core

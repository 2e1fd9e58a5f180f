#include <Orv/Core/Compression.h>

namespace Orv::Core {

QString Compression::toAlgorithmString(Algorithm algorithm)
{
    switch (algorithm) {
    case GZip:
        return QStringLiteral("GZip");
    case Deflate:
        return QStringLiteral("Deflate");
    case LZ4:
        return QStringLiteral("LZ4");
    case LZ4High:
        return QStringLiteral("LZ4High");
    default:
        return QStringLiteral("Unknown");
    }
}

Compression::Algorithm Compression::fromAlgorithmString(const QString& name)
{
    const QString upper = name.toUpper();
    for (const Algorithm algorithm : {LZ4, GZip, LZ4High, Deflate}) {
        if (upper == toAlgorithmString(algorithm).toUpper())
            return algorithm;
    }
    return Unknown;
}

} // namespace Orv::Core

#include <Orv/Core/Compression.h>

namespace Orv::Core {

namespace {
const QString UnknownName = QStringLiteral("Unknown");
const QString GZipName = QStringLiteral("GZip");
const QString DeflateName = QStringLiteral("Deflate");
const QString LZ4Name = QStringLiteral("LZ4");
const QString LZ4HighName = QStringLiteral("LZ4High");
} // namespace

QString Compression::toAlgorithmString(Algorithm algorithm)
{
    switch (algorithm) {
    case GZip:
        return GZipName;
    case Deflate:
        return DeflateName;
    case LZ4:
        return LZ4Name;
    case LZ4High:
        return LZ4HighName;
    default:
        return UnknownName;
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

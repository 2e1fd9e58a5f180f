#include <Orv/Core/Version.h>

namespace Orv::Core {

namespace {
const QString VersionText = QStringLiteral("DOV_BUILD_VERSION=4.3.0.54");
}

const QString& Version::string()
{
    return VersionText;
}

const QVersionNumber& Version::number()
{
    static const QVersionNumber number = QVersionNumber::fromString(VersionText);
    return number;
}

} // namespace Orv::Core

#include <Orv/Core/Version.h>

namespace Orv::Core {

const QString& Version::string()
{
    static const QString text = QStringLiteral("DOV_BUILD_VERSION=4.3.0.54");
    return text;
}

const QVersionNumber& Version::number()
{
    static const QVersionNumber number = QVersionNumber::fromString(string());
    return number;
}

} // namespace Orv::Core

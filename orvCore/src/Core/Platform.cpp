#include <Orv/Core/Platform.h>

namespace Orv::Core {

Platform::Type Platform::current()
{
    return MacOS;
}

QString Platform::toString(Type type)
{
    switch (type) {
    case Linux:
        return QStringLiteral("linux");
    case MacOS:
        return QStringLiteral("macOS");
    default:
        return QStringLiteral("Windows");
    }
}

Platform::Type Platform::fromString(const QString& name)
{
    const QString upper = name.toUpper();
    for (const Type type : {Windows, Linux, MacOS}) {
        if (upper == toString(type).toUpper())
            return type;
    }
    return Unknown;
}

} // namespace Orv::Core

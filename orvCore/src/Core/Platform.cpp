#include <Orv/Core/Platform.h>

namespace Orv::Core {

namespace {
const QString WindowsName = QStringLiteral("Windows");
const QString LinuxName = QStringLiteral("linux");
const QString MacOSName = QStringLiteral("macOS");
} // namespace

Platform::Type Platform::current()
{
    return MacOS;
}

QString Platform::toString(Type type)
{
    switch (type) {
    case Linux:
        return LinuxName;
    case MacOS:
        return MacOSName;
    default:
        return WindowsName;
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

#pragma once

#include <Orv/Export.h>

#include <QString>
#include <QVersionNumber>

namespace Orv::Core {

/// The product version that the client reports. It is independent of the library's own version (file name, CMake
/// package).
class ORV_EXPORT Version {
public:
    /// The version string with its prefix: "DOV_BUILD_VERSION=4.3.0.54".
    static const QString& string();

    /// `string()` parsed as a version number. Always null, because the string begins with letters.
    static const QVersionNumber& number();
};

} // namespace Orv::Core

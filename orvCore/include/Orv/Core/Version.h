#pragma once

#include <Orv/Export.h>

#include <QString>
#include <QVersionNumber>

namespace Orv::Core {

/// The product version that the client reports. The library's own version (its file name, its CMake package) is
/// another matter.
class ORV_EXPORT Version {
public:
    /// The whole version text, prefix included: "DOV_BUILD_VERSION=4.3.0.54".
    static const QString& string();

    /// `string()` read as a version number. Since that text begins with letters, this is the null version number.
    static const QVersionNumber& number();
};

} // namespace Orv::Core

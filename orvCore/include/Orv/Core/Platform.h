#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Core {

/// The operating systems of the product's clients and their names in settings and messages.
class ORV_EXPORT Platform {
public:
    /// The values are exchanged with other programs and must not change.
    enum Type : qint32 {
        Windows = 0, ///< Windows
        Linux = 1,   ///< Linux
        MacOS = 2,   ///< macOS
        Unknown = 3, ///< no known platform
    };

    /// Returns `MacOS`, the product's platform, in builds for other systems too.
    static Type current();

    /// Returns "Windows", "linux" or "macOS"; "Windows" for every other value, including `Unknown`.
    static QString toString(Type type);

    /// Returns the platform called `name`, ignoring case but not white space; `Unknown` for any other string.
    static Type fromString(const QString& name);
};

} // namespace Orv::Core

#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Core {

/// The operating systems of the product's clients, and their names in settings and messages.
class ORV_EXPORT Platform {
public:
    /// The numbers are exchanged with other programs.
    enum Type : qint32 {
        Windows = 0, ///< any Windows
        Linux = 1,   ///< any Linux
        MacOS = 2,   ///< macOS
        Unknown = 3, ///< none of these
    };

    /// Always `MacOS`, the product's home, also in a build for another system.
    static Type current();

    /// "Windows", "linux" or "macOS". Every other value, `Unknown` included, gives "Windows".
    static QString toString(Type type);

    /// The platform of that name, in any case of letters; `Unknown` for any other text. Blanks count.
    static Type fromString(const QString& name);
};

} // namespace Orv::Core

#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// The version of the running macOS, read anew from the system's version lists by every call.
///
/// From macOS 11 on the system may show an old program the version 10.16 in the first list; a second, hidden list has
/// the true one. Nothing is thrown or logged: without a readable list, as on Linux, the version is 0.0.
class ORV_EXPORT SystemInfo {
public:
    /// Major and minor, and the patch level if it is not 0: "14.2.1", "11.0".
    static QString productVersion();
    /// `productVersion()` for people: "macOS 14.2.1".
    static QString prettyProductName();
};

} // namespace Orv::Utility

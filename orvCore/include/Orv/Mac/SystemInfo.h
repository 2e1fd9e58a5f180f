#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// The version of the running macOS. Every call reads the system's version property lists.
///
/// From macOS 11 on, the first list may report version 10.16 to programs built for older systems; a second, hidden list
/// has the real version. Does not throw or log: without a readable list, as on Linux, the version is 0.0.
class ORV_EXPORT SystemInfo {
public:
    /// Returns major and minor version, and the patch level if it is not 0: "14.2.1", "11.0".
    static QString productVersion();
    /// Returns `productVersion()` for display: "macOS 14.2.1".
    static QString prettyProductName();
};

} // namespace Orv::Utility

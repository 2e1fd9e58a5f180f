#pragma once

#include <QString>

namespace Orv::Utility {

/// Returns the version from the lists in `directory`, a path that ends with a slash. Without a valid version,
/// returns the invalid one of the last list that could be opened: 10.16, one with major number 0, or 0.0.
QString macOsVersion(const QString& directory);

} // namespace Orv::Utility

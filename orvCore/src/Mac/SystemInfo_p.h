#pragma once

#include <QString>

namespace Orv::Utility {

/// The version that the lists in `folder`, whose name ends with a slash, tell. When none has a version that counts, the
/// result is what the last list that could be opened left: 10.16, a version without a major number, or 0.0.
QString macOsVersion(const QString& folder);

} // namespace Orv::Utility

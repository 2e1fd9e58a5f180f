#pragma once

#include <QDateTime>
#include <QString>

namespace Orv::Utility {

/// Formats a duration that starts at `startOfDay`, the start of a local day.
QString durationText(const QDateTime& startOfDay, int seconds);

} // namespace Orv::Utility

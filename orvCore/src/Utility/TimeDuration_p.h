#pragma once

#include <QDateTime>
#include <QString>

namespace Orv::Utility {

/// The text of a duration that begins at the beginning of a given local day.
QString durationText(const QDateTime& startOfDay, int seconds);

} // namespace Orv::Utility

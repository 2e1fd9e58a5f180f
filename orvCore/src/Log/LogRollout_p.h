#pragma once

#include <QString>

/// The name that `logsRollout()` gives to a full log file at this second.
QString rotatedName(const QString& fileName);

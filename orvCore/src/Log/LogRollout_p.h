#pragma once

#include <QString>

/// The name that `logsRollout()` gives to a file at this moment.
QString rotatedName(const QString& fileName);

/// Renames a file, in the system's encoding. Does nothing if there is a file of the new name, and, in contrast to
/// QFile::rename(), never copies: a full log would be copied at every entry where the folder refuses the renaming.
void renameUnlessTaken(const char* from, const char* to);

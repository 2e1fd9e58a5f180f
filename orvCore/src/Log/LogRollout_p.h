#pragma once

#include <QString>

/// Returns the name that `logsRollout()` would give the file now.
QString rotatedName(const QString& fileName);

/// Renames a file; paths are in the system's encoding. Does nothing if `to` exists. Unlike QFile::rename(), never
/// copies: if the directory is read-only, a full log would be copied at every entry.
void renameUnlessTaken(const char* from, const char* to);

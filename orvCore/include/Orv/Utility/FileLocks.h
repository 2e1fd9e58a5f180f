#pragma once

#include <Orv/Export.h>

#include <QtGlobal>

/// \file
/// Checks whether any process holds a write lock on a file, according to "/proc/locks". The result may be outdated
/// immediately. On systems without that list it is -2. Does not log. Thread-safe.

/// Like `file_wr_check_ino`, for the file `name`; -1 if it does not exist.
ORV_EXPORT int file_wr_check_name(const char* name);

/// Returns 1 if a write lock on the inode is held, 0 if not, -2 if the list cannot be read. Pending locks do not count.
/// The device is not compared: the same inode number on another file system counts too.
ORV_EXPORT int file_wr_check_ino(quint64 ino);

/// Splits a line of that list (proc(5)) into its fields: ordinal, class ("->" for a pending lock), mode, access,
/// process, device major, device minor, inode, start, end.
///
/// A field ends at a space, tab, newline or colon. Runs of white space separate fields once; two colons enclose an
/// empty field. Splits `line` in place, stores pointers to at most `max` fields in `fields` and sets the remaining
/// elements to null. Returns the number of fields.
ORV_EXPORT unsigned get_fields(char* line, char** fields, unsigned char max);

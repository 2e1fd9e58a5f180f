#pragma once

#include <Orv/Export.h>

#include <QtGlobal>

/// \file
/// Whether any process holds a write lock on a file, as the kernel lists it in "/proc/locks". The answer may be
/// outdated as soon as it is given. Systems without that list give -2. Nothing is logged. Thread-safe.

/// As `file_wr_check_ino` for the file at `name`; -1 if there is none.
ORV_EXPORT int file_wr_check_name(const char* name);

/// 1 if a write lock on the inode number is held, 0 if none is, -2 if the list cannot be read. Waiting for a lock is
/// not holding one. The device is not compared: the same number on another file system counts as well.
ORV_EXPORT int file_wr_check_ino(quint64 ino);

/// Splits a line of that list (proc(5)): ordinal, class or "->" for a lock that is waited for, mode, access, process,
/// device major, device minor, inode, start, end.
///
/// A field ends with a blank, a tab, a newline or a colon; all but the colon may stand in runs between fields, so two
/// colons enclose an empty one. `line` is cut up in place. `fields` gets the beginnings of at most `max` fields and is
/// null from there on. Returns their number.
ORV_EXPORT unsigned get_fields(char* line, char** fields, unsigned char max);

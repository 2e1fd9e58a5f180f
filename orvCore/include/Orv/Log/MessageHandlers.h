#pragma once

#include <Orv/Export.h>

#include <QString>
#include <QtGlobal>

/// The Qt message handler that `LogManager` installs without a shadow log: writes each message to the log. Levels are
/// debug DEBUG, info INFO, warning WARNING, critical ERROR, fatal FATAL; a fatal message ends the process by `abort()`
/// once it is written. Warnings that begin with "libpng" are dropped, and so are types that Qt does not have.
///
/// Thread-safe. A message for which there is no memory is dropped.
ORV_EXPORT void messageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message);

/// The handler that `LogManager` installs with a shadow log: as `messageHandler`, once to each log. The shadow log gets
/// every message, also while the ordinary log is disabled. With raw output both entries are echoed.
ORV_EXPORT void messageHandlerShadow(QtMsgType type, const QMessageLogContext& context, const QString& message);

/// The text of an entry: the message alone, or, in verbose mode, the message followed by a line each for the function,
/// the category and the line number of its origin. `type` is not used.
ORV_EXPORT QString logFormat(QtMsgType type, const QMessageLogContext& context, const QString& message);

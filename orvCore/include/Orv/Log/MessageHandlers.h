#pragma once

#include <Orv/Export.h>

#include <QString>
#include <QtGlobal>

/// The Qt message handler that `LogManager` installs without a shadow log: writes each message to the log, with
/// the level DEBUG, INFO, WARNING, ERROR (critical messages) or FATAL. A fatal message ends the process with
/// `abort()` after it is written. Warnings that begin with "libpng" and unknown message types are dropped.
///
/// Thread-safe. If memory runs out, the message is dropped.
ORV_EXPORT void messageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message);

/// The handler that `LogManager` installs with a shadow log: like `messageHandler`, but writes to both logs. The shadow
/// log receives every message, even while the ordinary log is disabled. With raw output, both entries are echoed.
ORV_EXPORT void messageHandlerShadow(QtMsgType type, const QMessageLogContext& context, const QString& message);

/// Returns the text of an entry: the message; in verbose mode followed by three lines with the function, the category
/// and the line number of its origin. `type` is not used.
ORV_EXPORT QString logFormat(QtMsgType type, const QMessageLogContext& context, const QString& message);

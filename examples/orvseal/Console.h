#pragma once

#include <QByteArray>
#include <QString>

namespace orvseal {

/// Prints a line on standard output.
void print(const QString& line);

/// `text` with its control characters as "\n" or "\x1b", so that a name stays on its line and moves no cursor.
QString printable(const QString& text);

/// As "3.40 MB".
QString sizeText(qint64 bytes);
/// As "00:01:30".
QString durationText(qint64 milliseconds);

/// The password, as raw bytes: what `passwordFile` holds, less a newline at its end; without such a file the
/// environment variable ORVSEAL_PASSWORD; else what is typed on the terminal, without echo, the second time to be
/// `confirmed`. Throws if there is none, or an empty one.
QByteArray obtainPassword(const QString& passwordFile, bool confirmed);

} // namespace orvseal

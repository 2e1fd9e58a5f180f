#pragma once

#include <QByteArray>
#include <QString>

namespace orvseal {

/// Prints a line on standard output.
void print(const QString& line);

/// `text` with control characters as "\n" or "\x1b", so that a name stays on its line and controls no terminal.
QString printable(const QString& text);

/// As "3.40 MB".
QString sizeText(qint64 bytes);
/// As "00:01:30".
QString durationText(qint64 milliseconds);

/// The password, as raw bytes: the content of `passwordFile` without a newline at its end; or else the environment
/// variable ORVSEAL_PASSWORD; or else read from the terminal without echo, twice if it has to be `confirmed`. Throws if
/// there is none, or if it is empty.
QByteArray obtainPassword(const QString& passwordFile, bool confirmed);

} // namespace orvseal

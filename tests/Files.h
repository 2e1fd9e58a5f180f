#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

inline void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s cannot be written", qPrintable(path));
}

/// Returns the content of a file; empty if it does not exist.
inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

#pragma once

#include <QDateTime>

#include <gtest/gtest.h>

// GoogleTest, and printers for its failure messages. The compiler options include this header in every test file,
// because without it GoogleTest would print bytes.

inline void PrintTo(const QByteArray& bytes, std::ostream* stream)
{
    *stream << testing::PrintToString(bytes.toStdString());
}

inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << testing::PrintToString(text.toStdString());
}

inline void PrintTo(const QDateTime& time, std::ostream* stream)
{
    PrintTo(time.toString(Qt::ISODateWithMs), stream);
}

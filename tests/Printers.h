#pragma once

#include <QDateTime>

#include <gtest/gtest.h>

// GoogleTest, and how it shows values of a comparison that fails. Every test file gets this header by the compiler's
// options: one without it would show bytes.

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

#pragma once

#include <QByteArray>
#include <QFile>
#include <QMap>
#include <QString>

#include <gtest/gtest.h>

#include <vector>

/// One case of a known-answer file: its values by name.
using KnownAnswer = QMap<QByteArray, QByteArray>;

/// A file of tests/data, or of the folder that ORV_TEST_DATA names.
inline QString dataPath(const char* fileName)
{
    return qEnvironmentVariable("ORV_TEST_DATA", QStringLiteral(ORV_TEST_DATA)) + '/' + QLatin1String(fileName);
}

/// The lines of such a file without those that # begins.
inline std::vector<QByteArray> dataLines(const char* fileName)
{
    QFile file(dataPath(fileName));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName;
    std::vector<QByteArray> lines;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (!line.startsWith('#'))
            lines.push_back(line);
    }
    return lines;
}

/// Reads a known-answer file: lines "name = value", an empty line between cases.
inline std::vector<KnownAnswer> knownAnswers(const char* fileName)
{
    std::vector<KnownAnswer> cases;
    bool inCase = false;
    for (const QByteArray& line : dataLines(fileName)) {
        if (!line.isEmpty() && !inCase)
            cases.emplace_back();
        inCase = !line.isEmpty();
        const int sign = line.indexOf('=');
        if (inCase)
            cases.back().insert(line.left(sign).trimmed(), line.mid(sign + 1).trimmed());
    }
    EXPECT_FALSE(cases.empty()) << fileName;
    return cases;
}

/// Reads a table with a case a line: values separated by |, below a line with their names. Quotation marks around a
/// value keep its white space.
inline std::vector<KnownAnswer> tableOfAnswers(const char* fileName)
{
    std::vector<KnownAnswer> cases;
    QList<QByteArray> names;
    for (const QByteArray& line : dataLines(fileName)) {
        QList<QByteArray> values = line.split('|');
        for (QByteArray& value : values) {
            value = value.trimmed();
            if (value.startsWith('"') && value.endsWith('"'))
                value = value.mid(1, value.size() - 2);
        }
        if (names.isEmpty() && !line.isEmpty()) {
            names = values;
        } else if (!line.isEmpty()) {
            EXPECT_EQ(values.size(), names.size()) << fileName << ": " << line.constData();
            cases.emplace_back();
            for (int i = 0; i < names.size(); ++i)
                cases.back().insert(names[i], values.value(i));
        }
    }
    EXPECT_FALSE(cases.empty()) << fileName;
    return cases;
}

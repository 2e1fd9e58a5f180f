#pragma once

#include <QByteArray>
#include <QFile>
#include <QMap>
#include <QString>

#include <gtest/gtest.h>

#include <vector>

/// One case of a known-answer file: its values by name.
using KnownAnswer = QMap<QByteArray, QByteArray>;

/// Reads a known-answer file of tests/data, or of the folder that ORV_TEST_DATA names: lines "name = value", an empty
/// line between cases, # begins a comment line.
inline std::vector<KnownAnswer> knownAnswers(const char* fileName)
{
    const QString folder = qEnvironmentVariable("ORV_TEST_DATA", QStringLiteral(ORV_TEST_DATA));
    QFile file(folder + QLatin1Char('/') + QLatin1String(fileName));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName;
    std::vector<KnownAnswer> cases;
    bool inCase = false;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (line.startsWith('#'))
            continue;
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

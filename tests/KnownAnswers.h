#pragma once

#include <QFile>
#include <QMap>

#include <vector>

/// A row of a table: its values by the names of the columns; the whole line by the name "row".
using KnownAnswer = QMap<QByteArray, QByteArray>;

/// A file of tests/data, or of the folder that ORV_TEST_DATA names.
inline QString dataPath(const char* fileName)
{
    return qEnvironmentVariable("ORV_TEST_DATA", QStringLiteral(ORV_TEST_DATA)) + '/' + QLatin1String(fileName);
}

/// Reads a table with a case a line: values separated by |, below a line with their names. Quotation marks around a
/// value keep its white space; # begins a comment.
inline std::vector<KnownAnswer> tableOfAnswers(const char* fileName)
{
    QFile file(dataPath(fileName));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName;
    std::vector<KnownAnswer> rows;
    QList<QByteArray> names;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        QList<QByteArray> values = line.split('|');
        for (QByteArray& value : values) {
            value = value.trimmed();
            if (value.startsWith('"') && value.endsWith('"'))
                value = value.mid(1, value.size() - 2);
        }
        if (names.isEmpty()) {
            names = values;
            continue;
        }
        EXPECT_EQ(values.size(), names.size()) << line.constData();
        rows.push_back({{"row", line}});
        for (int i = 0; i < names.size(); ++i)
            rows.back().insert(names[i], values.value(i));
    }
    EXPECT_FALSE(rows.empty()) << fileName;
    return rows;
}

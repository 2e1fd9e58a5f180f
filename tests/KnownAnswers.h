#pragma once

#include <QFile>
#include <QMap>

#include <vector>

/// A table row: its values by column name; the whole line has the name "row".
using KnownAnswer = QMap<QByteArray, QByteArray>;

/// The path of a file in tests/data, or in the directory ORV_TEST_DATA.
inline QString dataPath(const char* fileName)
{
    return qEnvironmentVariable("ORV_TEST_DATA", QStringLiteral(ORV_TEST_DATA)) + '/' + QLatin1String(fileName);
}

/// Reads a table with one case per line: values separated by |, after a line with the column names. Quotes around a
/// value keep its white space; # starts a comment.
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

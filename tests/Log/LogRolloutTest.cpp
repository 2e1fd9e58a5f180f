#include <Orv/Log/LogRollout.h>

#include "Files.h"

#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString timeText(int secondsFromNow = 0)
{
    return QDateTime::currentDateTime().addSecs(secondsFromNow).toString(QStringLiteral("yyyyMMddhhmmss"));
}

QStringList namesIn(const QTemporaryDir& folder)
{
    return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden);
}

} // namespace

TEST(LogRollout, NewNameHasTheTime)
{
    const std::pair<const char*, const char*> rows[] = {
        {"log_A.log", "log_A_"}, {"log_A.text", "log_A._"}, {"gr\u00f6\u00dfe.log", "gr\u00f6\u00dfe_"}, {"abc", "_"}};
    const QString back = QDir::currentPath();
    for (const auto& [before, prefix] : rows) {
        const QTemporaryDir folder;
        QDir::setCurrent(folder.path());
        writeFile(QString::fromUtf8(before), "content");
        const QString earliest = timeText();
        logsRollout(before, 0);
        const QString latest = timeText();
        const QString name = namesIn(folder).join(QLatin1Char('/'));
        const QString time = name.mid(QString::fromUtf8(prefix).size(), 14);
        EXPECT_TRUE(earliest <= time && time <= latest) << before << ": " << name.toStdString();
        EXPECT_EQ(name, QString::fromUtf8(prefix) + time + QStringLiteral(".log"));
    }
    QDir::setCurrent(back);
}

TEST(LogRollout, NoFileIsOverwritten)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("log.log"));
    writeFile(path, "content");
    for (int second = 0; second < 60; ++second) // whichever second it is by then, there is a file of the new name
        writeFile(folder.filePath(QStringLiteral("log_%1.log").arg(timeText(second))), "older");
    logsRollout(QFile::encodeName(path).constData(), 0);
    logsRollout(QFile::encodeName(folder.filePath(QStringLiteral("none.log"))).constData(), 0);
    EXPECT_EQ(contentOf(path), "content");
    EXPECT_EQ(namesIn(folder).size(), 61);
}

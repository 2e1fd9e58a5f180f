#include <Orv/Log/LogRollout.h>

#include "Files.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString timeText()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmss"));
}

/// The name of the single entry of the folder.
QString nameIn(const QTemporaryDir& folder)
{
    return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).join(QLatin1Char('/'));
}

} // namespace

TEST(LogRollout, NewNameHasTheTime)
{
    const std::pair<const char*, const char*> rows[] = {
        {"log_A.log", "log_A_"}, {"log_A.text", "log_A._"}, {"gr\u00f6\u00dfe.log", "gr\u00f6\u00dfe_"}};
    for (const auto& [before, prefix] : rows) {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QString::fromUtf8(before));
        writeFile(path, "content");
        const QString earliest = timeText();
        logsRollout(path.toUtf8().constData(), 0);
        const QString latest = timeText();
        const QString name = nameIn(folder);
        const QString time = name.mid(QString::fromUtf8(prefix).size(), 14);
        EXPECT_TRUE(earliest <= time && time <= latest) << time.toStdString();
        EXPECT_EQ(name, QString::fromUtf8(prefix) + time + QStringLiteral(".log"));
    }
}

TEST(LogRollout, ShortNamesLoseAllTheirLetters)
{
    const QTemporaryDir folder;
    const QString back = QDir::currentPath();
    QDir::setCurrent(folder.path());
    writeFile(QStringLiteral("abc"), "content");
    logsRollout("abc", 0);
    QDir::setCurrent(back);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^_\\d{14}\\.log$")).match(nameIn(folder)).hasMatch());
}

TEST(LogRollout, NoFileIsOverwritten)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("log.log"));
    writeFile(path, "content");
    // Whichever second it is by then, there is a file of the new name.
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < 60; ++second) {
        const QString time = now.addSecs(second).toString(QStringLiteral("yyyyMMddhhmmss"));
        writeFile(folder.filePath(QStringLiteral("log_%1.log").arg(time)), "older");
    }
    logsRollout(QFile::encodeName(path).constData(), 0);
    EXPECT_EQ(contentOf(path), "content");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 61);

    logsRollout(QFile::encodeName(folder.filePath(QStringLiteral("none.log"))).constData(), 0);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 61);
}

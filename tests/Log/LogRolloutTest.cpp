#include <Orv/Log/LogRollout.h>

#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

void create(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

QString timeText()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmss"));
}

/// The single entry of the folder and what came before and after the moment in its name.
struct Moved {
    QString prefix;
    QString time;
    QString suffix;
};

Moved movedFile(const QTemporaryDir& folder, int prefixLength)
{
    const QStringList names = QDir(folder.path()).entryList(QDir::Files | QDir::Hidden);
    EXPECT_EQ(names.size(), 1);
    const QString name = names.value(0);
    return {name.left(prefixLength), name.mid(prefixLength, 14), name.mid(prefixLength + 14)};
}

} // namespace

TEST(LogRollout, NewNameHasTheTime)
{
    const std::pair<const char*, const char*> rows[] = {{"log_A.log", "log_A_"}, {"log_A.text", "log_A._"},
        {"gr\xc3\xb6\xc3\x9f"
         "e.log",
            "gr\xc3\xb6\xc3\x9f"
            "e_"}};
    for (const auto& [name, prefix] : rows) {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QString::fromUtf8(name));
        create(path, "content");
        const QString before = timeText();
        logsRollout(path.toUtf8().constData(), 0);
        const QString after = timeText();
        const Moved moved = movedFile(folder, QString::fromUtf8(prefix).size());
        EXPECT_EQ(moved.prefix, QString::fromUtf8(prefix));
        EXPECT_TRUE(before <= moved.time && moved.time <= after) << moved.time.toStdString();
        EXPECT_EQ(moved.suffix, QStringLiteral(".log"));
    }
}

TEST(LogRollout, ShortNamesLoseAllTheirLetters)
{
    const QTemporaryDir folder;
    const QString back = QDir::currentPath();
    QDir::setCurrent(folder.path());
    create(QStringLiteral("abc"), "content");
    logsRollout("abc", 0);
    QDir::setCurrent(back);
    const Moved moved = movedFile(folder, 1);
    EXPECT_EQ(moved.prefix + moved.suffix, QStringLiteral("_.log"));
}

TEST(LogRollout, NoFileIsOverwritten)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("log.log"));
    create(path, "content");
    // Whichever second it is by then, there is a file of the new name.
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < 60; ++second) {
        const QString time = now.addSecs(second).toString(QStringLiteral("yyyyMMddhhmmss"));
        create(folder.filePath(QStringLiteral("log_%1.log").arg(time)), "older");
    }
    logsRollout(QFile::encodeName(path).constData(), 0);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "content");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 61);

    logsRollout(QFile::encodeName(folder.filePath(QStringLiteral("none.log"))).constData(), 0);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 61);
}

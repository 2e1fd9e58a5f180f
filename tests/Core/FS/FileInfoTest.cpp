#include <Orv/Core/FS/FileInfo.h>

#include "DirectoryTest.h"
#include "KnownAnswers.h"
#include "ScopedTimeZone.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QResource>
#include <QScopeGuard>

#include <sys/stat.h>

using Orv::Core::FS::FileInfo;

namespace {

const QDateTime Time(QDate(2024, 7, 1), QTime(23, 30), Qt::UTC);

class FileInfoTest : public DirectoryTest {
protected:
    QString makeFile(const char* name, const QByteArray& content) const
    {
        QFile file(pathOf(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush());
        EXPECT_TRUE(file.setFileTime(Time, QFileDevice::FileModificationTime));
        EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::ReadUser | QFile::ExeOther));
        return file.fileName();
    }
};

/// The properties of a snapshot, without names and creation time.
std::string stateOf(const FileInfo& info)
{
    const std::pair<bool, const char*> properties[] = {{info.isFile(), "file"}, {info.isDir(), "directory"},
        {info.isSymLink(), "link"}, {info.isHidden(), "hidden"}, {info.isExist(), "exists"},
        {info.isReadable(), "readable"}, {info.permissions() & QFile::ReadOwner, "permissions"}};
    std::string state;
    for (const auto& [is, name] : properties)
        state += is ? std::string(name) + ", " : "";
    return state + info.lastModified().toString("yyyy, ").toStdString() + std::to_string(info.size());
}

void expectNothing(const FileInfo& info, const QString& path)
{
    EXPECT_EQ(stateOf(info), "0");
    EXPECT_TRUE(info.lastModified().isNull() && info.birthTime().isNull());
    EXPECT_EQ(info.permissions(), QFile::Permissions());
    EXPECT_EQ(info.absoluteFilePath(), path);
    EXPECT_EQ(info.filePath(), path);
}

} // namespace

TEST_F(FileInfoTest, AgreesWithQFileInfo)
{
    const auto valuesOf = [](const auto& info, const QDateTime& birthTime) {
        return std::make_tuple(info.absoluteFilePath(), info.isDir(), info.isFile(), info.size(),
            info.lastModified().toUTC(), info.lastModified().isNull(), birthTime, info.permissions());
    };
    const auto isSame = [&](const QString& path) {
        const FileInfo info(path);
        const QFileInfo qt(path);
        if (!qt.exists() && !qt.isSymLink())
            return info.absoluteFilePath().isEmpty();
        const QDateTime born = qt.birthTime().isValid() ? qt.birthTime() : qt.metadataChangeTime();
        return valuesOf(info, info.birthTime()) == valuesOf(qt, born.toUTC());
    };
    ASSERT_TRUE(QFile::link(pathOf("missing"), pathOf("dangling")) && QFile::link("/", pathOf("root")));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pathOf("pipe")).constData(), 0644), 0);
    ASSERT_TRUE(QResource::registerResource(dataPath("resource.rcc"))); // rcc --format-version 2 --binary
    const auto unregister = qScopeGuard([] { QResource::unregisterResource(dataPath("resource.rcc")); });
    const QString resource = ":/test/resource.txt";
    EXPECT_EQ(FileInfo(resource).lastModified(), QDateTime(QDate(2024, 1, 31), QTime(12, 0), Qt::UTC));
    EXPECT_EQ(FileInfo(resource).lastModified().timeSpec(), Qt::UTC);
    QStringList paths = {resource, "", ".", "..", "//", "/tmp/", "/usr//bin/../lib", "/etc/passwd/", ":/resource",
        "x:y", "/etc/passwd" + QString(QChar(0)), pathOf("root/"), pathOf("dangling/")};
    const QDir::Filters all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    for (const QString& top : {m_directory.path(), QString("/etc"), QString("/dev"), QString("/proc/self"),
             QString("/root"), QString("/sys/class"), QString("/usr/bin"), QString("/usr/lib")}) {
        QDirIterator item(top, all, QDirIterator::Subdirectories);
        for (int i = 0; i < 2000 && item.hasNext(); ++i)
            paths += item.next();
    }
    int compared = 0;
    for (const QString& path : qAsConst(paths)) {
        // Retries, because another process may change the entry between the two queries.
        EXPECT_TRUE(isSame(path) || isSame(path) || isSame(path)) << qPrintable(path);
        ++compared;
    }
    EXPECT_GT(compared, 1000);
}

TEST_F(FileInfoTest, Snapshot)
{
    const auto zone = scopedTimeZone("America/New_York");
    const QString path = makeFile(".name.tar.gz", "12345");
    const QDateTime begin = QDateTime::currentDateTimeUtc().addSecs(-60);
    const FileInfo file(path);
    EXPECT_EQ(stateOf(file), "file, hidden, exists, readable, permissions, 2024, 5");
    EXPECT_EQ(file.fileName(), ".name.tar.gz");
    EXPECT_EQ(file.suffix(), "gz");
    EXPECT_EQ(file.lastModified(), Time);
    EXPECT_EQ(file.lastModified().timeSpec(), Qt::UTC);
    EXPECT_GT(file.birthTime(), begin) << "not the modification time";
    EXPECT_EQ(file.birthTime().timeSpec(), Qt::UTC);
    EXPECT_EQ(file.permissions() & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
        QFile::ReadOwner | QFile::ExeOther);

    const FileInfo directory(m_directory.path() + QLatin1Char('/'));
    EXPECT_TRUE(directory.isDir() && !directory.isFile() && directory.isExist());
    EXPECT_EQ(directory.size(), QFileInfo(m_directory.path()).size());
}

TEST_F(FileInfoTest, UnchangedUntilRefreshed)
{
    const QString path = makeFile("file", "12345");
    FileInfo info{QFileInfo(path)};
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_EQ(stateOf(info), "file, permissions, 2024, 5") << "without the queries of the current state";
    info.refresh();
    expectNothing(info, path);

    makeFile("file", "1234567");
    info.refresh();
    EXPECT_EQ(stateOf(info), "file, exists, readable, permissions, 2024, 7");
    info.refresh(m_directory.path());
    EXPECT_TRUE(info.isDir());
    EXPECT_EQ(info.absoluteFilePath(), m_directory.path());
}

TEST_F(FileInfoTest, MissingEntries)
{
    FileInfo missing(pathOf("missing"));
    expectNothing(missing, QString());
    missing.refresh();
    expectNothing(missing, QString());
    expectNothing(FileInfo(), QString());
    expectNothing(FileInfo(QStringLiteral("/etc/passwd") + QChar(0) + QStringLiteral(".txt")), QString());
}

TEST_F(FileInfoTest, Links)
{
    const QString target = makeFile("file", "12345");
    const QString link = pathOf("link");
    ASSERT_TRUE(QFile::link(target, link));
    for (const char* const state : {"file, link, exists, readable, permissions, 2024, 5", "link, 0"}) {
        EXPECT_EQ(stateOf(FileInfo(link)), state);
        EXPECT_EQ(FileInfo(link).absoluteFilePath(), link);
        QFile::remove(target);
    }
}

TEST_F(FileInfoTest, RelativePath)
{
    const QString relative = QDir::current().relativeFilePath(makeFile("file", "12345"));
    FileInfo info(relative);
    EXPECT_EQ(info.absoluteFilePath(), QFileInfo(relative).absoluteFilePath());
    EXPECT_EQ(info.filePath(), info.absoluteFilePath()) << "absolute after construction";
    info.refresh(relative);
    EXPECT_EQ(info.filePath(), relative);
}

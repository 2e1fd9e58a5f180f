#include <Orv/Core/FS/FileInfo.h>

#include "ScopedTimeZone.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using Orv::Core::FS::FileInfo;

namespace {

const QDateTime Time(QDate(2024, 7, 1), QTime(23, 30), Qt::UTC);

class FileInfoTest : public testing::Test {
protected:
    QString placeOf(const char* name) const { return m_folder.filePath(name); }

    QString makeFile(const char* name, const QByteArray& content) const
    {
        QFile file(placeOf(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush());
        EXPECT_TRUE(file.setFileTime(Time, QFileDevice::FileModificationTime));
        EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::ReadUser | QFile::ExeOther));
        return file.fileName();
    }

    QTemporaryDir m_folder;
};

void expectNothing(const FileInfo& info)
{
    EXPECT_EQ(info.size(), 0);
    EXPECT_FALSE(info.isDir());
    EXPECT_FALSE(info.isFile());
    EXPECT_TRUE(info.lastModified().isNull());
    EXPECT_TRUE(info.birthTime().isNull());
    EXPECT_EQ(info.permissions(), QFile::Permissions());
}

} // namespace

TEST_F(FileInfoTest, Snapshot)
{
    const ScopedTimeZone zone("America/New_York");
    const QString path = makeFile(".name.tar.gz", "12345");
    const qint64 begin = QDateTime::currentMSecsSinceEpoch() - 60000;
    const FileInfo file(path);
    EXPECT_EQ(file.absoluteFilePath(), path);
    EXPECT_EQ(file.filePath(), path);
    EXPECT_TRUE(file.isFile());
    EXPECT_FALSE(file.isDir());
    EXPECT_FALSE(file.isSymLink());
    EXPECT_TRUE(file.isHidden());
    EXPECT_TRUE(file.isReadable());
    EXPECT_EQ(file.size(), 5);
    EXPECT_EQ(file.fileName(), QStringLiteral(".name.tar.gz"));
    EXPECT_EQ(file.suffix(), QStringLiteral("gz"));
    EXPECT_EQ(file.lastModified(), Time);
    EXPECT_EQ(file.lastModified().timeSpec(), Qt::UTC);
    EXPECT_GT(file.birthTime().toMSecsSinceEpoch(), begin) << "not the time of modification";
    EXPECT_EQ(file.birthTime().timeSpec(), Qt::UTC);
    EXPECT_EQ(file.permissions() & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
        QFile::ReadOwner | QFile::ExeOther);

    const FileInfo folder(m_folder.path() + QLatin1Char('/'));
    EXPECT_TRUE(folder.isDir());
    EXPECT_FALSE(folder.isFile());
    EXPECT_FALSE(folder.isHidden());
}

TEST_F(FileInfoTest, StaysAsItWasUntilRefreshed)
{
    const QString path = makeFile("file", "12345");
    FileInfo info{QFileInfo(path)};
    EXPECT_TRUE(info.isExist());
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_FALSE(info.isExist());
    EXPECT_FALSE(info.isReadable());
    EXPECT_TRUE(info.isFile());
    EXPECT_EQ(info.size(), 5);
    EXPECT_EQ(info.lastModified(), Time);

    const FileInfo before = info;
    info.refresh();
    expectNothing(info);
    EXPECT_EQ(info.absoluteFilePath(), path) << "the paths stay";
    EXPECT_EQ(info.filePath(), path);
    EXPECT_EQ(before.size(), 5);

    makeFile("file", "1234567");
    info.refresh();
    EXPECT_EQ(info.size(), 7);
    ASSERT_TRUE(QDir().mkpath(placeOf("folder")));
    info.refresh(placeOf("folder"));
    EXPECT_TRUE(info.isDir());
    EXPECT_EQ(info.absoluteFilePath(), placeOf("folder"));
}

TEST_F(FileInfoTest, NothingThere)
{
    FileInfo missing(placeOf("missing"));
    for (int i = 0; i < 2; ++i, missing.refresh()) {
        expectNothing(missing);
        EXPECT_TRUE(missing.absoluteFilePath().isEmpty());
        EXPECT_TRUE(missing.filePath().isEmpty());
        EXPECT_FALSE(missing.isExist());
    }
    expectNothing(FileInfo());
    expectNothing(FileInfo(QStringLiteral("/etc/passwd") + QChar(0) + QStringLiteral(".txt")));
}

TEST_F(FileInfoTest, Links)
{
    const QString target = makeFile("file", "12345");
    ASSERT_TRUE(QFile::link(target, placeOf("link")));
    const FileInfo link(placeOf("link"));
    EXPECT_TRUE(link.isSymLink());
    EXPECT_TRUE(link.isFile());
    EXPECT_EQ(link.size(), 5);
    EXPECT_EQ(link.absoluteFilePath(), placeOf("link"));

    ASSERT_TRUE(QFile::remove(target));
    const FileInfo dangling(placeOf("link"));
    EXPECT_EQ(dangling.absoluteFilePath(), placeOf("link"));
    EXPECT_TRUE(dangling.isSymLink());
    EXPECT_FALSE(dangling.isExist());
    EXPECT_FALSE(dangling.isFile());
}

TEST_F(FileInfoTest, RelativePath)
{
    makeFile("file", "12345");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_folder.path()));
    FileInfo info(QStringLiteral("file"));
    const QString expected = QFileInfo(QStringLiteral("file")).absoluteFilePath();
    EXPECT_EQ(info.absoluteFilePath(), expected);
    EXPECT_EQ(info.filePath(), expected) << "the constructors make it absolute";
    info.refresh(QStringLiteral("./file"));
    EXPECT_EQ(info.filePath(), QStringLiteral("./file"));
    EXPECT_TRUE(QDir::setCurrent(before));
}

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

/// What it says of itself but for paths, times and permissions.
std::string stateOf(const FileInfo& info)
{
    const std::pair<bool, const char*> properties[] = {{info.isFile(), "file"}, {info.isDir(), "folder"},
        {info.isSymLink(), "link"}, {info.isHidden(), "hidden"}, {info.isExist(), "there"},
        {info.isReadable(), "readable"}};
    std::string state;
    for (const auto& [is, name] : properties)
        state += is ? std::string(name) + ", " : "";
    return state + std::to_string(info.size());
}

void expectNothing(const FileInfo& info)
{
    EXPECT_EQ(stateOf(info), "0");
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
    EXPECT_EQ(stateOf(file), "file, hidden, there, readable, 5");
    EXPECT_EQ(file.absoluteFilePath(), path);
    EXPECT_EQ(file.filePath(), path);
    EXPECT_EQ(file.fileName(), QStringLiteral(".name.tar.gz"));
    EXPECT_EQ(file.suffix(), QStringLiteral("gz"));
    EXPECT_EQ(file.lastModified(), Time);
    EXPECT_EQ(file.lastModified().timeSpec(), Qt::UTC);
    EXPECT_GT(file.birthTime().toMSecsSinceEpoch(), begin) << "not the time of modification";
    EXPECT_EQ(file.birthTime().timeSpec(), Qt::UTC);
    EXPECT_EQ(file.permissions() & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
        QFile::ReadOwner | QFile::ExeOther);

    const FileInfo folder(m_folder.path() + QLatin1Char('/'));
    EXPECT_EQ(stateOf(folder), "folder, there, readable, " + std::to_string(QFileInfo(m_folder.path()).size()));
}

TEST_F(FileInfoTest, StaysAsItWasUntilRefreshed)
{
    const QString path = makeFile("file", "12345");
    FileInfo info{QFileInfo(path)};
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_EQ(stateOf(info), "file, 5") << "without what is asked anew";
    EXPECT_EQ(info.lastModified(), Time);

    const FileInfo before = info;
    info.refresh();
    expectNothing(info);
    EXPECT_EQ(info.absoluteFilePath(), path) << "the paths stay";
    EXPECT_EQ(info.filePath(), path);
    EXPECT_EQ(before.size(), 5);

    makeFile("file", "1234567");
    info.refresh();
    EXPECT_EQ(stateOf(info), "file, there, readable, 7");
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
    }
    expectNothing(FileInfo());
    expectNothing(FileInfo(QStringLiteral("/etc/passwd") + QChar(0) + QStringLiteral(".txt")));
}

TEST_F(FileInfoTest, Links)
{
    const QString target = makeFile("file", "12345");
    ASSERT_TRUE(QFile::link(target, placeOf("link")));
    EXPECT_EQ(stateOf(FileInfo(placeOf("link"))), "file, link, there, readable, 5");
    EXPECT_EQ(FileInfo(placeOf("link")).absoluteFilePath(), placeOf("link"));

    ASSERT_TRUE(QFile::remove(target));
    EXPECT_EQ(stateOf(FileInfo(placeOf("link"))), "link, 0");
    EXPECT_EQ(FileInfo(placeOf("link")).absoluteFilePath(), placeOf("link"));
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

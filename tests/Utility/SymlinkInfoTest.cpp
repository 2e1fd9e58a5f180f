#include <Orv/Utility/FileInfo.h>
#include <Orv/Utility/SymlinkInfo.h>

#include "Log/LoggedLines.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

using Orv::Core::FS::FileInfo;
using Orv::Utility::lastModified;
using Orv::Utility::SymlinkInfo;
using Orv::Utility::symlinkLastModified;

namespace {

constexpr qint64 FileTime = 1700000000; // seconds since 1970, as the others
constexpr qint64 LinkTime = 1600000000;

void setTime(const QString& path, time_t seconds)
{
    const timespec times[] = {{seconds, 900000000}, {seconds, 900000000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
}

/// A file, a link to it, a link to nothing, and nothing; names outside ASCII, since they reach the system encoded.
class SymlinkInfoTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFile(file).open(QIODevice::WriteOnly));
        ASSERT_TRUE(QFile::link(file, link));
        ASSERT_TRUE(QFile::link(missing, dangling));
        setTime(file, FileTime);
        setTime(link, LinkTime);
        setTime(dangling, LinkTime);
    }

    QTemporaryDir m_folder;
    const QString file = m_folder.filePath(QStringLiteral("größe"));
    const QString link = m_folder.filePath(QStringLiteral("링크"));
    const QString dangling = m_folder.filePath(QStringLiteral("dangling"));
    const QString missing = m_folder.filePath(QStringLiteral("missing"));
    const QString noEntry = QString::fromLocal8Bit(std::strerror(ENOENT));
    LoggedLines logged;
};

} // namespace

TEST_F(SymlinkInfoTest, OfTheLinkItself)
{
    EXPECT_EQ(SymlinkInfo(link).lastModified(), QDateTime::fromSecsSinceEpoch(LinkTime)) << "without the 0.9 s";
    EXPECT_EQ(SymlinkInfo(link).lastModified().timeSpec(), Qt::LocalTime);
    EXPECT_EQ(SymlinkInfo(dangling).lastModified(), QDateTime::fromSecsSinceEpoch(LinkTime));
    EXPECT_EQ(SymlinkInfo(file).lastModified(), QDateTime::fromSecsSinceEpoch(FileTime)) << "not checked to be a link";
    EXPECT_EQ(SymlinkInfo(QFileInfo(link)).lastModified(), QDateTime::fromSecsSinceEpoch(LinkTime));
    EXPECT_FALSE(SymlinkInfo(QFileInfo(file)).isValid());
    EXPECT_TRUE(SymlinkInfo(QFileInfo(file)).lastModified().isNull());
    EXPECT_EQ(logged.take(), QStringList());

    EXPECT_TRUE(SymlinkInfo(missing).isValid());
    EXPECT_TRUE(SymlinkInfo(missing).lastModified().isNull());
    EXPECT_EQ(logged.take(),
        QStringList(QStringLiteral("error: SymlinkInfo: on init file ;stat: %1 message: %2").arg(missing, noEntry)));
}

TEST_F(SymlinkInfoTest, Existence)
{
    EXPECT_TRUE(SymlinkInfo::exist(file));
    EXPECT_TRUE(SymlinkInfo::exist(link));
    EXPECT_EQ(logged.take(), QStringList());

    const QString statLine = QStringLiteral("info: SymlinkInfo: check file stat: %1 message: %2");
    const QString lstatLine = QStringLiteral("info: SymlinkInfo: check file lstat: %1 errno: %2");
    EXPECT_TRUE(SymlinkInfo::exist(dangling));
    EXPECT_EQ(logged.take(), QStringList(statLine.arg(dangling, noEntry)));
    EXPECT_FALSE(SymlinkInfo::exist(missing));
    EXPECT_EQ(logged.take(), QStringList({statLine.arg(missing, noEntry), lstatLine.arg(missing, noEntry)}));
    EXPECT_FALSE(SymlinkInfo::exist(file + QChar(0) + file)) << "not what stands before the zero";
    EXPECT_FALSE(SymlinkInfo::exist(QString()));
}

TEST_F(SymlinkInfoTest, ModificationTimes)
{
    const auto timeOf = [](const QString& path, bool noFollow) {
        return lastModified(FileInfo(path), noFollow).toSecsSinceEpoch();
    };
    EXPECT_EQ(timeOf(file, false), FileTime);
    EXPECT_EQ(timeOf(file, true), FileTime);
    EXPECT_EQ(timeOf(link, false), FileTime);
    EXPECT_EQ(timeOf(link, true), LinkTime);
    EXPECT_EQ(timeOf(dangling, true), LinkTime);
    EXPECT_EQ(symlinkLastModified(FileInfo(dangling)), QDateTime::fromSecsSinceEpoch(LinkTime));
    EXPECT_EQ(logged.take(), QStringList());

    EXPECT_TRUE(lastModified(FileInfo(dangling), false).isNull());
    const QStringList twoErrors = {QStringLiteral("error: on init file stat: %1").arg(dangling),
        QStringLiteral("error: Error message: %1").arg(noEntry)};
    EXPECT_EQ(logged.take(), twoErrors);
    EXPECT_TRUE(symlinkLastModified(FileInfo(file)).isNull());
    EXPECT_EQ(logged.take(), QStringList(QStringLiteral("error: file is not symlink, path: %1").arg(file)));
}

TEST_F(SymlinkInfoTest, SetsModificationAndAccessTime)
{
    const auto change = [](const QString& path, const QDateTime& time) {
        Orv::Utility::FileInfo::changeLastModefiedDate(path, time);
    };
    const auto timesOf = [](const QString& path) {
        struct stat status = {};
        EXPECT_EQ(::lstat(QFile::encodeName(path).constData(), &status), 0);
        return QPair<qint64, qint64>(status.st_atime, status.st_mtime);
    };
    const QDateTime noon(QDate(2024, 7, 1), QTime(12, 0, 0, 750));
    const qint64 seconds = noon.toMSecsSinceEpoch() / 1000;
    change(file, noon);
    EXPECT_EQ(timesOf(file), qMakePair(seconds, seconds));
    change(link, noon.addSecs(-60).toOffsetFromUtc(7200));
    EXPECT_EQ(timesOf(file), qMakePair(seconds - 60, seconds - 60)) << "through the link";
    EXPECT_EQ(timesOf(link).second, LinkTime);
    change(file + QChar(0) + link, noon);
    EXPECT_EQ(timesOf(file).second, seconds - 60);
    change(missing, noon);
    EXPECT_FALSE(QFile::exists(missing));
    EXPECT_EQ(logged.take(), QStringList());
}

#include <Orv/Utility/FileInfo.h>
#include <Orv/Utility/SymlinkInfo.h>

#include "DirectoryTest.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>

using Orv::Core::FS::FileInfo;
using Orv::Utility::lastModified;
using Orv::Utility::SymlinkInfo;
using Orv::Utility::symlinkLastModified;

namespace {

constexpr qint64 FileTime = 1700000000; // seconds since 1970
constexpr qint64 LinkTime = 1600000000;

void setTime(const QString& path, time_t seconds)
{
    const timespec times[] = {{seconds, 900000000}, {seconds, 900000000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
}

/// A file, a link to it, a dangling link, and a missing path. Some names are non-ASCII, to test their encoding.
class SymlinkInfoTest : public DirectoryTest {
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

    const QString file = pathOf(QStringLiteral("größe"));
    const QString link = pathOf(QStringLiteral("링크"));
    const QString dangling = pathOf(QStringLiteral("dangling"));
    const QString missing = pathOf(QStringLiteral("missing"));
    const QString noEntry = QString::fromLocal8Bit(std::strerror(ENOENT));
};

} // namespace

TEST_F(SymlinkInfoTest, LastModifiedOfTheLink)
{
    const auto timeOf = [](const auto& path) { return SymlinkInfo(path).lastModified().toMSecsSinceEpoch(); };
    EXPECT_EQ(timeOf(link), LinkTime * 1000) << "whole seconds";
    EXPECT_EQ(timeOf(dangling), LinkTime * 1000);
    EXPECT_EQ(timeOf(file), FileTime * 1000) << "does not check for a link";
    EXPECT_EQ(timeOf(QFileInfo(link)), LinkTime * 1000);
    EXPECT_EQ(SymlinkInfo(link).lastModified().timeSpec(), Qt::LocalTime);
    EXPECT_FALSE(SymlinkInfo(QFileInfo(file)).isValid());
    EXPECT_TRUE(SymlinkInfo(QFileInfo(file)).lastModified().isNull());
    setTime(link, -1);
    EXPECT_EQ(timeOf(link), Q_INT64_C(4294967295000)) << "seconds are unsigned";
    EXPECT_EQ(logged.take(), QStringList());

    EXPECT_TRUE(SymlinkInfo(missing).isValid());
    EXPECT_TRUE(SymlinkInfo(missing).lastModified().isNull());
    EXPECT_EQ(
        logged.take(), QStringList("error: SymlinkInfo: on init file ;stat: " + missing + " message: " + noEntry));
}

TEST_F(SymlinkInfoTest, Existence)
{
    EXPECT_TRUE(SymlinkInfo::exist(file));
    EXPECT_TRUE(SymlinkInfo::exist(link));
    EXPECT_EQ(logged.take(), QStringList());

    const QString line = "info: SymlinkInfo: check file %1: %2 %3: " + noEntry;
    EXPECT_TRUE(SymlinkInfo::exist(dangling));
    EXPECT_EQ(logged.take(), QStringList(line.arg("stat", dangling, "message")));
    EXPECT_FALSE(SymlinkInfo::exist(missing));
    EXPECT_EQ(logged.take(), QStringList({line.arg("stat", missing, "message"), line.arg("lstat", missing, "errno")}));
    EXPECT_FALSE(SymlinkInfo::exist(file + QChar(0) + file)) << "not the path before the NUL";
    EXPECT_FALSE(SymlinkInfo::exist(QString()));
}

TEST_F(SymlinkInfoTest, ModificationTimes)
{
    const std::tuple<QString, bool, qint64> rows[] = {{file, false, FileTime}, {file, true, FileTime},
        {link, false, FileTime}, {link, true, LinkTime}, {dangling, true, LinkTime}};
    for (const auto& [path, noFollow, seconds] : rows)
        EXPECT_EQ(lastModified(FileInfo(path), noFollow).toSecsSinceEpoch(), seconds) << qPrintable(path) << noFollow;
    EXPECT_EQ(symlinkLastModified(FileInfo(dangling)), QDateTime::fromSecsSinceEpoch(LinkTime));
    EXPECT_EQ(logged.take(), QStringList());

    EXPECT_TRUE(lastModified(FileInfo(dangling), false).isNull());
    EXPECT_EQ(
        logged.take(), QStringList({"error: on init file stat: " + dangling, "error: Error message: " + noEntry}));
    EXPECT_TRUE(symlinkLastModified(FileInfo(file)).isNull());
    EXPECT_EQ(logged.take(), QStringList("error: file is not symlink, path: " + file));
}

TEST_F(SymlinkInfoTest, SetsModificationAndAccessTime)
{
    const auto expectTimes = [this](const QString& changed, const QDateTime& time, qint64 expected) {
        Orv::Utility::FileInfo::changeLastModefiedDate(changed, time);
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(file), &status), 0);
        EXPECT_EQ(status.st_atime, expected);
        EXPECT_EQ(status.st_mtime, expected);
    };
    const QDateTime noon(QDate(2024, 7, 1), QTime(12, 0, 0, 750));
    const qint64 seconds = noon.toMSecsSinceEpoch() / 1000;
    expectTimes(file, noon, seconds);
    expectTimes(link, noon.addSecs(-60).toOffsetFromUtc(7200), seconds - 60); // through the link
    EXPECT_EQ(SymlinkInfo(link).lastModified().toSecsSinceEpoch(), LinkTime);
    expectTimes(file + QChar(0) + link, noon, seconds - 60);
    expectTimes(missing, noon, seconds - 60);
    EXPECT_FALSE(QFile::exists(missing));
    for (const QDateTime& beyond : {QDateTime(), noon.addYears(-100), noon.addYears(200)})
        expectTimes(file, beyond, std::numeric_limits<quint32>::max());
    EXPECT_EQ(logged.take(), QStringList());
}

TEST_F(SymlinkInfoTest, SetsOnlyTheModificationTime)
{
    using Times = Orv::Utility::FileInfo;
    const auto timeOf = [](const QString& path, bool follow) {
        struct stat status = {};
        (follow ? ::stat : ::lstat)(QFile::encodeName(path), &status);
        return QDateTime::fromSecsSinceEpoch(status.st_mtime, Qt::UTC);
    };
    for (const char* const text :
        {"1960-02-03T04:05:06.789Z", "2024-07-01T12:00:00.001Z", "2200-01-01T00:00:00.000Z"}) {
        const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
        EXPECT_TRUE(Times::setLastModified(link, time, true)) << text;
        EXPECT_EQ(QFileInfo(file).lastModified(), time) << text;
        EXPECT_EQ(timeOf(link, false).toSecsSinceEpoch(), LinkTime) << text;
        EXPECT_EQ(QFileInfo(file).lastRead().toMSecsSinceEpoch(), FileTime * 1000 + 900) << "unchanged, " << text;
        EXPECT_TRUE(Times::setLastModified(link, time, false)) << text;
        EXPECT_EQ(timeOf(link, false), time.addMSecs(-time.time().msec())) << text;
        setTime(link, LinkTime);
    }
    EXPECT_TRUE(Times::setLastModified(file, std::chrono::nanoseconds(-1), true));
    EXPECT_EQ(QFileInfo(file).lastModified().toMSecsSinceEpoch(), -1);
    for (const auto& [path, time, error] : {std::tuple(missing, QDateTime::currentDateTime(), ENOENT),
             {dangling, QDateTime::currentDateTime(), ENOENT}, {file, QDateTime(), EINVAL}}) {
        errno = 0;
        EXPECT_FALSE(Times::setLastModified(path, time, true)) << qPrintable(path);
        EXPECT_EQ(errno, error) << qPrintable(path);
    }
}

#include "Utility/FileTypeCheck_p.h"

#include "Log/LoggedLines.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTextCodec>

#include <gtest/gtest.h>

#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Orv::Utility;

namespace {

const QString Untouched = QStringLiteral("untouched");

class FileTypeCheckTest : public testing::Test {
protected:
    QByteArray placeOf(const char* name) const { return QFile::encodeName(m_folder.filePath(name)); }

    void expect(const char* name, FileTypeVerdict verdict, const QString& reason)
    {
        QString text = Untouched;
        EXPECT_EQ(validateFileType(m_folder.filePath(name), text), verdict) << name;
        EXPECT_EQ(text, reason) << name;
    }

    void expectType(const char* name, const char* type)
    {
        expect(name, NotForBackup,
            QStringLiteral("File is not intended for backup because it's a %1.").arg(QLatin1String(type)));
    }

    QTemporaryDir m_folder;
    LoggedLines logged;
};

} // namespace

TEST_F(FileTypeCheckTest, FilesFoldersLinks)
{
    ASSERT_TRUE(QFile(m_folder.filePath("file")).open(QIODevice::WriteOnly));
    ASSERT_EQ(::mkdir(placeOf("folder"), 0700), 0);
    ASSERT_EQ(::symlink("file", placeOf("link")), 0);
    for (const char* const name : {"file", "folder", "link"})
        expect(name, Suitable, Untouched);
    EXPECT_EQ(logged.take(), QStringList());

    const QString noEntry = QString::fromLocal8Bit(std::strerror(ENOENT));
    ASSERT_EQ(::symlink("nowhere", placeOf("dangling")), 0);
    for (const char* const name : {"dangling", "missing"}) {
        expect(name, StatFailed, noEntry);
        EXPECT_EQ(logged.take(),
            QStringList(
                QStringLiteral("error: on init file stat: %1 message: %2").arg(m_folder.filePath(name), noEntry)));
    }
    QString reason;
    EXPECT_EQ(validateFileType(m_folder.filePath("file") + QChar(0), reason), StatFailed);
}

TEST_F(FileTypeCheckTest, SocketsAndPipes)
{
    ASSERT_EQ(::mkfifo(placeOf("pipe"), 0600), 0);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray place = placeOf("socket");
    ASSERT_LT(size_t(place.size()), sizeof address.sun_path);
    std::strcpy(address.sun_path, place.constData());
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
    expectType("socket", "socket");
    expectType("pipe", "FIFO/pipe");
    ASSERT_EQ(::symlink("/dev/null", placeOf("device")), 0);
    expectType("device", "character device");
    EXPECT_EQ(logged.take(), QStringList());
}

TEST_F(FileTypeCheckTest, BlockDevice)
{
    if (::mknod(placeOf("device"), S_IFBLK | 0600, 0) != 0)
        GTEST_SKIP() << "only root can make a device, and not everywhere: " << std::strerror(errno);
    expectType("device", "block device");
}

TEST_F(FileTypeCheckTest, WhatNoFileHereIs)
{
    const QString path = QStringLiteral("/some where");
    QString reason = Untouched;
    EXPECT_EQ(fileTypeVerdict(0xE000, false, path, reason), NotForBackup);
    EXPECT_EQ(reason, QStringLiteral("file is unknown type"));
    EXPECT_EQ(fileTypeVerdict(S_IFLNK | 0777, false, path, reason = Untouched), Suitable);
    EXPECT_EQ(reason, Untouched);
    EXPECT_EQ(logged.take(), QStringList());
    for (const mode_t type : {S_IFREG, S_IFIFO}) {
        EXPECT_EQ(fileTypeVerdict(type, true, path, reason = Untouched), Dataless);
        EXPECT_EQ(reason, QStringLiteral("File is is data less"));
        EXPECT_EQ(logged.take(), QStringList(QStringLiteral("warning: File: /some where is data less")));
    }
}

TEST_F(FileTypeCheckTest, NamesAreEncodedForTheLocale)
{
    const QString path = m_folder.filePath(QStringLiteral("größe"));
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    QTextCodec* const before = QTextCodec::codecForLocale();
    QString reason;
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const int found = validateFileType(path, reason);
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const int notFound = validateFileType(path, reason);
    QTextCodec::setCodecForLocale(before);
    EXPECT_EQ(found, Suitable);
    EXPECT_EQ(notFound, StatFailed);
}

TEST(CustomSystemAndHiddenCheck, ExactlyTheTwoFolders)
{
    const std::pair<const char*, bool> rows[] = {{"/Library", true}, {"/System", true}, {"/system", false},
        {"/System/", false}, {"/Library/Fonts", false}, {"/", false}, {"", false}};
    for (const auto& [path, is] : rows)
        EXPECT_EQ(CustomSystemAndHiddenCheck(QLatin1String(path)).is(), is) << path;
}

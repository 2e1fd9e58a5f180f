#include "Utility/FileTypeCheck_p.h"

#include "DirectoryTest.h"

#include <cstring>

using namespace Orv::Utility;

namespace {

const QString Untouched = QStringLiteral("untouched");

class FileTypeCheckTest : public DirectoryTest {
protected:
    void expect(const QString& name, FileTypeVerdict verdict, const QString& reason) const
    {
        QString text = Untouched;
        EXPECT_EQ(validateFileType(pathOf(name), text), verdict) << qPrintable(name);
        EXPECT_EQ(text, reason) << qPrintable(name);
    }
};

} // namespace

TEST_F(FileTypeCheckTest, Files)
{
    const QString noEntry = QString::fromLocal8Bit(std::strerror(ENOENT));
    ASSERT_TRUE(QFile(pathOf("file")).open(QIODevice::WriteOnly));
    for (const auto& [target, link] : {std::pair("file", "link"), {"/dev/null", "device"}, {"nowhere", "dangling"}})
        ASSERT_TRUE(QFile::link(target, pathOf(link)));
    for (const char* const name : {"file", "", "link"})
        expect(name, Suitable, Untouched);
    expect("device", NotForBackup, "File is not intended for backup because it's a character device.");
    EXPECT_EQ(logged.take(), QStringList());
    for (const char* const name : {"dangling", "missing"}) {
        expect(name, StatFailed, noEntry);
        EXPECT_EQ(
            logged.take(), QStringList(QString("error: on init file stat: %1 message: %2").arg(pathOf(name), noEntry)));
    }
    expect(QStringLiteral("file") + QChar(0), StatFailed, noEntry);
}

TEST_F(FileTypeCheckTest, Types)
{
    const QString notIntended = QStringLiteral("File is not intended for backup because it's a ");
    const std::pair<mode_t, QString> rows[] = {{S_IFREG, Untouched}, {S_IFDIR, Untouched}, {S_IFLNK, Untouched},
        {S_IFSOCK, notIntended + "socket."}, {S_IFIFO, notIntended + "FIFO/pipe."},
        {S_IFBLK, notIntended + "block device."}, {S_IFCHR, notIntended + "character device."},
        {0xE000, "file is unknown type"}};
    for (const auto& [type, expected] : rows) {
        QString reason = Untouched;
        EXPECT_EQ(fileTypeVerdict(type | 0777, false, "/some where", reason),
            expected == Untouched ? Suitable : NotForBackup);
        EXPECT_EQ(reason, expected);
        EXPECT_EQ(logged.take(), QStringList());
        EXPECT_EQ(fileTypeVerdict(type, true, "/some where", reason), Dataless);
        EXPECT_EQ(reason, "File is is data less");
        EXPECT_EQ(logged.take(), QStringList("warning: File: /some where is data less"));
    }
}

TEST(CustomSystemAndHiddenCheck, ExactMatch)
{
    const std::pair<const char*, bool> rows[] = {{"/Library", true}, {"/System", true}, {"/system", false},
        {"/System/", false}, {"/Library/Fonts", false}, {"/", false}, {"", false}};
    for (const auto& [path, is] : rows)
        EXPECT_EQ(CustomSystemAndHiddenCheck(path).is(), is) << path;
}

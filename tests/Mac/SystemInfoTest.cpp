#include "Mac/SystemInfo_p.h"

#include <Orv/Mac/SystemInfo.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

using Orv::Utility::readMacOsVersion;
using Orv::Utility::SystemInfo;

namespace {

QByteArray list(const QByteArray& version)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
           "\t<key>ProductName</key>\n\t<string>macOS</string>\n"
           "\t<key>ProductVersion</key>\n\t<string>" +
        version + "</string>\n\t<key>iOSSupportVersion</key>\n\t<string>17.2</string>\n</dict>\n</plist>\n";
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (content.isNull())
        return;
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

} // namespace

TEST(SystemInfo, VersionLists)
{
    struct Row {
        const char* name;
        QByteArray list; // null: there is none
        QByteArray hiddenList;
        const char* version;
    };
    const Row rows[] = {
        {"the first list is enough", list("12.6.1"), list("13.4"), "12.6.1"},
        {"10.16 is not the truth", list("10.16"), list("13.4"), "13.4"},
        {"nor is 10.16 with a patch level", list("10.16.3"), list("13.4"), "13.4"},
        {"10.16 without the other list", list("10.16"), {}, "10.16"},
        {"10.16 twice", list("10.16"), list("10.16.1"), "10.16.1"},
        {"10.16 and a list without a version", list("10.16"), list("x.3.4"), "0.3.4"},
        {"10.16 and an empty list", list("10.16"), "", "10.16"},
        {"10.15 is a version", list("10.15.7"), list("13.4"), "10.15.7"},
        {"11.16 too", list("11.16"), list("13.4"), "11.16"},
        {"the hidden list alone", {}, list("14.2.1"), "14.2.1"},
        {"an empty list", "", list("14.2.1"), "14.2.1"},
        {"no lists", {}, {}, "0.0"},
        {"no patch level", list("11.0.0"), {}, "11.0"},
        {"four numbers", list("1.2.3.4"), {}, "1.2.3"},
        {"a second that is no number", list("13.x"), {}, "13.0"},
        {"a third beyond 65535", list("13.1.65536"), {}, "13.1"},
        {"a first that is no number", list("x.3.4"), list("14.2.1"), "14.2.1"},
        {"an empty value", list(""), {}, "0.0"},
        {"any letter case", "<KEY>productversion</KEY><STRING>14.2</STRING>", {}, "14.2"},
        {"no end", "<key>ProductVersion</key><string>14.2", {}, "14.2"},
        {"no key: the first string", "<plist version=\"1.0\"><string>14.2</string>", {}, "14.2"},
        {"no key: found from the 14th byte on", "<string>9.1</string><string>14.2</string>", {}, "14.2"},
        {"no marker: from the 8th byte on",
            "1234567"
            "14.2.1",
            {}, "14.2.1"},
        {"up to the first zero byte", list("14.2").insert(20, '\0'), list("13.4"), "13.4"},
    };
    for (const Row& row : rows) {
        const QTemporaryDir folder;
        write(folder.filePath(QStringLiteral("SystemVersion.plist")), row.list);
        write(folder.filePath(QStringLiteral(".SystemVersionPlatform.plist")), row.hiddenList);
        EXPECT_EQ(readMacOsVersion(folder.path() + QLatin1Char('/')).toString().toStdString(), row.version) << row.name;
    }
}

TEST(SystemInfo, RunningSystem)
{
    const QString version = readMacOsVersion(QStringLiteral("/System/Library/CoreServices/")).toString();
    EXPECT_EQ(SystemInfo::productVersion(), version);
    EXPECT_EQ(SystemInfo::prettyProductName(), QLatin1String("macOS ") + version);
}

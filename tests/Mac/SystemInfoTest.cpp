#include "Files.h"
#include "KnownAnswers.h"
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

/// Of a system with these lists; null: there is none.
std::string versionOf(const QByteArray& list, const QByteArray& hiddenList)
{
    const QTemporaryDir folder;
    if (!list.isNull())
        writeFile(folder.filePath(QStringLiteral("SystemVersion.plist")), list);
    if (!hiddenList.isNull())
        writeFile(folder.filePath(QStringLiteral(".SystemVersionPlatform.plist")), hiddenList);
    return readMacOsVersion(folder.path() + QLatin1Char('/')).toString().toStdString();
}

} // namespace

TEST(SystemInfo, VersionLists)
{
    const auto listOf = [](const QByteArray& version) { return version == "none" ? QByteArray() : list(version); };
    for (const KnownAnswer& row : tableOfAnswers("systemversions.txt"))
        EXPECT_EQ(versionOf(listOf(row["list"]), listOf(row["hidden list"])), row["version"].toStdString())
            << row["case"].constData();
}

TEST(SystemInfo, OtherContents)
{
    const std::pair<const char*, const char*> rows[] = {
        {"", "0.0"}, {"<KEY>productversion</KEY><STRING>14.2</STRING>", "14.2"}, // any letter case
        {"<key>ProductVersion</key><string>14.2", "14.2"},                       // no end
        {"<plist version=\"1.0\"><string>14.2</string>", "14.2"},                // no key: the first string
        {"<string>9.1</string><string>14.2</string>", "14.2"},                   // found from the 14th byte on
        {"123456714.2.1", "14.2.1"},                                             // no marker: from the 8th byte on
    };
    for (const auto& [content, version] : rows)
        EXPECT_EQ(versionOf(content, {}), version) << content;
    EXPECT_EQ(versionOf("", list("14.2.1")), "14.2.1") << "an empty list";
    EXPECT_EQ(versionOf(list("10.16"), ""), "10.16");
    EXPECT_EQ(versionOf(list("14.2").insert(20, '\0'), list("13.4")), "13.4") << "up to the first zero byte";
}

TEST(SystemInfo, RunningSystem)
{
    const QString version = readMacOsVersion(QStringLiteral("/System/Library/CoreServices/")).toString();
    EXPECT_EQ(SystemInfo::productVersion(), version);
    EXPECT_EQ(SystemInfo::prettyProductName(), QLatin1String("macOS ") + version);
}

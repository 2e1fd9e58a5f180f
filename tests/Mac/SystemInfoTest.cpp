#include "DirectoryTest.h"
#include "KnownAnswers.h"
#include "Mac/SystemInfo_p.h"

#include <Orv/Mac/SystemInfo.h>

using Orv::Utility::macOsVersion;
using Orv::Utility::SystemInfo;

namespace {

/// A version list of the system. After "raw:", the content itself, percent-encoded.
QByteArray listOf(const QByteArray& version)
{
    if (version.startsWith("raw:"))
        return QByteArray::fromPercentEncoding(version.mid(4));
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
           "\t<key>ProductName</key>\n\t<string>macOS</string>\n"
           "\t<key>ProductVersion</key>\n\t<string>" +
        version + "</string>\n\t<key>iOSSupportVersion</key>\n\t<string>17.2</string>\n</dict>\n</plist>\n";
}

} // namespace

using SystemInfoTest = DirectoryTest;

TEST_F(SystemInfoTest, VersionLists)
{
    for (const KnownAnswer& row : tableOfAnswers("systemversions.txt")) {
        for (const auto& [column, name] :
            {std::pair("list", "SystemVersion.plist"), {"hidden list", ".SystemVersionPlatform.plist"}}) {
            QFile::remove(pathOf(name));
            if (row[column] != "none")
                writeFile(pathOf(name), listOf(row[column]));
        }
        EXPECT_EQ(macOsVersion(m_directory.path() + '/'), row["version"]) << row["row"].constData();
    }
}

TEST_F(SystemInfoTest, RunningSystem)
{
    const QString version = macOsVersion("/System/Library/CoreServices/");
    EXPECT_EQ(SystemInfo::productVersion(), version);
    EXPECT_EQ(SystemInfo::prettyProductName(), QLatin1String("macOS ") + version);
}

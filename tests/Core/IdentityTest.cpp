#include <Orv/Core/Compression.h>
#include <Orv/Core/Platform.h>
#include <Orv/Core/Version.h>

#include "KnownAnswers.h"

using Orv::Core::Compression;
using Orv::Core::Platform;
using Orv::Core::Version;

TEST(Version, StringAndNullNumber)
{
    EXPECT_EQ(Version::string(), "DOV_BUILD_VERSION=4.3.0.54");
    EXPECT_TRUE(Version::number().isNull());
    EXPECT_EQ(&Version::number(), &Version::number());
}

TEST(PlatformAndCompression, Names)
{
    EXPECT_EQ(Platform::current(), 2);
    for (const KnownAnswer& row : tableOfAnswers("names.txt")) {
        SCOPED_TRACE(row["row"].constData());
        const int number = row["number"].toInt();
        const QString name = row["name"];
        const bool isPlatform = row["type"] == "platform";
        if (row["way"] == "from")
            EXPECT_EQ(isPlatform ? int(Platform::fromString(name)) : Compression::fromAlgorithmString(name), number);
        else if (isPlatform)
            EXPECT_EQ(Platform::toString(static_cast<Platform::Type>(number)), name);
        else
            EXPECT_EQ(Compression::toAlgorithmString(static_cast<Compression::Algorithm>(number)), name);
    }
}

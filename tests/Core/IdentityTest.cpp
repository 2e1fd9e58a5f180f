#include <Orv/Core/Compression.h>
#include <Orv/Core/Platform.h>
#include <Orv/Core/Version.h>

#include <gtest/gtest.h>

using Orv::Core::Compression;
using Orv::Core::Platform;
using Orv::Core::Version;

TEST(Version, TextIsWholeAndNumberIsNull)
{
    EXPECT_EQ(Version::string(), QStringLiteral("DOV_BUILD_VERSION=4.3.0.54"));
    EXPECT_TRUE(Version::number().isNull());
    EXPECT_EQ(&Version::number(), &Version::number());
}

TEST(Platform, Names)
{
    EXPECT_EQ(Platform::current(), 2);
    const std::pair<int, const char*> names[] = {
        {0, "Windows"}, {1, "linux"}, {2, "macOS"}, {3, "Windows"}, {4, "Windows"}, {-1, "Windows"}};
    for (const auto& [type, name] : names)
        EXPECT_EQ(Platform::toString(static_cast<Platform::Type>(type)), QString(name)) << type;

    const std::pair<const char*, int> types[] = {
        {"windows", 0}, {"LINUX", 1}, {"MACOS", 2}, {"macOS", 2}, {"", 3}, {"mac", 3}, {" macOS", 3}, {"Unknown", 3}};
    for (const auto& [name, type] : types)
        EXPECT_EQ(Platform::fromString(name), type) << name;
}

TEST(Compression, Names)
{
    const std::pair<int, const char*> names[] = {
        {0, "Unknown"}, {1, "GZip"}, {2, "Deflate"}, {3, "LZ4"}, {4, "LZ4High"}, {5, "Unknown"}, {-1, "Unknown"}};
    for (const auto& [algorithm, name] : names)
        EXPECT_EQ(Compression::toAlgorithmString(static_cast<Compression::Algorithm>(algorithm)), QString(name));

    const std::pair<const char*, int> algorithms[] = {{"gzip", 1}, {"DEFLATE", 2}, {"lz4", 3}, {"lz4high", 4},
        {" LZ4", 0}, {"LZ4 ", 0}, {"", 0}, {"Unknown", 0}, {"LZ4Hi", 0}, {"zip", 0}};
    for (const auto& [name, algorithm] : algorithms)
        EXPECT_EQ(Compression::fromAlgorithmString(name), algorithm) << name;
}

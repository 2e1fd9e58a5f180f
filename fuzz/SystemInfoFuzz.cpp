#include "Fuzz.h"

#include "Mac/SystemInfo_p.h"

#include <QRegularExpression>

using Orv::Utility::MacOsVersion;

namespace {

bool isSame(const MacOsVersion& one, const MacOsVersion& other)
{
    return one.major == other.major && one.minor == other.minor && one.patch == other.patch;
}

/// The numbers of the parts that are some.
MacOsVersion plainVersion(const QString& text)
{
    MacOsVersion version;
    version.major = text.section('.', 0, 0).toUShort();
    version.minor = text.section('.', 1, 1).toUShort();
    version.patch = text.section('.', 2, 2).toUShort();
    return version;
}

void checkAnyText(const QString& text)
{
    static const QRegularExpression value(QStringLiteral("ProductVersion.*?<string>(.*?)</string>"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    MacOsVersion version;
    require(parse(text, version) == (version.major != 0), "a version that counts has a major number");
    const QRegularExpressionMatch match = value.match(text);
    require(!match.hasMatch() || isSame(version, plainVersion(match.captured(1))), "it is the value behind the key");
    for (const unsigned short number : {version.major, version.minor, version.patch})
        require(number == 0 || text.contains(QString::number(number)), "the numbers are in the text");

    MacOsVersion again;
    require(again.fromString(version.toString()) == (version.major != 0) && isSame(again, version),
        "the version comes back from its own text");
}

/// A list as the system writes it.
void checkList(const QString& value)
{
    if (value.contains(QLatin1String("</string>"), Qt::CaseInsensitive))
        return;
    MacOsVersion version;
    parse(QStringLiteral("<dict>\n\t<key>ProductName</key>\n\t<string>macOS</string>\n"
                         "\t<key>ProductVersion</key>\n\t<string>%1</string>\n"
                         "\t<key>iOSSupportVersion</key>\n\t<string>17.2</string>\n</dict>\n")
              .arg(value),
        version);
    require(isSame(version, plainVersion(value)), "the version is that of the list");
}

} // namespace

/// Versions come out of a list as they are in it, and out of any text nothing that is not in it.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    checkAnyText(text);
    checkList(text);
    return 0;
}

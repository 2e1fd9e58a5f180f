#include <Orv/Mac/SystemInfo.h>

#include "Mac/SystemInfo_p.h"

#include <QFile>
#include <QStringList>

#include <algorithm>
#include <array>

namespace Orv::Utility {

namespace {

/// A version of three numbers. Missing or invalid numbers are 0.
struct MacOsVersion {
    unsigned short major = 0;
    unsigned short minor = 0;
    unsigned short patch = 0;

    /// Parses a dotted string; ignores parts after the third. Returns false if the major version is 0.
    bool fromString(const QString& text)
    {
        std::array<unsigned short, 3> numbers{};
        const QStringList parts = text.split(QLatin1Char('.'));
        std::transform(parts.begin(), parts.begin() + std::min<qsizetype>(parts.size(), 3), numbers.begin(),
            [](const QString& part) { return part.toUShort(); });
        major = numbers[0];
        minor = numbers[1];
        patch = numbers[2];
        return major != 0;
    }

    QString toString() const
    {
        const QString text = QStringLiteral("%1.%2").arg(major).arg(minor);
        return patch == 0 ? text : text + QLatin1Char('.') + QString::number(patch);
    }

    /// The version that newer systems report to programs built for 10.15 or older.
    bool is1016() const { return major == 10 && minor == 16; }
};

/// Finds the product version in a property list: the first string element after the key. A missing marker is no error;
/// its index of -1 feeds the next search, as other programs do it.
bool parseProductVersion(const QString& plist, MacOsVersion& version)
{
    const QLatin1String key("ProductVersion");
    const QLatin1String begin("<string>");
    const QLatin1String end("</string>");
    if (plist.isEmpty())
        return false;
    const int keyAt = plist.indexOf(key, 0, Qt::CaseInsensitive);
    const int valueAt = plist.indexOf(begin, keyAt + key.size(), Qt::CaseInsensitive) + begin.size();
    const int endAt = plist.indexOf(end, valueAt, Qt::CaseInsensitive);
    return version.fromString(plist.mid(valueAt, endAt - valueAt));
}

} // namespace

QString macOsVersion(const QString& directory)
{
    MacOsVersion version;
    for (const char* name : {"SystemVersion.plist", ".SystemVersionPlatform.plist"}) {
        QFile list(directory + QLatin1String(name));
        // constData(), to stop at the first NUL with any Qt version; given a QByteArray, only Qt 5 does.
        if (list.open(QIODevice::ReadOnly) &&
            parseProductVersion(QString::fromUtf8(list.readAll().constData()), version) && !version.is1016())
            break;
    }
    return version.toString();
}

QString SystemInfo::productVersion()
{
    return macOsVersion(QStringLiteral("/System/Library/CoreServices/"));
}

QString SystemInfo::prettyProductName()
{
    return QStringLiteral("macOS %1").arg(productVersion());
}

} // namespace Orv::Utility

// The checks of a backup: can the file be backed up, what are its properties, has it changed since?
#include <Orv/Core/FS/FileInfo.h>
#include <Orv/Utility/DateTimeCompare.h>
#include <Orv/Utility/FileTypeCheck.h>

#include <QTemporaryDir>

using Orv::Core::FS::FileInfo;
using Orv::Utility::DateTimeCompare;

// Compares whole seconds, because the other side may not store more.
static bool hasChanged(const FileInfo& before, const FileInfo& now)
{
    const DateTimeCompare times(DateTimeCompare::Seconds);
    return before.size() != now.size() || times.notEqual(before.lastModified(), now.lastModified());
}

static void append(const QString& path, const char* text)
{
    QFile file(path);
    if (file.open(QIODevice::Append))
        file.write(text);
}

int main()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("document.txt");
    append(path, "some text");

    QString reason;
    const bool isSuitable = Orv::Utility::validateFileType(path, reason) == Orv::Utility::Suitable;
    const bool isDeviceRefused = Orv::Utility::validateFileType("/dev/null", reason) == Orv::Utility::NotForBackup;

    const FileInfo before(path);
    append(path, " and more");
    const FileInfo now(path);
    // A snapshot does not change, except for queries of the current state such as isExist().
    const bool isSnapshot = before.isFile() && before.size() == 9 && before.suffix() == "txt" && before.isExist();

    const bool isGood = isSuitable && isDeviceRefused && !reason.isEmpty() && isSnapshot &&
        !hasChanged(before, before) && hasChanged(before, now);
    return isGood ? 0 : 1;
}

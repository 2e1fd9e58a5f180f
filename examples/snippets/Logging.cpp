// Configures the log of the process and writes to it.
#include <Orv/Log/LogManager.h>
#include <Orv/Log/OrvDebug.h>

#include <QFile>
#include <QTemporaryDir>

int main()
{
    const QTemporaryDir directory;

    Orv::LogManager& log = Orv::LogManager::instance();
    log.setLogPath(directory.path());
    log.setAppPrefix("example"); // the file name is log_example.log
    log.setOutToFile(true);
    log.setLogLevel(Orv::LogManager::InfoHigh);
    log.init();

    Orv::OrvDebug("Engine").info() << "started with" << 3 << "tasks";
    Orv::OrvDebug("Engine").debug() << "not written at this level";
    qWarning("Qt's own messages are logged too");

    // 2026-01-31 23:59:59,123456 [INFO]: [ Engine ] [ 1 ] started with 3 tasks
    // 2026-01-31 23:59:59,123610 [WARNING]: Qt's own messages are logged too
    QFile file(directory.filePath("log_example.log"));
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    const QList<QByteArray> lines = file.readAll().split('\n');
    const bool isGood = lines.size() == 3 && lines[0].endsWith("[INFO]: [ Engine ] [ 1 ] started with 3 tasks") &&
        lines[1].endsWith("[WARNING]: Qt's own messages are logged too") && lines[2].isEmpty();
    return isGood ? 0 : 1;
}

#include <Orv/Log/LogRollout.h>

#include <QDateTime>
#include <QFile>

void logsRollout(const char* fileName, std::size_t size)
{
    Q_UNUSED(size)
    const QString name(fileName);
    QString newName = name;
    newName.chop(4);
    newName += QLatin1Char('_') + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmss")) +
        QLatin1String(".log");
    QFile::rename(name, newName);
}

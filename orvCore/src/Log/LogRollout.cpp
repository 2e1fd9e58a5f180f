#include <Orv/Log/LogRollout.h>

#include "Log/LogRollout_p.h"

#include <QDateTime>

QString rotatedName(const QString& fileName)
{
    QString name = fileName;
    name.chop(4);
    return name + QLatin1Char('_') + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmss")) +
        QLatin1String(".log");
}

void logsRollout(const char* fileName, std::size_t size)
{
    Q_UNUSED(size)
    renameUnlessTaken(fileName, rotatedName(QString(fileName)).toUtf8());
}

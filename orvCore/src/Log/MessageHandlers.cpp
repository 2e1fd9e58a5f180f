#include <Orv/Log/MessageHandlers.h>

#include "Log/LogBackend_p.h"

#include <Orv/Log/LogManager.h>

#include <cstdlib>
#include <initializer_list>
#include <optional>

namespace {

std::optional<el::Level> levelOf(QtMsgType type, const QString& message)
{
    switch (type) {
    case QtDebugMsg:
        return el::Level::Debug;
    case QtInfoMsg:
        return el::Level::Info;
    case QtWarningMsg:
        if (message.startsWith(QLatin1String("libpng")))
            return std::nullopt;
        return el::Level::Warning;
    case QtCriticalMsg:
        return el::Level::Error;
    case QtFatalMsg:
        return el::Level::Fatal;
    }
    return std::nullopt;
}

/// Qt's own handler, for what comes when the back end has gone.
void passToQt(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    qInstallMessageHandler(nullptr);
    qt_message_output(type, context, message);
}

void writeTo(std::initializer_list<const char*> loggers, QtMsgType type, const QMessageLogContext& context,
    const QString& message)
{
    const std::optional<el::Level> level = levelOf(type, message);
    if (!level)
        return;
    const std::string text = logFormat(type, context, message).toStdString();
    const Orv::LogBackend::Lock lock;
    if (!Orv::LogBackend::isAlive()) {
        passToQt(type, context, message);
        return;
    }
    // One entry a logger: addressed to both at once, a fatal entry would end the process before the second logger, and
    // a disabled first logger would leave the second one without the text.
    for (const char* logger : loggers)
        Orv::LogBackend::write(*level, logger, text);
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace

void messageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    writeTo({Orv::LogBackend::DefaultLogger}, type, context, message);
}

void messageHandlerShadow(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    writeTo({Orv::LogBackend::DefaultLogger, Orv::LogBackend::ShadowLogger}, type, context, message);
}

QString logFormat(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    Q_UNUSED(type)
    if (!Orv::LogManager::instance().isVerbose())
        return message;
    return QStringLiteral("%1\n\tFunction: %2\n\tCategory: %3\n\tLine: %4")
        .arg(message)
        .arg(QString(context.function))
        .arg(QString(context.category))
        .arg(context.line);
}

#include <Orv/Log/MessageHandlers.h>

#include "Log/LogBackend_p.h"
#include "Log/LogLock_p.h"

#include <Orv/Log/LogManager.h>

#include <cstdlib>
#include <initializer_list>
#include <new>
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

void writeTo(std::initializer_list<Orv::LogBackend::Log> logs, QtMsgType type, const QMessageLogContext& context,
    const QString& message)
{
    const std::optional<el::Level> level = levelOf(type, message);
    if (!level)
        return;
    try {
        const std::string text = logFormat(type, context, message).toStdString();
        const LogLock lock;
        for (const Orv::LogBackend::Log log : logs)
            Orv::LogBackend::write(log, *level, text);
    } catch (const std::bad_alloc&) {
        // Drops the entry.
    }
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace

void messageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    writeTo({Orv::LogBackend::DefaultLog}, type, context, message);
}

void messageHandlerShadow(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    writeTo({Orv::LogBackend::DefaultLog, Orv::LogBackend::ShadowLog}, type, context, message);
}

QString logFormat(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    Q_UNUSED(type)
    if (!Orv::LogManager::instance().isVerbose())
        return message;
    // One call, so that a "%1" in the message or in a name is not replaced.
    return QStringLiteral("%1\n\tFunction: %2\n\tCategory: %3\n\tLine: %4")
        .arg(message, QString(context.function), QString(context.category), QString::number(context.line));
}

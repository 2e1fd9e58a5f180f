#include <Orv/Log/LogManager.h>

#include "Log/CrashHandler_p.h"
#include "Log/LogBackend_p.h"
#include "Log/LogFile_p.h"
#include "Log/LogLock_p.h"

#include <Orv/Log/MessageHandlers.h>

#include <QLoggingCategory>

#include <memory>

namespace Orv {

namespace {

constexpr char LineFormat[] = "%datetime [%level]: %msg";
constexpr char SubsecondDigits[] = "6";
constexpr std::size_t MaxFileSize = 2097152; // bytes

const char* text(bool value)
{
    return value ? "true" : "false";
}

el::Configurations configurations(bool isEnabled)
{
    using Key = el::ConfigurationType;
    el::Configurations configurations;
    configurations.setToDefault();
    configurations.setGlobally(Key::SubsecondPrecision, SubsecondDigits);
    configurations.setGlobally(Key::Enabled, text(isEnabled));
    configurations.setGlobally(Key::Format, LineFormat);
    return configurations;
}

} // namespace

LogManager::LogManager() : m_appPrefix(QStringLiteral("DOV_LOG"))
{
}

LogManager& LogManager::instance()
{
    // Never destroyed: messages may be logged during static destruction.
    static LogManager& manager = *new LogManager;
    return manager;
}

void LogManager::setAppPrefix(const QString& prefix)
{
    m_appPrefix = prefix;
}

void LogManager::setOutToFile(bool enable)
{
    m_outToFile = enable;
}

void LogManager::setOutToStream(bool enable)
{
    m_outToStream = enable;
}

void LogManager::setVerbose(bool enable)
{
    m_verbose = enable;
}

void LogManager::setRawOutput(bool enable)
{
    m_rawOutput = enable;
}

void LogManager::setCrashHandler(bool enable)
{
    m_crashHandler = enable;
}

void LogManager::setDebug(bool enable)
{
    m_debug = enable;
}

void LogManager::setLogPath(const QString& path)
{
    m_logPath = path;
}

void LogManager::setLogLevel(LogLevel level)
{
    m_logEnabled = level != Disabled;
    m_debug = level == Debug;
    if (level != Disabled)
        m_highInfo = level == InfoHigh || level == Debug;
}

void LogManager::setEnableShadow(bool enable)
{
    m_enableShadow = enable;
}

void LogManager::setShadowFilePath(const QString& path)
{
    m_shadowFilePath = path;
}

bool LogManager::init()
{
    if (m_isInit)
        return true;

    applyFilterRules();
    const LogLock lock;
    configureDefaultLogger();
    if (m_rawOutput)
        LogBackend::setRawOutput();
    if (m_crashHandler)
        installCrashHandler();
    const bool hasShadow = m_enableShadow && !m_shadowFilePath.isEmpty();
    if (hasShadow)
        configureShadowLogger();
    else
        LogBackend::closeFile(LogBackend::ShadowLog);
    qInstallMessageHandler(hasShadow ? messageHandlerShadow : messageHandler);
    m_isInit = true;
    return m_isInit;
}

bool LogManager::reconfigure()
{
    m_isInit = false;
    return init();
}

void LogManager::applyFilterRules() const
{
    QLoggingCategory::setFilterRules(QStringLiteral("d.orv.log.debug=%1\n1.orv.log.info=%2")
                                         .arg(QLatin1String(text(m_debug)), QLatin1String(text(m_highInfo))));
}

void LogManager::configureDefaultLogger() const
{
    std::unique_ptr<LogFile> file;
    if (m_outToFile) {
        const QString path = m_logPath + QStringLiteral("/log_") + m_appPrefix + QStringLiteral(".log");
        file = std::make_unique<LogFile>(path.toStdString(), MaxFileSize);
    }
    LogBackend::configure(LogBackend::DefaultLog, configurations(m_logEnabled), std::move(file), m_outToStream);
}

void LogManager::configureShadowLogger() const
{
    LogBackend::configure(LogBackend::ShadowLog, configurations(true),
        std::make_unique<LogFile>(m_shadowFilePath.toStdString(), 0), false);
}

} // namespace Orv

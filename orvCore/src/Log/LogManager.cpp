#include <Orv/Log/LogManager.h>

#include "Log/LogBackend_p.h"
#include "Log/LogHandler.h"

#include <Orv/Log/CrashHandler.h>
#include <Orv/Log/LogRollout.h>
#include <Orv/Log/MessageHandlers.h>

#include <QLoggingCategory>

#include <string>

namespace Orv {

namespace {

constexpr char LineFormat[] = "%datetime [%level]: %msg";
constexpr char SubsecondDigits[] = "6";
constexpr std::size_t MaxFileSize = 2097152; // bytes

const char* text(bool value)
{
    return value ? "true" : "false";
}

} // namespace

LogManager::LogManager() : m_appPrefix(QStringLiteral("DOV_LOG"))
{
}

LogManager& LogManager::instance()
{
    // Never destroyed, so that messages which come late in the process's exit are still formatted.
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
        m_highInfoFlag = level == InfoHigh || level == Debug ? '1' : '0';
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
    const LogBackend::Lock lock;
    configureDefaultLogger();
    el::Helpers::installPreRollOutCallback(logsRollout);
    if (m_rawOutput)
        el::Helpers::installLogDispatchCallback<LogHandler>("RawLogHandler");
    if (m_crashHandler)
        el::Helpers::setCrashHandler(crashHandler);
    if (m_enableShadow && !m_shadowFilePath.isEmpty()) {
        configureShadowLogger();
        qInstallMessageHandler(messageHandlerShadow);
    } else {
        qInstallMessageHandler(messageHandler);
    }
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
    QLoggingCategory::setFilterRules(
        QStringLiteral("d.orv.log.debug=%1\n1.orv.log.info=%2")
            .arg(QLatin1String(text(m_debug)), QLatin1String(text(m_highInfoFlag == '1'))));
}

void LogManager::configureDefaultLogger() const
{
    using Key = el::ConfigurationType;
    el::Configurations configurations;
    configurations.setToDefault();
    // Whatever file it is given, the back end makes it, even if it is not to write to it.
    if (m_outToFile) {
        const std::string fileName = QStringLiteral("%1/log_%2.log").arg(m_logPath).arg(m_appPrefix).toStdString();
        LogBackend::prepareFile(fileName, MaxFileSize);
        configurations.setGlobally(Key::Filename, fileName);
    }
    configurations.setGlobally(Key::PerformanceTracking, text(true));
    configurations.setGlobally(Key::MaxLogFileSize, std::to_string(MaxFileSize));
    configurations.setGlobally(Key::SubsecondPrecision, SubsecondDigits);
    configurations.setGlobally(Key::ToFile, text(m_outToFile));
    configurations.setGlobally(Key::ToStandardOutput, text(m_outToStream));
    configurations.setGlobally(Key::Enabled, text(m_logEnabled));
    configurations.setGlobally(Key::Format, LineFormat);
    configurations.setGlobally(Key::LogFlushThreshold, LogBackend::NeverByItself);
    el::Loggers::setDefaultConfigurations(configurations, true);
    el::Loggers::addFlag(el::LoggingFlag::ColoredTerminalOutput);
    el::Loggers::addFlag(el::LoggingFlag::StrictLogFileSizeCheck);
}

void LogManager::configureShadowLogger() const
{
    using Key = el::ConfigurationType;
    el::Loggers::addFlag(el::LoggingFlag::MultiLoggerSupport);
    el::Logger* logger = el::Loggers::getLogger(LogBackend::ShadowLogger, true);
    el::Configurations* configurations = logger->configurations();
    LogBackend::prepareFile(m_shadowFilePath.toStdString(), 0);
    configurations->setGlobally(Key::Filename, m_shadowFilePath.toStdString());
    configurations->setGlobally(Key::MaxLogFileSize, "0");
    configurations->setGlobally(Key::SubsecondPrecision, SubsecondDigits);
    configurations->setGlobally(Key::ToFile, text(true));
    configurations->setGlobally(Key::ToStandardOutput, text(false));
    configurations->setGlobally(Key::Enabled, text(true));
    configurations->setGlobally(Key::Format, LineFormat);
    configurations->setGlobally(Key::LogFlushThreshold, LogBackend::NeverByItself);
    logger->reconfigure();
}

} // namespace Orv

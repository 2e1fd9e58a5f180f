#include "Log/LogBackend_p.h"

#include <atomic>

INITIALIZE_EASYLOGGINGPP

namespace Orv::LogBackend {

namespace {

std::atomic<bool> alive{false};

/// Constructed after the back end's storage, in this file, and so destroyed before it.
struct Lifetime {
    Lifetime() { alive = true; }
    ~Lifetime() { alive = false; }
};
const Lifetime lifetime;

/// Whether the logger is meant to write to a file.
bool wantsFile(el::Logger& logger)
{
    const auto* toFile = logger.configurations()->get(el::Level::Global, el::ConfigurationType::ToFile);
    return toFile && toFile->value() == "true";
}

void reopen(el::base::type::fstream_t& stream, const std::string& fileName)
{
    stream.close();
    stream.clear();
    stream.open(fileName, std::ios::out | std::ios::app | std::ios::ate);
}

/// The back end gives up for good on a file that it could not open. Tries again, so that the log goes on when the cause
/// is gone.
void ensureFile(el::Logger& logger, el::Level level)
{
    const auto& stream = logger.typedConfigurations()->fileStream(level);
    const std::string& fileName = logger.typedConfigurations()->filename(level);
    if (stream && !stream->is_open()) {
        reopen(*stream, fileName);
    } else if (!stream && wantsFile(logger)) {
        ELPP->registeredLoggers()->logStreamsReference()->erase(fileName);
        logger.reconfigure();
    }
}

/// Left to itself, the back end takes a failed stream for an endless file, rolls it over and truncates it; hence
/// `NeverByItself`. What the failed stream still holds is dropped: it is the entry that found no room.
void flush(el::Logger& logger, el::Level level)
{
    const auto& stream = logger.typedConfigurations()->fileStream(level);
    if (!stream || !stream->is_open())
        return;
    stream->flush();
    if (stream->fail())
        reopen(*stream, logger.typedConfigurations()->filename(level));
    else
        el::Helpers::validateFileRolling(&logger, level);
}

} // namespace

bool isAlive()
{
    return alive;
}

void write(el::Level level, const char* loggerId, const std::string& text)
{
    el::Logger* logger = el::Loggers::getLogger(loggerId, false);
    if (!logger)
        return;
    if (level == el::Level::Fatal)
        el::Loggers::addFlag(el::LoggingFlag::DisableApplicationAbortOnFatalLog);
    const el::base::threading::ScopedLock lock(logger->lock());
    if (!logger->enabled(level))
        return;
    ensureFile(*logger, level);
    el::base::Writer(level, "orvCore", 0, "").construct(logger) << text;
    flush(*logger, level);
}

} // namespace Orv::LogBackend

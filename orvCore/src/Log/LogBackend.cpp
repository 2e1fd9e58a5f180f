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

/// What the back end left undone when a file could not be opened or written: the stream stays failed, or missing, for
/// good. Give it another chance.
void repairStream(el::Logger& logger, el::Level level)
{
    el::base::type::fstream_t* stream = logger.typedConfigurations()->fileStream(level);
    if (stream && stream->is_open() && stream->fail())
        stream->clear();
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
    {
        const el::base::threading::ScopedLock lock(logger->lock());
        repairStream(*logger, level);
    }
    el::base::Writer(level, "orvCore", 0, "", el::base::DispatchAction::NormalLog).construct(1, loggerId) << text;
}

} // namespace Orv::LogBackend

#include "Log/LogBackend_p.h"

#include <Orv/Log/LogRollout.h>

#include <QFileInfo>

INITIALIZE_EASYLOGGINGPP

namespace Orv::LogBackend {

namespace {

bool alive = false; // under the lock

/// Constructed after the back end's storage, in this file, and so destroyed before it.
struct Lifetime {
    Lifetime() { alive = true; }
    ~Lifetime()
    {
        const Lock lock;
        alive = false;
    }
};
const Lifetime lifetime;

using Stream = el::base::type::fstream_t;

constexpr std::size_t LongestHead = 64; // bytes: date, time and level of an entry

/// How many bytes fit into the ordinary log for certain: to ask for its size after each entry would cost a tenth of the
/// time that an entry takes. (The back end asks before each one; this is for the entry that fills it.)
std::size_t certainRoom = 0;

void reopen(Stream& stream, el::Logger& logger, el::Level level)
{
    certainRoom = 0;
    const std::string& fileName = logger.typedConfigurations()->filename(level);
    el::base::utils::File::createPath(el::base::utils::File::extractPathFromFilename(fileName));
    stream.close();
    stream.clear();
    stream.open(fileName, std::ios::out | std::ios::app | std::ios::ate);
}

/// The open stream of the logger's file. The back end gives up for good on a file that it could not open: this tries
/// again, so that the log goes on when the cause is gone.
Stream* openStream(el::Logger& logger, el::Level level)
{
    Stream* stream = logger.typedConfigurations()->fileStream(level);
    if (!stream && logger.enabled(level)) {
        prepareFile(logger.typedConfigurations()->filename(level), logger.typedConfigurations()->maxLogFileSize(level));
        logger.reconfigure();
        stream = logger.typedConfigurations()->fileStream(level);
    }
    if (stream && !stream->is_open())
        reopen(*stream, logger, level);
    return stream && stream->is_open() ? stream : nullptr;
}

void rollOverIfFull(Stream& stream, el::Logger& logger, el::Level level, std::size_t entrySize)
{
    const std::size_t maxSize = logger.typedConfigurations()->maxLogFileSize(level);
    if (maxSize == 0)
        return;
    if (entrySize < certainRoom) {
        certainRoom -= entrySize;
        return;
    }
    el::Helpers::validateFileRolling(&logger, level);
    const std::size_t size = el::base::utils::File::getSizeOfFile(&stream);
    certainRoom = size < maxSize ? maxSize - size : 0;
}

/// Left to itself, the back end takes a failed stream for an endless file, rolls it over and truncates it; hence
/// `NeverByItself`. What the failed stream still holds is dropped: it is the entry that found no room.
void flush(Stream& stream, el::Logger& logger, el::Level level, std::size_t entrySize)
{
    stream.flush();
    if (stream.fail())
        reopen(stream, logger, level);
    else
        rollOverIfFull(stream, logger, level, entrySize);
}

std::recursive_mutex& mutex()
{
    // Never destroyed, so that threads which are left when the process exits find it.
    static std::recursive_mutex& mutex = *new std::recursive_mutex;
    return mutex;
}

} // namespace

Lock::Lock() : m_lock(mutex())
{
}

bool isAlive()
{
    return alive;
}

void prepareFile(const std::string& fileName, std::size_t maxSize)
{
    certainRoom = 0;
    ELPP->registeredLoggers()->logStreamsReference()->erase(fileName);
    const QFileInfo file(QString::fromStdString(fileName));
    if (maxSize > 0 && file.isFile() && static_cast<std::size_t>(file.size()) >= maxSize)
        logsRollout(fileName.c_str(), maxSize);
}

void write(el::Level level, const char* loggerId, const std::string& text)
{
    el::Logger* logger = el::Loggers::getLogger(loggerId, false);
    if (!logger)
        return;
    if (level == el::Level::Fatal)
        el::Loggers::addFlag(el::LoggingFlag::DisableApplicationAbortOnFatalLog);
    Stream* stream = openStream(*logger, level);
    el::base::Writer(level, "orvCore", 0, "").construct(logger) << text;
    if (stream)
        flush(*stream, *logger, level, LongestHead + text.size());
}

} // namespace Orv::LogBackend

#include "Log/LogBackend_p.h"

#include "Log/LogFile_p.h"
#include "Log/LogHandler_p.h"
#include "Log/SignalText_p.h"

#include <atomic>
#include <iostream>

#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

INITIALIZE_NULL_EASYLOGGINGPP

namespace Orv::LogBackend {

namespace {

struct Target {
    const char* loggerId;
    el::Logger* logger;
    LogFile* file; // owned
    bool isEnabled;
    bool toStandardOutput;
    bool isColoured;
};

// No constructor or destructor: used by signal handlers and by messages during static destruction.
Target targets[] = {{el::base::consts::kDefaultLoggerId, nullptr, nullptr, true, true, false},
    {"shadow", nullptr, nullptr, true, false, false}};
bool hasRawOutput = false;

/// The back end's last step: writes a formatted entry to the file and to standard output.
class Dispatcher : public el::LogDispatchCallback {
protected:
    void handle(const el::LogDispatchData* data) override
    {
        const el::LogMessage* message = data->logMessage();
        const Target& target = targets[message->logger() == targets[ShadowLog].logger ? ShadowLog : DefaultLog];
        el::LogBuilder* builder = message->logger()->logBuilder();
        std::string line = builder->build(message, true);
        if (target.file)
            target.file->append(line);
        if (!target.toStandardOutput)
            return;
        if (target.isColoured)
            builder->convertToColoredOutput(&line, message->level());
        writeToStandardOutput(line);
    }
};

/// Creates the back end. It is never destroyed, because messages may be logged during static destruction.
void createBackEnd()
{
    using namespace el;
    static const auto& storage =
        *new base::type::StoragePointer(new base::Storage(LogBuilderPtr(new base::DefaultLogBuilder)));
    Helpers::setStorage(storage);
    Helpers::uninstallLogDispatchCallback<base::DefaultLogDispatchCallback>("DefaultLogDispatchCallback");
    Helpers::installLogDispatchCallback<Dispatcher>("Dispatcher");
}

el::Logger& loggerOf(Log log)
{
    static const bool created = (createBackEnd(), true);
    static_cast<void>(created);
    if (!targets[log].logger)
        targets[log].logger = el::Loggers::getLogger(targets[log].loggerId);
    return *targets[log].logger;
}

/// Replaces the content of the logger's stream when inserted into it. Inserting the string itself would stop at a NUL
/// character, and would do nothing after an earlier insertion failed for lack of memory.
struct Content {
    const std::string& text;
};

std::ostream& operator<<(std::ostream& stream, const Content& content)
{
    stream.clear();
    static_cast<el::base::type::stringstream_t&>(stream).str(content.text);
    return stream;
}

// localtime() is not async-signal-safe, so ordinary entries update the UTC offset, once per quarter of an hour.
std::atomic<std::time_t> offsetFromUtc{0}; // seconds
std::time_t nextQuarter = 0;

void updateOffsetFromUtc()
{
    constexpr std::time_t Quarter = 15 * 60;
    const std::time_t now = std::time(nullptr);
    if (now < nextQuarter && now >= nextQuarter - Quarter)
        return;
    nextQuarter = now - now % Quarter + Quarter;
    struct tm local { };
    ::localtime_r(&now, &local);
    offsetFromUtc = local.tm_gmtoff;
}

/// Adds the time in the format of the back end's "%datetime". The date algorithm is civil_from_days of H. Hinnant,
/// "chrono-Compatible Low-Level Date Algorithms", for dates from 1970 on.
void addTime(SignalText& text)
{
    struct timeval time { };
    ::gettimeofday(&time, nullptr);
    const auto seconds = static_cast<std::uint64_t>(time.tv_sec + offsetFromUtc);
    const std::uint64_t days = seconds / 86400 + 719468;
    const std::uint64_t era = days / 146097;
    const std::uint64_t dayOfEra = days % 146097;
    const std::uint64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::uint64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::uint64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const std::uint64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    text.add(yearOfEra + era * 400 + (month <= 2 ? 1 : 0), 10, 4).add("-").add(month, 10, 2).add("-");
    text.add(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1, 10, 2).add(" ");
    text.add(seconds / 3600 % 24, 10, 2).add(":").add(seconds / 60 % 60, 10, 2).add(":").add(seconds % 60, 10, 2);
    text.add(",").add(static_cast<std::uint64_t>(time.tv_usec), 10, 6);
}

/// Gives up after a timeout if standard output is a full pipe that nobody reads: signal handlers must not block.
void writeToStandardOutputWithoutWaiting(std::string_view text)
{
    constexpr std::size_t Chunk = 512; // PIPE_BUF is at least this: a writable pipe accepts it
    constexpr int Timeout = 200;       // milliseconds
    struct pollfd output {
        STDOUT_FILENO, POLLOUT, 0
    };
    while (!text.empty() && ::poll(&output, 1, Timeout) == 1 && (output.revents & POLLOUT)) {
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size() < Chunk ? text.size() : Chunk);
        if (written <= 0)
            return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace

void configure(Log log, const el::Configurations& configurations, std::unique_ptr<LogFile> file, bool toStandardOutput)
{
    loggerOf(log).configure(configurations);
    Target& target = targets[log];
    const std::unique_ptr<LogFile> previous(target.file);
    target.file = file.release();
    target.isEnabled = target.logger->enabled(el::Level::Error);
    target.toStandardOutput = toStandardOutput;
    target.isColoured = toStandardOutput && ::isatty(STDOUT_FILENO);
    updateOffsetFromUtc();
}

void closeFile(Log log)
{
    delete targets[log].file;
    targets[log].file = nullptr;
}

void setRawOutput()
{
    hasRawOutput = true;
    el::Helpers::installLogDispatchCallback<LogHandler>("RawLogHandler");
}

void write(Log log, el::Level level, const std::string& text) noexcept
{
    try {
        el::Logger& logger = loggerOf(log);
        if (!logger.enabled(level))
            return;
        updateOffsetFromUtc();
        el::base::MessageBuilder builder;
        builder.initialize(&logger);
        builder << Content{text};
        el::LogMessage message(level, "", 0, "", 0, &logger);
        // el::base::Writer would leave the logger locked after an exception.
        el::base::LogDispatcher(true, &message, el::base::DispatchAction::NormalLog).dispatch();
    } catch (...) {
        // Drops the entry, most likely for lack of memory.
    }
}

void writeFromSignal(std::initializer_list<Log> logs, std::string_view level, std::string_view text)
{
    static SignalText entry;
    entry.clear();
    addTime(entry);
    entry.add(" [").add(level).add("]: ").add(text).add("\n");
    for (const Log log : logs) {
        if (targets[log].file && targets[log].isEnabled)
            targets[log].file->appendOnly(entry.text());
    }
    for (const Log log : logs) {
        if (targets[log].toStandardOutput && targets[log].isEnabled)
            writeToStandardOutputWithoutWaiting(entry.text());
    }
    if (hasRawOutput && targets[DefaultLog].isEnabled) {
        entry.clear();
        writeToStandardOutputWithoutWaiting(entry.add(text).add("\n").text());
    }
}

void writeToStandardOutput(std::string_view text)
{
    try {
        std::cout.clear(); // the cause of an earlier failure may be gone
        std::cout << text << std::flush;
    } catch (...) {
        // The program may have enabled exceptions of std::cout.
    }
}

} // namespace Orv::LogBackend

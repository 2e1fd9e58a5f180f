#include "Bench.h"

#include <Orv/Log/LogManager.h>
#include <Orv/Log/OrvDebug.h>

#include <QTemporaryDir>

#include <cstdio>
#include <easylogging++.h>
#ifdef ORV_BENCH_SPDLOG
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#endif

INITIALIZE_EASYLOGGINGPP

namespace {

constexpr char Text[] = "a line of an ordinary length";
constexpr char WholeText[] = "[ Engine ] [ 1 ] a line of an ordinary length";
constexpr char Format[] = "%datetime [%level]: %msg";

const QTemporaryDir& logDirectory()
{
    static const QTemporaryDir directory;
    return directory;
}

void setUpLibrary()
{
    static const bool once = [] {
        Orv::LogManager& manager = Orv::LogManager::instance();
        manager.setLogPath(logDirectory().path());
        manager.setOutToFile(true);
        manager.setLogLevel(Orv::LogManager::Info);
        manager.init();
        return true;
    }();
    benchmark::DoNotOptimize(once);
}

void setUpBackEnd()
{
    static const bool once = [] {
        using Key = el::ConfigurationType;
        el::Configurations configurations;
        configurations.setToDefault();
        const std::string fileName = logDirectory().filePath(QStringLiteral("bare.log")).toStdString();
        configurations.set(el::Level::Global, Key::Filename, fileName); // setGlobally() leaves out this level
        configurations.setGlobally(Key::Filename, fileName);
        configurations.setGlobally(Key::ToFile, "true");
        configurations.setGlobally(Key::ToStandardOutput, "false");
        configurations.setGlobally(Key::SubsecondPrecision, "6");
        configurations.setGlobally(Key::MaxLogFileSize, "2097152");
        configurations.setGlobally(Key::Format, Format);
        el::Loggers::setDefaultConfigurations(configurations, true);
        // Rotation, as in the library
        el::Loggers::addFlag(el::LoggingFlag::StrictLogFileSizeCheck);
        el::Helpers::installPreRollOutCallback(
            [](const char* name, std::size_t) { std::rename(name, (std::string(name) + ".old").c_str()); });
        return true;
    }();
    benchmark::DoNotOptimize(once);
}

void runOn(benchmark::State& state)
{
    setUpLibrary();
    const Orv::OrvDebug log("Engine");
    for (auto _ : state)
        log.info() << Text;
    state.SetItemsProcessed(state.iterations());
}

void runOff(benchmark::State& state)
{
    setUpLibrary();
    const Orv::OrvDebug log("Engine");
    for (auto _ : state)
        log.debug() << Text;
    state.SetItemsProcessed(state.iterations());
}

/// The cost of Qt's stream alone, for a disabled category.
void runQtOff(benchmark::State& state)
{
    setUpLibrary();
    for (auto _ : state)
        QMessageLogger(nullptr, 0, nullptr).debug(orvLogDebug()) << Text;
    state.SetItemsProcessed(state.iterations());
}

void runBackEnd(benchmark::State& state)
{
    setUpBackEnd();
    for (auto _ : state)
        LOG(INFO) << WholeText;
    state.SetItemsProcessed(state.iterations());
}

#ifdef ORV_BENCH_SPDLOG
void runSpdlog(benchmark::State& state)
{
    static const auto logger = [] {
        auto peer =
            spdlog::basic_logger_mt("peer", logDirectory().filePath(QStringLiteral("spdlog.log")).toStdString());
        peer->set_pattern("%Y-%m-%d %H:%M:%S,%f [%l]: %v");
        peer->flush_on(spdlog::level::info);
        return peer;
    }();
    for (auto _ : state)
        logger->info(WholeText);
    state.SetItemsProcessed(state.iterations());
}
#endif

} // namespace

void addLoggingRows()
{
    addRow("a log line", "orvCore", runOn);
    addRow("a log line", "easylogging++", runBackEnd);
#ifdef ORV_BENCH_SPDLOG
    addRow("a log line", "spdlog, flushed", runSpdlog);
#endif
    addRow("a disabled log line", "orvCore", runOff);
    addRow("a disabled log line", "QMessageLogger", runQtOff);
    addRow("a log line, one thread", "orvCore", runOn)->UseRealTime();
    addRow("a log line, four threads", "orvCore", runOn)->UseRealTime()->Threads(4);
}

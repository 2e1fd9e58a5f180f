#include "Bench.h"

#include <Orv/Log/LogManager.h>
#include <Orv/Log/OrvDebug.h>

#include <QTemporaryDir>

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

const QTemporaryDir& folder()
{
    static const QTemporaryDir folder;
    return folder;
}

/// Set up once: the file is never full, so that no roll-over falls into one row and not into another.
void setUpLibrary()
{
    static const bool once = [] {
        Orv::LogManager& manager = Orv::LogManager::instance();
        manager.setLogPath(folder().path());
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
        configurations.setGlobally(Key::Filename, folder().filePath(QStringLiteral("bare.log")).toStdString());
        configurations.setGlobally(Key::ToFile, "true");
        configurations.setGlobally(Key::ToStandardOutput, "false");
        configurations.setGlobally(Key::SubsecondPrecision, "6");
        configurations.setGlobally(Key::Format, Format);
        el::Loggers::setDefaultConfigurations(configurations, true);
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
        auto made = spdlog::basic_logger_mt("peer", folder().filePath(QStringLiteral("spdlog.log")).toStdString());
        made->set_pattern("%Y-%m-%d %H:%M:%S,%f [%l]: %v");
        made->flush_on(spdlog::level::info);
        return made;
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
    addRow("a log line that is switched off", "orvCore", runOff);
    benchmark::RegisterBenchmark("a log line, four threads/orvCore", runOn)->UseRealTime()->Threads(4);
}

#include <Orv/Log/CrashHandler.h>

#include "Log/LogBackend_p.h"

#include <QCoreApplication>

#include <csignal>

namespace {

constexpr char Picture[] = "\n                   _..\n"
                           "  /}_{\\           /.-'\n"
                           " ( a a )-.___...-'/\n"
                           " ==._.==         ;\n"
                           "      \\ i _..._ /,\n"
                           "      {_;/   {_// \n";
static_assert(sizeof(Picture) - 1 == 124, "the picture is known by its letters");

void interrupt(int signal)
{
    static bool interrupted = false;
    if (!interrupted) {
        interrupted = true;
        Orv::LogBackend::write(el::Level::Info, Orv::LogBackend::DefaultLogger,
            "Quit the application (user request signal):" + std::to_string(signal));
        QCoreApplication::quit();
    } else {
        Orv::LogBackend::write(el::Level::Info, Orv::LogBackend::DefaultLogger, "Application terminated...");
        QCoreApplication::exit(-1);
    }
}

} // namespace

void crashHandler(int signal)
{
    const Orv::LogBackend::Lock lock;
    if (!Orv::LogBackend::isAlive()) {
        // Late in the process's exit there is no log any more: the signal does what it does without us.
        std::signal(signal, SIG_DFL);
        std::raise(signal);
        return;
    }
    if (signal == SIGINT) {
        interrupt(signal);
        return;
    }
    Orv::LogBackend::write(el::Level::Error, Orv::LogBackend::DefaultLogger,
        std::string(Picture) +
            "The app has been shut down unexpectedly, please contact Support. Signal:" + std::to_string(signal));
    // The reason is a fatal entry: it must not end the process before it has reached the file.
    el::Loggers::addFlag(el::LoggingFlag::DisableApplicationAbortOnFatalLog);
    el::Helpers::logCrashReason(signal, true, el::Level::Fatal, Orv::LogBackend::DefaultLogger);
    el::Loggers::flushAll();
    el::Helpers::crashAbort(signal, "", 0);
}

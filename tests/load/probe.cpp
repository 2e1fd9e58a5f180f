/// usage: loadProbe MODULE        loads the library and checks that this alone changes nothing
///        loadProbe MODULE log    logs through it, unloads it, and logs once more when its objects have gone
///        loadProbe MODULE log interrupt    the same, and interrupts itself then

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <vector>

#include <dlfcn.h>

namespace {

/// Constructed before the library's objects, and so destroyed after them.
struct LateLogger {
    bool armed = false;
    bool interrupts = false;
    ~LateLogger()
    {
        if (armed)
            qWarning("after everything");
        if (interrupts)
            std::raise(SIGINT);
    }
};
LateLogger lateLogger;

std::vector<void (*)(int)> signalHandlers()
{
    std::vector<void (*)(int)> handlers;
    for (const int signal : {SIGABRT, SIGBUS, SIGFPE, SIGHUP, SIGILL, SIGINT, SIGPIPE, SIGSEGV, SIGTERM}) {
        struct sigaction action { };
        ::sigaction(signal, nullptr, &action);
        handlers.push_back(action.sa_handler);
    }
    return handlers;
}

int failed(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    return 1;
}

int logThrough(void* module, const QString& folder)
{
    const auto setUpLog = reinterpret_cast<void (*)(const char*)>(::dlsym(module, "setUpLog"));
    setUpLog(QFile::encodeName(folder).constData());
    ::dlclose(module);
    qWarning("still logged");
    QFile log(folder + QStringLiteral("/log_DOV_LOG.log"));
    if (!log.open(QIODevice::ReadOnly) || !log.readAll().endsWith("[WARNING]: still logged\n"))
        return failed("nothing is logged after the module was closed");
    lateLogger.armed = true;
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    const QTemporaryDir folder;
    QDir::setCurrent(folder.path());
    const auto signalsBefore = signalHandlers();
    const QtMessageHandler messagesBefore = qInstallMessageHandler(nullptr);

    void* module = ::dlopen(argv[1], RTLD_NOW);
    if (!module)
        return failed(::dlerror());
    if (signalHandlers() != signalsBefore)
        return failed("loading installs a signal handler");
    if (qInstallMessageHandler(nullptr) != messagesBefore)
        return failed("loading installs a message handler");
    if (!QDir(folder.path()).isEmpty())
        return failed("loading creates a file");
    lateLogger.interrupts = argc > 3;
    return argc > 2 ? logThrough(module, folder.path()) : 0;
}

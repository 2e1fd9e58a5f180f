/// usage: loadProbe MODULE        loads the library and checks that this alone changes nothing
///        loadProbe MODULE log    logs through it, unloads it, logs once more when its objects have gone, and prints
///        that

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Constructed before the library's objects, and so destroyed after them.
struct LateLogger {
    const QTemporaryDir folder;
    bool armed = false;
    ~LateLogger()
    {
        if (!armed)
            return;
        qWarning("after everything");
        std::raise(SIGINT);
        QFile log(folder.filePath(QStringLiteral("log_DOV_LOG.log")));
        log.open(QIODevice::ReadOnly);
        std::fputs(log.readAll().constData(), stderr);
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

/// One that is opened takes the lowest free number, which then is that of standard output.
bool opensADescriptor()
{
    return ::fcntl(STDOUT_FILENO, F_GETFD) >= 0;
}

int failed(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    return 1;
}

} // namespace

int main(int argc, char* argv[])
{
    QDir::setCurrent(lateLogger.folder.path());
    ::close(STDOUT_FILENO);
    const auto signalsBefore = signalHandlers();
    const QtMessageHandler messagesBefore = qInstallMessageHandler(nullptr);

    void* module = ::dlopen(argv[1], RTLD_NOW);
    if (!module)
        return failed(::dlerror());
    if (opensADescriptor())
        return failed("loading opens a descriptor");
    if (signalHandlers() != signalsBefore)
        return failed("loading installs a signal handler");
    if (qInstallMessageHandler(nullptr) != messagesBefore)
        return failed("loading installs a message handler");
    if (!QDir(lateLogger.folder.path()).isEmpty())
        return failed("loading creates a file");
    if (argc == 2)
        return 0;

    const auto setUpLog = reinterpret_cast<void (*)(const char*)>(::dlsym(module, "setUpLog"));
    setUpLog(QFile::encodeName(lateLogger.folder.path()).constData());
    if (opensADescriptor())
        return failed("the log takes the place of standard output");
    ::dlclose(module);
    qWarning("still logged");
    lateLogger.armed = true;
    return 0;
}

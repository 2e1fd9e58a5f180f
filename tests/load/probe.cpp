/// usage: loadProbe MODULE        loads the library and checks that loading has no side effects
///        loadProbe MODULE log    logs through it, unloads it, logs again during static destruction, and prints the log

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

/// Constructed before the library's objects, so destroyed after them.
struct LateLogger {
    const QTemporaryDir directory;
    bool armed = false;
    ~LateLogger()
    {
        if (!armed)
            return;
        qWarning("after everything");
        std::raise(SIGINT);
        QFile log(directory.filePath(QStringLiteral("log_DOV_LOG.log")));
        log.open(QIODevice::ReadOnly);
        std::fputs(log.readAll().constData(), stderr);
    }
};
LateLogger lateLogger;

/// Whether a descriptor was opened: it would get the number of standard output, which is closed.
bool hasStandardOutput()
{
    return ::fcntl(STDOUT_FILENO, F_GETFD) >= 0;
}

/// The state that loading could change: signal and message handlers, descriptors, files.
std::vector<std::uintptr_t> state()
{
    std::vector<std::uintptr_t> values;
    for (const int signal : {SIGABRT, SIGBUS, SIGFPE, SIGHUP, SIGILL, SIGINT, SIGPIPE, SIGSEGV, SIGTERM}) {
        struct sigaction action { };
        ::sigaction(signal, nullptr, &action);
        values.push_back(reinterpret_cast<std::uintptr_t>(action.sa_handler));
    }
    values.push_back(reinterpret_cast<std::uintptr_t>(qInstallMessageHandler(nullptr)));
    values.push_back(hasStandardOutput());
    values.push_back(std::uintptr_t(QDir(lateLogger.directory.path()).count()));
    return values;
}

} // namespace

int main(int argc, char* argv[])
{
    QDir::setCurrent(lateLogger.directory.path());
    ::close(STDOUT_FILENO);
    const auto before = state();
    void* module = ::dlopen(argv[1], RTLD_NOW);
    if (!module || state() != before) {
        std::fprintf(stderr, "%s\n", module ? "loading has side effects" : ::dlerror());
        return 1;
    }
    if (argc == 2)
        return 0;
    const auto setUpLog = reinterpret_cast<void (*)(const char*)>(::dlsym(module, "setUpLog"));
    setUpLog(QFile::encodeName(lateLogger.directory.path()).constData());
    if (hasStandardOutput())
        std::fputs("the log takes the place of standard output\n", stderr);
    ::dlclose(module);
    qWarning("still logged");
    lateLogger.armed = true;
    return 0;
}

#include <Orv/Log/CrashHandler.h>

#include "Log/CrashHandler_p.h"
#include "Log/LogBackend_p.h"
#include "Log/LogLock_p.h"
#include "Log/SignalText_p.h"

#include <QCoreApplication>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <dlfcn.h>
#include <execinfo.h>
#include <signal.h>
#include <unistd.h>

// This code runs in signal handlers: the crash may have happened inside malloc() or inside the log.

namespace {

using namespace Orv::LogBackend;

constexpr char Picture[] = "\n                   _..\n"
                           "  /}_{\\           /.-'\n"
                           " ( a a )-.___...-'/\n"
                           " ==._.==         ;\n"
                           "      \\ i _..._ /,\n"
                           "      {_;/   {_// \n";
static_assert(sizeof(Picture) - 1 == 124, "other programs match the picture");

constexpr std::array Signals{SIGFPE, SIGILL, SIGSEGV, SIGINT};
constexpr unsigned TimeForTheReport = 4; // seconds

void addReason(SignalText& text, int signal)
{
    for (const auto& known : el::base::consts::kCrashSignals) {
        if (known.numb == signal) {
            text.add("[").add(known.name).add("] signal\n    ");
            text.add(known.brief).add("\n    ").add(known.detail);
            return;
        }
    }
    text.add("unknown signal [").add(static_cast<unsigned>(signal)).add("]");
}

/// Adds the stack frames: exported functions by their mangled names, others by file and offset.
void addFrames(SignalText& text)
{
    std::array<void*, 64> frames;
    const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
    for (int i = 0; i < count; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(frames[static_cast<std::size_t>(i)]);
        text.add("\n    [").add(static_cast<unsigned>(i)).add("] ");
        Dl_info info{};
        if (::dladdr(frames[static_cast<std::size_t>(i)], &info) != 0) {
            const void* start = info.dli_sname ? info.dli_saddr : info.dli_fbase;
            text.add(info.dli_fname).add("(").add(info.dli_sname ? info.dli_sname : "").add("+0x");
            text.add(address - reinterpret_cast<std::uintptr_t>(start), 16).add(") ");
        }
        text.add("[0x").add(address, 16).add("]");
    }
}

[[noreturn]] void crash(int signal)
{
    static std::atomic_flag isCrashing = ATOMIC_FLAG_INIT;
    while (isCrashing.test_and_set())
        ::pause(); // another thread is reporting and will end the process

    // Ends the process even if the report blocks.
    std::signal(SIGALRM, SIG_DFL);
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGALRM);
    sigaddset(&ending, SIGABRT);
    ::pthread_sigmask(SIG_UNBLOCK, &ending, nullptr);
    ::alarm(TimeForTheReport);

    LogLock::takeIfPossible();
    static SignalText text;
    text.clear();
    text.add(Picture).add("The app has been shut down unexpectedly, please contact Support. Signal:");
    writeFromSignal({DefaultLog, ShadowLog}, "ERROR", text.add(static_cast<unsigned>(signal)).text());

    text.clear();
    text.add("CRASH HANDLED; Application has crashed due to ");
    addReason(text, signal);
    text.add("\n    ======= Backtrace: =========");
    addFrames(text);
    writeFromSignal({DefaultLog, ShadowLog}, "FATAL", text.text());
    std::raise(SIGABRT); // abort() may flush streams that another thread has locked, so the signal comes first
    std::abort();
}

std::atomic<int> interrupts{0};

/// Called with the log's lock held, so never concurrently.
void logInterrupts()
{
    static int logged = 0;
    for (const int received = interrupts; logged < received; ++logged) {
        writeFromSignal({DefaultLog}, "INFO",
            logged == 0 ? "Quit the application (user request signal):2" : "Application terminated...");
    }
}

void interrupt()
{
    const int savedErrno = errno;
    const bool isFirst = interrupts.fetch_add(1) == 0;
    LogLock::callWhenFree(logInterrupts);
    QCoreApplication::exit(isFirst ? 0 : -1);
    errno = savedErrno;
}

/// After a stack overflow, a handler can run only on an alternate stack.
void provideAlternateStack()
{
    static std::array<char, 65536> memory;
    static bool isUsed = false;
    stack_t current{};
    if (isUsed || ::sigaltstack(nullptr, &current) != 0 || !(current.ss_flags & SS_DISABLE))
        return;
    stack_t stack{};
    stack.ss_sp = memory.data();
    stack.ss_size = memory.size();
    isUsed = ::sigaltstack(&stack, nullptr) == 0;
}

} // namespace

void crashHandler(int signal)
{
    if (signal == SIGINT)
        interrupt();
    else
        crash(signal);
}

void installCrashHandler()
{
    void* frame = nullptr;
    ::backtrace(&frame, 1); // the first call loads a shared library, which is not signal-safe
    provideAlternateStack();
    struct sigaction action { };
    action.sa_handler = crashHandler;
    action.sa_flags = SA_ONSTACK | SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : Signals)
        sigaddset(&action.sa_mask, signal); // a crash in the handler ends the process
    for (const int signal : Signals)
        ::sigaction(signal, &action, nullptr);
}

#include "Work.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <future>
#include <system_error>
#include <vector>

namespace orvseal {

namespace {

constexpr std::chrono::milliseconds IdleInterval(200);

std::atomic<int> receivedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may not wait for a lock");

} // namespace

void catchInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = [](int signal) { receivedSignal = signal; };
    // Without SA_RESTART, so that the password prompt ends immediately.
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        sigaction(signal, &action, &before);
        if (signal == SIGHUP && before.sa_handler == SIG_IGN)
            sigaction(signal, &before, nullptr);
    }
    for (const int signal : {SIGPIPE, SIGXFSZ})
        std::signal(signal, SIG_IGN);
}

int interruptSignal()
{
    return receivedSignal;
}

void stopIfInterrupted()
{
    if (receivedSignal != 0)
        fail<FatalError>("interrupted");
}

void forEachIndex(
    std::size_t count, int jobs, const std::function<void(std::size_t)>& task, const std::function<void()>& idle)
{
    std::atomic<std::size_t> next{0};
    std::atomic<bool> stopped{false};
    const auto work = [&] {
        try {
            for (std::size_t index = next++; index < count && !stopped; index = next++)
                task(index);
        } catch (...) {
            stopped = true;
            throw;
        }
    };

    std::vector<std::future<void>> workers;
    try {
        for (int job = 0; job < jobs; ++job)
            workers.push_back(std::async(std::launch::async, work));
    } catch (const std::system_error&) {
        if (workers.empty())
            throw;
    }
    for (std::future<void>& worker : workers) {
        while (worker.wait_for(IdleInterval) != std::future_status::ready)
            idle();
        worker.get();
    }
}

} // namespace orvseal

#pragma once

#include <Orv/Exception.h>

#include <QString>

#include <cstddef>
#include <functional>

namespace orvseal {

/// The whole command ends, for instance because the disk is full or after a signal. All other exceptions concern one
/// entry.
class FatalError : public Orv::Exception::Base {
public:
    using Base::Base;
};

/// Throws an exception with the message `text`, in which the arguments replace "%1", "%2" and so on.
template <class Exception = Orv::Exception::Base, class... Arguments>
[[noreturn]] void fail(const char* text, const Arguments&... arguments)
{
    if constexpr (sizeof...(arguments) == 0)
        throw Exception(text);
    else
        throw Exception(QString(text).arg(arguments...));
}

/// SIGINT, SIGTERM and SIGHUP set a flag instead of ending the process, except for a SIGHUP that the caller ignores, as
/// nohup does. Writing to a closed pipe, or beyond the limit of file sizes, becomes an error.
void catchInterrupts();
/// The signal that was received, or 0.
int interruptSignal();
/// Throws `FatalError` after a signal. Called between chunks and between entries.
void stopIfInterrupted();

/// Calls `task` with 0 to `count` - 1 on `jobs` threads, and `idle` on the calling thread several times a second. Uses
/// fewer threads if the system refuses more; throws if it refuses all. The first exception of a task ends the work and
/// is thrown here.
void forEachIndex(
    std::size_t count, int jobs, const std::function<void(std::size_t)>& task, const std::function<void()>& idle);

} // namespace orvseal

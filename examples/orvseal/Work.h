#pragma once

#include <Orv/Exception.h>

#include <cstddef>
#include <functional>

namespace orvseal {

/// The whole command cannot go on, for instance because the disk is full. Any other exception out of the work on an
/// entry concerns that entry alone.
class CannotGoOn : public Orv::Exception::Base {
public:
    using Base::Base;
};

/// Makes SIGINT, SIGTERM and SIGHUP set a flag instead of ending the process; but not a SIGHUP that the caller ignores,
/// as nohup does. A closed pipe and a file at its limit become errors of the write.
void catchInterrupts();
/// The signal that came; 0 if none did.
int interruptSignal();
/// Throws `Orv::Exception::Canceled` once a signal has come. Called between portions and between entries.
void stopIfInterrupted();

/// Calls `task` with 0 to `count` - 1, on `jobs` threads at a time, and `idle` on the calling thread meanwhile, several
/// times a second. Where fewer threads can be had, those have to do; throws if there is none. The first exception out
/// of a task ends the work and comes out of here.
void forEachIndex(
    std::size_t count, int jobs, const std::function<void(std::size_t)>& task, const std::function<void()>& idle);

} // namespace orvseal

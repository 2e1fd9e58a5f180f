#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QIODevice>

namespace Orv::Utitlity {

/// Bytes from the operating system's random device. Reentrant; nothing is logged.
class ORV_EXPORT RandomByteArray {
public:
    /// Appends `size` random bytes to `out`. False, with `out` as it was, if the random device cannot be opened or
    /// fails.
    static bool generate(QByteArray& out, quint64 size);

    /// Writes `size` random bytes to `out`. False if `out` is not writable, if the random device cannot be opened or
    /// fails, or if `out` accepts fewer bytes than it is given; what was written then stays written.
    static bool generate(QIODevice& out, quint64 size);
};

} // namespace Orv::Utitlity

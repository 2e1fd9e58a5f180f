#pragma once

#include <Orv/Export.h>

#include <QByteArray>
#include <QIODevice>

namespace Orv::Utitlity {

/// Random bytes from the operating system's random device. Reentrant; does not log.
class ORV_EXPORT RandomByteArray {
public:
    /// Appends `size` random bytes to `out`. If the random device cannot be opened or read, returns false and leaves
    /// `out` unchanged.
    static bool generate(QByteArray& out, quint64 size);

    /// Writes `size` random bytes to `out`. Returns false if `out` is not writable or accepts too few bytes, or if the
    /// random device cannot be opened or read; data already written stays there.
    static bool generate(QIODevice& out, quint64 size);
};

} // namespace Orv::Utitlity

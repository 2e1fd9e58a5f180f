#pragma once

#include <Orv/Export.h>

#include <QIODevice>

namespace Orv::Utility {

/// Copies from one device to another, piece by piece.
class ORV_EXPORT StreamCopy {
public:
    /// `chunkSize`: the most bytes to read and write at a time. It has to be positive: otherwise a source that is not
    /// empty never comes to its end.
    explicit StreamCopy(qint64 chunkSize) : m_chunkSize(chunkSize) { }

    /// Copies until the source is at its end, fails, or has given `maxBytes`; 0 stands for no limit, and with less than
    /// 0 nothing is copied. Returns the number of bytes copied.
    ///
    /// Returns -1 if the destination is not open for writing or the source not for reading, before anything is read;
    /// and, with an error logged, if the destination does not take all it is given: what it has taken stays there.
    ///
    /// Does not wait, but asks again: a source that has nothing yet and is not at its end keeps the call, and the
    /// processor, busy. The devices are neither opened nor closed nor flushed.
    qint64 exec(QIODevice& destination, QIODevice& source, qint64 maxBytes);

private:
    qint64 m_chunkSize;
};

} // namespace Orv::Utility

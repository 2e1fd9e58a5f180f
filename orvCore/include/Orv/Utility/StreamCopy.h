#pragma once

#include <Orv/Export.h>

#include <QIODevice>

namespace Orv::Utility {

/// Copies from one device to another in chunks.
class ORV_EXPORT StreamCopy {
public:
    /// `chunkSize` is the maximum number of bytes per read and write. It has to be positive: otherwise `exec` never
    /// returns for a non-empty source.
    explicit StreamCopy(qint64 chunkSize) : m_chunkSize(chunkSize) { }

    /// Copies until the source ends, fails, or has yielded `maxBytes`. 0 means no limit; with a negative limit, nothing
    /// is copied. Returns the number of bytes copied.
    ///
    /// Returns -1, without reading, if the destination is not open for writing or the source is not open for reading.
    /// If the destination accepts too few bytes, logs an error and returns -1; data already written stays there.
    ///
    /// Does not wait for data: while a source has none and is not at its end, the call polls it in a busy loop. The
    /// devices are neither opened nor closed nor flushed.
    qint64 exec(QIODevice& destination, QIODevice& source, qint64 maxBytes);

private:
    qint64 m_chunkSize;
};

} // namespace Orv::Utility

#pragma once

#include <Orv/Export.h>

#include <QDateTime>

namespace Orv::Utility {

/// Compares date-times at a chosen precision, for times that are kept with less of it on one side.
///
/// Both values are cut down, never rounded, by their own wall-clock time, and then compared as instants, whatever their
/// time specs. There is no tolerance: 10:00:59.999 and 10:01:00.000 differ at every precision. Invalid values compare
/// as `QDateTime` compares them.
class ORV_EXPORT DateTimeCompare {
public:
    /// How precise the comparison is.
    enum Mode : qint32 {
        Precise = 0, ///< as they are; what every other value means too
        Minutes = 1, ///< without seconds and milliseconds
        Seconds = 2, ///< without milliseconds
    };

    /// Compares at the precision `mode`.
    explicit DateTimeCompare(Mode mode) : m_mode(mode) { }

    ///@{
    /// The result of the comparison; `orEqual`: whether equal values count, too.
    bool equal(const QDateTime& a, const QDateTime& b) const;
    bool notEqual(const QDateTime& a, const QDateTime& b) const;
    bool less(const QDateTime& a, const QDateTime& b, bool orEqual) const;
    bool greater(const QDateTime& a, const QDateTime& b, bool orEqual) const;
    ///@}

private:
    QDateTime truncated(const QDateTime& x) const;

    Mode m_mode;
};

} // namespace Orv::Utility

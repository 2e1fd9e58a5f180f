#pragma once

#include <Orv/Export.h>

#include <QDateTime>

namespace Orv::Utility {

/// Compares date-times at a chosen precision, for example with a system that stores whole seconds only.
///
/// Both values are truncated (not rounded) in their own wall-clock time and then compared as instants, regardless of
/// their time zones. There is no tolerance: 10:00:59.999 and 10:01:00.000 differ at every precision. Invalid values
/// compare like `QDateTime`.
class ORV_EXPORT DateTimeCompare {
public:
    /// The precision of the comparison.
    enum Mode : qint32 {
        Precise = 0, ///< no truncation; other values mean the same
        Minutes = 1, ///< ignores seconds and milliseconds
        Seconds = 2, ///< ignores milliseconds
    };

    /// Creates a comparison with the precision `mode`.
    explicit DateTimeCompare(Mode mode) : m_mode(mode) { }

    ///@{
    /// Compares `a` with `b`. `orEqual` makes the result true for equal values.
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

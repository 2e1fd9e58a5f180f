#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// Formats a number of bytes for display, with two decimals and a unit: "1.50 KiB". Not localised.
///
/// The unit is the largest one that is not greater than the unrounded size, so 1048575 bytes are "1024.00 KiB".
class ORV_EXPORT SizeToString {
public:
    /// The system of units.
    enum Format : qint32 {
        Binary = 0,  ///< powers of 1024: B, KiB, MiB, GiB, TiB, PiB; other values mean the same
        Decimal = 1, ///< powers of 1000: B, KB, MB, GB, TB, PB
    };

    /// `size` is in bytes.
    explicit SizeToString(unsigned long long size) : m_size(size) { }

    /// Returns the formatted size.
    QString toString(Format format) const;

private:
    unsigned long long m_size;
};

} // namespace Orv::Utility

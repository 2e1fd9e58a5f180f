#pragma once

#include <Orv/Export.h>

#include <QString>

namespace Orv::Utility {

/// A number of bytes as a text for people: two decimals, a blank and a unit, "1.50 KiB". Not localised.
///
/// The unit is the largest that the number reaches before it is rounded, so 1048575 bytes are "1024.00 KiB".
class ORV_EXPORT SizeToString {
public:
    /// What a unit stands for.
    enum Format : qint32 {
        Binary = 0,  ///< powers of 1024: B, KiB, MiB, GiB, TiB, PiB; what every other value means too
        Decimal = 1, ///< powers of 1000: B, KB, MB, GB, TB, PB
    };

    /// `size` is in bytes.
    explicit SizeToString(unsigned long long size) : m_size(size) { }

    /// The size in the largest unit of `format` that it reaches.
    QString toString(Format format) const;

private:
    unsigned long long m_size;
};

} // namespace Orv::Utility

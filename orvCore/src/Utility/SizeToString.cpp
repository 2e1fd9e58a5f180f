#include <Orv/Utility/SizeToString.h>

#include <array>

namespace Orv::Utility {

namespace {

constexpr std::array<const char*, 6> StringKB = {"B", "KB", "MB", "GB", "TB", "PB"};
constexpr std::array<const char*, 6> StringKiB = {"B", "KiB", "MiB", "GiB", "TiB", "PiB"};

QString inUnits(double size, double step, const std::array<const char*, 6>& units)
{
    std::size_t unit = 0;
    double divisor = 1;
    while (unit + 1 < units.size() && size >= divisor * step) {
        divisor *= step;
        ++unit;
    }
    return QString::number(size / divisor, 'f', 2) + QLatin1Char(' ') + QLatin1String(units[unit]);
}

} // namespace

QString SizeToString::toString(Format format) const
{
    const auto size = static_cast<double>(m_size);
    return format == Decimal ? inUnits(size, 1000, StringKB) : inUnits(size, 1024, StringKiB);
}

} // namespace Orv::Utility

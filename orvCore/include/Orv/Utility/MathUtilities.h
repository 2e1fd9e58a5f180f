#pragma once

namespace Extensions {

/// Rounding of sizes and counts. Meant for values of 0 and more and for steps of 1 and more.
///
/// Each one is the plain expression in the width of its arguments: signed division truncates towards zero, so a
/// negative value is rounded towards zero, too. A step of 0, and a sum of value and step beyond the type, are the
/// caller's errors (the unsigned sum wraps).
///
/// @warning Arguments of different types are ambiguous and do not compile: `Ceil(file.size(), 4096)` needs a cast,
/// `Ceil(file.size(), 4096LL)`.
class MathUtilities {
public:
    ///@{
    /// The next multiple, or the value if it is one.
    static constexpr long long RoundUp(long long value, long long multiple)
    {
        return (value + multiple - 1) / multiple * multiple;
    }
    static constexpr int RoundUp(int value, int multiple) { return (value + multiple - 1) / multiple * multiple; }
    ///@}

    /// The multiple before, or the value if it is one.
    static constexpr int RoundDown(int value, int multiple) { return value / multiple * multiple; }

    ///@{
    /// How many times `divisor` holds `value`: the quotient, rounded up.
    static constexpr int Ceil(int value, int divisor) { return (value + divisor - 1) / divisor; }
    static constexpr unsigned int Ceil(unsigned int value, unsigned int divisor)
    {
        return (value + divisor - 1) / divisor;
    }
    static constexpr long long Ceil(long long value, long long divisor) { return (value + divisor - 1) / divisor; }
    ///@}
};

} // namespace Extensions

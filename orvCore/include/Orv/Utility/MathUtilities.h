#pragma once

namespace Extensions {

/// Rounding of sizes and counts, for non-negative values and positive steps.
///
/// Each function is a plain expression in the type of its arguments. Signed division truncates, so negative values are
/// rounded towards zero. A step of 0 and an overflow of value + step are precondition violations (the unsigned sum
/// wraps).
///
/// @warning Arguments of different types are ambiguous and do not compile: `Ceil(file.size(), 4096)` needs a cast,
/// `Ceil(file.size(), 4096LL)`.
class MathUtilities {
public:
    ///@{
    /// Rounds up to a multiple.
    static constexpr long long RoundUp(long long value, long long multiple)
    {
        return (value + multiple - 1) / multiple * multiple;
    }
    static constexpr int RoundUp(int value, int multiple) { return (value + multiple - 1) / multiple * multiple; }
    ///@}

    /// Rounds down to a multiple.
    static constexpr int RoundDown(int value, int multiple) { return value / multiple * multiple; }

    ///@{
    /// Returns the quotient, rounded up.
    static constexpr int Ceil(int value, int divisor) { return (value + divisor - 1) / divisor; }
    static constexpr unsigned int Ceil(unsigned int value, unsigned int divisor)
    {
        return (value + divisor - 1) / divisor;
    }
    static constexpr long long Ceil(long long value, long long divisor) { return (value + divisor - 1) / divisor; }
    ///@}
};

} // namespace Extensions

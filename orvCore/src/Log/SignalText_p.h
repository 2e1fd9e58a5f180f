#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// A fixed-size string buffer for signal handlers: no allocation, no locks. Truncates what does not fit.
class SignalText {
public:
    void clear() { m_size = 0; }

    SignalText& add(std::string_view text)
    {
        const std::size_t size = text.size() < m_text.size() - m_size ? text.size() : m_text.size() - m_size;
        std::memcpy(m_text.data() + m_size, text.data(), size);
        m_size += size;
        return *this;
    }

    /// `width` is the minimum number of digits, padded with leading zeros.
    SignalText& add(std::uintmax_t number, int base = 10, std::size_t width = 1)
    {
        std::array<char, 64> digits;
        const auto end = std::to_chars(digits.begin(), digits.end(), number, base).ptr;
        for (auto size = static_cast<std::size_t>(end - digits.begin()); size < width; ++size)
            add("0");
        return add({digits.data(), static_cast<std::size_t>(end - digits.begin())});
    }

    std::string_view text() const { return {m_text.data(), m_size}; }

private:
    std::array<char, 65536> m_text{};
    std::size_t m_size = 0;
};

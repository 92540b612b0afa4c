// Unsigned integers of 128 bits: Word128 is the compiler's own type, or TwoWords where it has none
// (for 32-bit processors, for example).
#pragma once

#include <compare>
#include <cstdint>

namespace vnbytstr::detail {

/// Counts modulo 2^128, as the compiler's own type does. Shifts are by 0 to 127 places; a divisor
/// is not 0.
class TwoWords {
public:
    constexpr TwoWords(std::uint64_t low = 0) noexcept : m_low(low) {}
    /// The lower half.
    constexpr explicit operator std::uint64_t() const noexcept { return m_low; }

    friend constexpr TwoWords operator+(TwoWords a, TwoWords b) noexcept {
        const std::uint64_t low = a.m_low + b.m_low;
        return {a.m_high + b.m_high + (low < a.m_low), low};
    }
    friend constexpr TwoWords operator-(TwoWords a, TwoWords b) noexcept {
        return {a.m_high - b.m_high - (a.m_low < b.m_low), a.m_low - b.m_low};
    }
    friend constexpr TwoWords operator*(TwoWords a, TwoWords b) noexcept {
        constexpr std::uint64_t kHalf = 0xFFFFFFFF;
        const std::uint64_t a0 = a.m_low & kHalf, a1 = a.m_low >> 32;
        const std::uint64_t b0 = b.m_low & kHalf, b1 = b.m_low >> 32;
        const std::uint64_t middle = a1 * b0 + (a0 * b0 >> 32);
        const std::uint64_t upper = a0 * b1 + (middle & kHalf);
        return {a1 * b1 + (middle >> 32) + (upper >> 32) + a.m_high * b.m_low + a.m_low * b.m_high,
                a.m_low * b.m_low};
    }
    friend constexpr TwoWords operator/(TwoWords a, TwoWords b) noexcept { return Divide(a, b); }
    friend constexpr TwoWords operator%(TwoWords a, TwoWords b) noexcept {
        Divide(a, b);
        return a;
    }
    friend constexpr TwoWords operator|(TwoWords a, TwoWords b) noexcept {
        return {a.m_high | b.m_high, a.m_low | b.m_low};
    }
    friend constexpr TwoWords operator<<(TwoWords a, int places) noexcept {
        if (places == 0)
            return a;
        if (places >= 64)
            return {a.m_low << (places - 64), 0};
        return {a.m_high << places | a.m_low >> (64 - places), a.m_low << places};
    }
    friend constexpr TwoWords operator>>(TwoWords a, int places) noexcept {
        if (places == 0)
            return a;
        if (places >= 64)
            return {0, a.m_high >> (places - 64)};
        return {a.m_high >> places, a.m_low >> places | a.m_high << (64 - places)};
    }
    constexpr TwoWords& operator+=(TwoWords other) noexcept { return *this = *this + other; }
    constexpr TwoWords& operator-=(TwoWords other) noexcept { return *this = *this - other; }
    constexpr TwoWords& operator*=(TwoWords other) noexcept { return *this = *this * other; }
    constexpr TwoWords& operator<<=(int places) noexcept { return *this = *this << places; }
    friend constexpr bool operator==(const TwoWords&, const TwoWords&) noexcept = default;
    friend constexpr std::strong_ordering operator<=>(TwoWords a, TwoWords b) noexcept {
        return a.m_high != b.m_high ? a.m_high <=> b.m_high : a.m_low <=> b.m_low;
    }

private:
    constexpr TwoWords(std::uint64_t high, std::uint64_t low) noexcept : m_high(high), m_low(low) {}

    /// The quotient, bit by bit; `a` becomes the remainder.
    static constexpr TwoWords Divide(TwoWords& a, TwoWords b) noexcept {
        TwoWords quotient, rest;
        for (int i = 0; i < 128; ++i) {
            const bool carries = rest.m_high >> 63 != 0;
            rest = rest << 1 | a >> 127;
            a <<= 1;
            quotient <<= 1;
            if (carries || rest >= b) {
                rest -= b;
                quotient.m_low |= 1;
            }
        }
        a = rest;
        return quotient;
    }

    std::uint64_t m_high = 0;
    std::uint64_t m_low = 0;
};

#if defined(__SIZEOF_INT128__)
__extension__ using Word128 = unsigned __int128;
#else
using Word128 = TwoWords;
#endif

} // namespace vnbytstr::detail

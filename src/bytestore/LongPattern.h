// Search for long patterns that skips most of the data.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace vnbytstr::detail {

/// Looks at the last bytes of the place where the pattern might stand. Where these occur nowhere in
/// the pattern, the search moves on by nearly the pattern's length, otherwise up to where they do
/// (R. N. Horspool: Practical fast searching in strings, Software: Practice and Experience 10(6),
/// 1980, with S. Wu and U. Manber's groups of bytes in place of one byte).
class LongPattern {
public:
    /// Shorter patterns are not worth it.
    static constexpr std::size_t kShortest = 256;

    /// `pattern` must outlive the object. Null without memory for it.
    static std::unique_ptr<LongPattern> Make(std::span<const BYTE> pattern) noexcept;

    /// As PatternScanner::Scan, until it does not pay: see HasGivenUp. All starts before `position`
    /// are then excluded. REQUIRES: the text has room for the pattern from `position` on.
    bool Scan(std::span<const BYTE> text, std::size_t& position) noexcept;

    /// Too much of the data looks like the pattern. So the time stays linear.
    bool HasGivenUp() const noexcept { return m_cost > m_allowance; }

private:
    explicit LongPattern(std::span<const BYTE> pattern) noexcept;

    static constexpr std::size_t kGroup = 16;
    static constexpr std::size_t kLookedAt = 2048; // the pattern's end; limits the moves
    static constexpr unsigned kTableBits = 13;
    static std::size_t Hash(const BYTE* group) noexcept;

    /// In bytes that PatternScanner's filter looks at in the same time.
    static constexpr std::uint64_t kPriceOfLook = 32;
    static constexpr std::uint64_t kPriceOfCandidate = 64;

    std::span<const BYTE> m_pattern;
    std::array<std::uint16_t, std::size_t{1} << kTableBits> m_moves; // by the last group's hash
    std::size_t m_farthest;                                          // move
    std::size_t m_next; // the move after a place whose last group is the pattern's
    std::uint64_t m_cost = 0;
    std::uint64_t m_allowance = 32768;
};

} // namespace vnbytstr::detail

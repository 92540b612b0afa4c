#include "src/bytestore/LongPattern.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vnbytstr::detail {

std::unique_ptr<LongPattern> LongPattern::Make(std::span<const BYTE> pattern) noexcept {
    return std::unique_ptr<LongPattern>(new (std::nothrow) LongPattern(pattern));
}

LongPattern::LongPattern(std::span<const BYTE> pattern) noexcept
    : m_pattern(pattern), m_farthest(std::min(pattern.size(), kLookedAt) - kGroup + 1) {
    const std::size_t lastGroup = pattern.size() - kGroup;
    m_moves.fill(static_cast<std::uint16_t>(m_farthest));
    for (std::size_t move = m_farthest - 1; move > 0; --move)
        m_moves[Hash(&pattern[lastGroup - move])] = static_cast<std::uint16_t>(move);
    std::uint16_t& last = m_moves[Hash(&pattern[lastGroup])];
    m_next = last;
    last = 0;
}

/// Multiplicative (Fibonacci) hashing of both halves.
std::size_t LongPattern::Hash(const BYTE* group) noexcept {
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    std::memcpy(&low, group, sizeof low);
    std::memcpy(&high, group + sizeof low, sizeof high);
    const std::uint64_t mixed =
        low * 0x9E3779B97F4A7C15u + (high ^ high >> 29) * 0xC2B2AE3D27D4EB4Fu;
    return static_cast<std::size_t>(mixed >> (64 - kTableBits));
}

bool LongPattern::Scan(std::span<const BYTE> text, std::size_t& position) noexcept {
    const std::size_t last = text.size() - m_pattern.size();
    const BYTE* const lastGroups = text.data() + m_pattern.size() - kGroup;
    const std::size_t farthest = m_farthest;
    while (position <= last && !HasGivenUp()) {
        const std::size_t from = position;
        std::size_t move = farthest;
        // A branch is predicted: the next look need not wait for this one.
        while (position <= last && (move = m_moves[Hash(lastGroups + position)]) == farthest) {
            position += farthest;
        }
        m_allowance += position - from;
        if (position > last)
            break;
        m_cost += kPriceOfLook;
        if (move == 0) {
            const auto [in, unequal] =
                std::mismatch(m_pattern.begin(), m_pattern.end(), &text[position]);
            if (in == m_pattern.end())
                return true;
            m_cost += kPriceOfCandidate + static_cast<std::uint64_t>(in - m_pattern.begin());
            move = m_next;
        }
        position += move;
        m_allowance += move;
    }
    return false;
}

} // namespace vnbytstr::detail

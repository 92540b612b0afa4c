#include "src/bytestore/DeletedRows.h"

#include "vnbytstr/framework/Exception.h"

#include <algorithm>
#include <bit>
#include <cassert>

namespace vnbytstr::detail {

namespace {
constexpr DWORD kBlock = 512; // rows; 8 words
constexpr DWORD kWords = kBlock / 64;
} // namespace

void DeletedRows::Delete(DWORD place, DWORD places) {
    if (place / kBlock >= m_before.size()) {
        // For all rows there are, so that it does not happen for each of them.
        const std::size_t blocks = (places - 1) / kBlock + std::size_t{1};
        WithMemoryException([&] {
            m_bits.reserve(blocks * kWords);
            m_before.resize(blocks, m_count);
            m_bits.resize(blocks * kWords);
        });
    }
    m_bits[place / 64] |= ULONGLONG{1} << (place % 64);
    for (std::size_t block = place / kBlock + 1; block < m_before.size(); ++block)
        ++m_before[block];
    ++m_count;
    CheckInvariants(place);
}

void DeletedRows::CheckInvariants([[maybe_unused]] DWORD place) const {
#ifndef NDEBUG
    assert(m_bits.size() == m_before.size() * kWords); // 1
    const std::size_t block = place / kBlock;
    DWORD set = 0;
    for (std::size_t word = block * kWords; word < (block + 1) * kWords; ++word)
        set += static_cast<DWORD>(std::popcount(m_bits[word]));
    const DWORD end = block + 1 < m_before.size() ? m_before[block + 1] : m_count;
    assert(m_before[block] + set == end); // 2, 3
#endif
}

DWORD DeletedRows::Select(DWORD row) const {
    // The last block that begins with at most `row` rows before it.
    std::size_t low = 0, high = m_before.size();
    while (high - low > 1) {
        const std::size_t middle = low + (high - low) / 2;
        (middle * kBlock - m_before[middle] <= row ? low : high) = middle;
    }
    auto left = static_cast<DWORD>(row - (low * kBlock - m_before[low]));
    for (std::size_t word = low * kWords; word < (low + 1) * kWords; ++word) {
        ULONGLONG live = ~m_bits[word];
        const auto count = static_cast<DWORD>(std::popcount(live));
        if (left < count) {
            for (; left > 0; --left)
                live &= live - 1;
            return static_cast<DWORD>(word * 64 + static_cast<unsigned>(std::countr_zero(live)));
        }
        left -= count;
    }
    return row + m_count; // after the last block
}

void DeletedRows::Clear() noexcept {
    std::vector<ULONGLONG>().swap(m_bits);
    std::vector<DWORD>().swap(m_before);
    m_count = 0;
}

} // namespace vnbytstr::detail

// 1. A block holds 1 to kBlockRows rows, `count` of them; its bits are null exactly when it is
// full.
// 2. m_count is the sum of the blocks' counts.
#include "src/window/controls/RowSet.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <utility>
#include <vector>

namespace vnbytstr::detail {
namespace {

/// The bits of a word from `first` to `last`, both included.
std::uint64_t Mask(int first, int last) {
    return (~std::uint64_t{0} << first) & (~std::uint64_t{0} >> (63 - last));
}

} // namespace

bool RowSet::Has(int row) const noexcept {
    const auto found = m_blocks.find(row / kBlockRows);
    if (row < 0 || found == m_blocks.end())
        return false;
    const int at = row % kBlockRows;
    return !found->second.bits ||
           ((*found->second.bits)[static_cast<std::size_t>(at / kWordBits)] >> (at % kWordBits) &
            1) != 0;
}

/// Rows `first` to `last` of one block. Returns by how much the block's count changed.
int RowSet::SetInBlock(int number, int first, int last, bool on) {
    const auto found = m_blocks.find(number);
    const bool isNew = found == m_blocks.end();
    if (isNew && !on)
        return 0;
    const int before = isNew ? 0 : found->second.count;
    if (!isNew && on && before == kBlockRows)
        return 0;
    if (first == 0 && last == kBlockRows - 1) {
        if (on)
            m_blocks[number] = {kBlockRows, nullptr};
        else
            m_blocks.erase(found);
        return on ? kBlockRows - before : -before;
    }
    std::unique_ptr<Bits> made;
    if (isNew || !found->second.bits) {
        made = std::make_unique<Bits>();
        made->fill(isNew ? 0 : ~std::uint64_t{0});
    }
    Block& block = m_blocks[number];
    if (made)
        block.bits = std::move(made);
    int count = before;
    for (int word = first / kWordBits; word <= last / kWordBits; ++word) {
        const std::uint64_t mask = Mask(std::max(first - word * kWordBits, 0),
                                        std::min(last - word * kWordBits, kWordBits - 1));
        std::uint64_t& bits = (*block.bits)[static_cast<std::size_t>(word)];
        const int old = std::popcount(bits & mask);
        bits = on ? bits | mask : bits & ~mask;
        count += (on ? std::popcount(mask) : 0) - old;
    }
    block.count = count;
    if (count == 0)
        m_blocks.erase(number);
    else if (count == kBlockRows)
        block.bits.reset();
    return count - before;
}

bool RowSet::Set(int first, int last, bool on) {
    first = std::max(first, 0);
    if (first > last)
        return false;
    bool changed = false;
    const auto change = [&](int block) {
        const int top = block * kBlockRows;
        const int by =
            SetInBlock(block, std::max(first - top, 0), std::min(last - top, kBlockRows - 1), on);
        m_count += by;
        changed = changed || by != 0;
    };
    if (on) {
        for (int block = first / kBlockRows; block <= last / kBlockRows; ++block)
            change(block);
    } else {
        for (auto at = m_blocks.lower_bound(first / kBlockRows);
             at != m_blocks.end() && at->first <= last / kBlockRows;) {
            const int block = at->first;
            ++at; // the block may be erased
            change(block);
        }
    }
    Check();
    return changed;
}

int RowSet::Next(int from) const noexcept {
    from = std::max(from, 0);
    for (auto at = m_blocks.lower_bound(from / kBlockRows); at != m_blocks.end(); ++at) {
        const int top = at->first * kBlockRows;
        const int first = std::max(from - top, 0);
        if (!at->second.bits)
            return top + first;
        for (int word = first / kWordBits; word < kBlockRows / kWordBits; ++word) {
            std::uint64_t bits = (*at->second.bits)[static_cast<std::size_t>(word)];
            if (word == first / kWordBits)
                bits &= ~std::uint64_t{0} << (first % kWordBits);
            if (bits != 0)
                return top + word * kWordBits + std::countr_zero(bits);
        }
    }
    return -1;
}

int RowSet::NextOutside(int from) const noexcept {
    from = std::max(from, 0);
    for (auto at = m_blocks.find(from / kBlockRows);
         at != m_blocks.end() && at->first == from / kBlockRows; ++at) {
        const int top = at->first * kBlockRows;
        if (at->second.bits)
            for (int word = (from - top) / kWordBits; word < kBlockRows / kWordBits; ++word) {
                std::uint64_t bits = ~(*at->second.bits)[static_cast<std::size_t>(word)];
                if (word == (from - top) / kWordBits)
                    bits &= ~std::uint64_t{0} << (from % kWordBits);
                if (bits != 0)
                    return top + word * kWordBits + std::countr_zero(bits);
            }
        if (top > INT32_MAX - kBlockRows)
            return INT32_MAX; // no row has this number
        from = top + kBlockRows;
    }
    return from;
}

/// Gives the rows from `from` on numbers that are higher by `by`.
void RowSet::Move(int from, int by) {
    std::vector<std::pair<int, int>> runs;
    for (int first = Next(from); first >= 0;) {
        const int end = NextOutside(first);
        runs.emplace_back(first, end - 1);
        first = Next(end);
    }
    if (runs.empty())
        return;
    Set(runs.front().first, runs.back().second, false);
    for (const auto& [first, last] : runs)
        Set(first + by, last + by, true);
}

void RowSet::InsertRow(int row) { Move(row, 1); }

void RowSet::RemoveRow(int row) {
    Set(row, row, false);
    Move(row + 1, -1);
}

void RowSet::Clear() noexcept {
    m_blocks.clear();
    m_count = 0;
}

std::size_t RowSet::MemoryUse() const noexcept {
    constexpr std::size_t kNode = 4 * sizeof(void*);
    std::size_t bytes = 0;
    for (const auto& [number, block] : m_blocks)
        bytes += kNode + sizeof number + sizeof block + (block.bits ? sizeof(Bits) : 0);
    return bytes;
}

void RowSet::Check() const noexcept {
#ifndef NDEBUG
    int count = 0;
    for (const auto& [number, block] : m_blocks) {
        assert(block.count > 0 && block.count <= kBlockRows);
        assert((block.bits == nullptr) == (block.count == kBlockRows));
        count += block.count;
    }
    assert(count == m_count);
#endif
}

} // namespace vnbytstr::detail

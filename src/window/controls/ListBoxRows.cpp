// 1. Every row's text lies in one of the chunks, followed by a NUL.
// 2. m_live and m_garbage together are no more than what the chunks have given out.
// 3. m_selected is the number of selected rows.
// 4. m_data and m_heights are empty, or have an element per row; so are m_asideData and
//    m_asideHeights, with an element per row put aside. No row put aside is selected.
// 5. m_sums, when valid, is the Fenwick tree over m_heights.
// 6. Without data all of the above are empty; m_marked holds rows below m_count only. With data
//    m_count is 0 and m_marked empty.
#include "src/window/controls/ListBoxRows.h"

#include "src/window/controls/TextMatch.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <climits>
#include <cstring>
#include <new>
#include <string>

namespace vnbytstr::detail {
namespace {

constexpr std::size_t kFirstChunk = 4096;
constexpr std::size_t kMaxChunk = 1 << 20;
constexpr std::size_t kMaxText = 0x7FFFFFFE;

template <class T>
void MakeRoom(std::vector<T>& values) {
    constexpr std::size_t kFirst = 64;
    if (values.size() == values.capacity())
        values.reserve(std::max(kFirst, values.size() * 2));
}

std::size_t LowestBit(std::size_t n) { return n & (~n + 1); }

} // namespace

char* ListBoxRows::Allocate(std::size_t bytes) {
    if (m_chunks.empty() || m_chunks.back().size - m_chunks.back().used < bytes) {
        const std::size_t last = m_chunks.empty() ? 0 : m_chunks.back().size;
        const std::size_t usual = std::clamp(last * 2, kFirstChunk, kMaxChunk);
        const std::size_t size = std::max(usual, bytes);
        m_chunks.push_back({std::make_unique_for_overwrite<char[]>(size), size, 0});
        // A large text gets its own chunk, put before the one in use, which stays the last.
        if (size == bytes && m_chunks.size() > 1)
            std::swap(m_chunks.back(), m_chunks[m_chunks.size() - 2]);
        if (size == bytes && m_chunks.size() > 1) {
            Chunk& own = m_chunks[m_chunks.size() - 2];
            own.used = bytes;
            return own.bytes.get();
        }
    }
    Chunk& chunk = m_chunks.back();
    char* place = chunk.bytes.get() + chunk.used;
    chunk.used += bytes;
    return place;
}

char* ListBoxRows::Store(std::string_view text) {
    if (text.size() > kMaxText)
        throw std::bad_alloc();
    char* place = Allocate(text.size() + 1);
    if (!text.empty())
        std::memcpy(place, text.data(), text.size());
    place[text.size()] = '\0';
    return place;
}

void ListBoxRows::SetNoData(bool on) noexcept {
    Clear();
    m_noData = on;
}

void ListBoxRows::SetCount(int count) {
    if (count < m_count)
        m_marked.Set(count, m_count - 1, false);
    m_count = count;
    Check();
}

void ListBoxRows::Insert(int row, std::string_view text, std::uintptr_t data) {
    if (m_noData) {
        if (m_count == INT_MAX)
            throw std::bad_alloc();
        m_marked.InsertRow(row);
        ++m_count;
        return;
    }
    MakeRoom(m_rows);
    if (m_data.empty() && data != 0)
        m_data.resize(m_rows.size());
    const bool hasData = data != 0 || !m_data.empty();
    if (hasData)
        MakeRoom(m_data);
    if (!m_heights.empty())
        MakeRoom(m_heights);
    const Row entry{Store(text), static_cast<DWORD>(text.size()) & 0x7FFFFFFF, 0};
    // Nothing fails from here on.
    m_live += text.size() + 1;
    if (hasData)
        m_data.insert(m_data.begin() + row, data);
    if (!m_heights.empty()) {
        m_heights.insert(m_heights.begin() + row, static_cast<WORD>(m_height));
        m_sumsValid = false;
    }
    m_rows.insert(m_rows.begin() + row, entry);
}

bool ListBoxRows::AddMany(std::string_view texts, int count) {
    // The texts are counted before anything changes.
    std::size_t used = 0;
    for (int i = 0; i < count; ++i) {
        const void* end = used < texts.size()
                              ? std::memchr(texts.data() + used, '\0', texts.size() - used)
                              : nullptr;
        if (end == nullptr)
            return false;
        used = static_cast<std::size_t>(static_cast<const char*>(end) - texts.data()) + 1;
    }
    if (count <= 0)
        return count == 0;
    const auto total = m_rows.size() + static_cast<std::size_t>(count);
    m_rows.reserve(total);
    if (!m_data.empty())
        m_data.reserve(total);
    if (!m_heights.empty())
        m_heights.reserve(total);
    char* place = Allocate(used);
    std::memcpy(place, texts.data(), used);
    m_live += used;
    for (int i = 0; i < count; ++i) {
        const std::size_t length = std::strlen(place);
        m_rows.push_back({place, static_cast<DWORD>(length) & 0x7FFFFFFF, 0});
        place += length + 1;
    }
    if (!m_data.empty())
        m_data.resize(total);
    if (!m_heights.empty())
        m_heights.resize(total, static_cast<WORD>(m_height));
    m_sumsValid = false;
    Check();
    return true;
}

void ListBoxRows::Discard(const Row& row) {
    const std::size_t bytes = static_cast<std::size_t>(row.length) + 1;
    m_live -= bytes;
    m_garbage += bytes;
}

void ListBoxRows::SetText(int row, std::string_view text) {
    Row& entry = m_rows[Index(row)];
    if (text.size() <= entry.length) {
        // `text` may be part of the row's own text.
        std::memmove(entry.text, text.data(), text.size());
        entry.text[text.size()] = '\0';
        m_garbage += entry.length - text.size();
        m_live -= entry.length - text.size();
        entry.length = static_cast<DWORD>(text.size()) & 0x7FFFFFFF;
    } else {
        char* place = Store(text);
        Discard(entry);
        m_live += text.size() + 1;
        entry.text = place;
        entry.length = static_cast<DWORD>(text.size()) & 0x7FFFFFFF;
    }
    Compact();
}

void ListBoxRows::Remove(int row) {
    if (m_noData) {
        m_marked.RemoveRow(row);
        --m_count;
        return;
    }
    Discard(m_rows[Index(row)]);
    m_selected -= m_rows[Index(row)].selected ? 1 : 0;
    m_rows.erase(m_rows.begin() + row);
    if (!m_data.empty())
        m_data.erase(m_data.begin() + row);
    if (!m_heights.empty()) {
        m_heights.erase(m_heights.begin() + row);
        m_sumsValid = false;
    }
    if (m_rows.empty() && m_aside.empty())
        Clear();
    else
        Compact();
}

void ListBoxRows::Clear() noexcept {
    std::vector<Row>().swap(m_rows);
    std::vector<Row>().swap(m_aside);
    std::vector<std::uintptr_t>().swap(m_asideData);
    std::vector<WORD>().swap(m_asideHeights);
    std::vector<Chunk>().swap(m_chunks);
    std::vector<std::uintptr_t>().swap(m_data);
    std::vector<WORD>().swap(m_heights);
    std::vector<std::int64_t>().swap(m_sums);
    m_sumsValid = false;
    m_live = 0;
    m_garbage = 0;
    m_selected = 0;
    m_count = 0;
    m_marked.Clear();
}

/// Copies the texts into new chunks when more than half of the bytes are garbage.
void ListBoxRows::Compact() {
    if (m_garbage < kMaxChunk || m_garbage < m_live)
        return;
    std::unique_ptr<char[]> bytes(new (std::nothrow) char[m_live]);
    if (!bytes)
        return; // it can wait
    char* place = bytes.get();
    for (std::vector<Row>* rows : {&m_rows, &m_aside})
        for (Row& row : *rows) {
            std::memcpy(place, row.text, static_cast<std::size_t>(row.length) + 1);
            row.text = place;
            place += static_cast<std::size_t>(row.length) + 1;
        }
    std::vector<Chunk> old;
    old.swap(m_chunks);
    m_chunks.push_back({std::move(bytes), m_live, m_live});
    m_garbage = 0;
    Check();
}

void ListBoxRows::Reserve(int rows) {
    constexpr int kMaxReserve = 1 << 26;
    if (!m_noData)
        m_rows.reserve(m_rows.size() + Index(std::clamp(rows, 0, kMaxReserve)));
}

void ListBoxRows::SetData(int row, std::uintptr_t data) {
    if (m_data.empty() && data == 0)
        return;
    m_data.resize(m_rows.size());
    m_data[Index(row)] = data;
}

bool ListBoxRows::Select(int row, bool on) {
    if (m_noData)
        return m_marked.Set(row, row, on);
    Row& entry = m_rows[Index(row)];
    if ((entry.selected != 0) == on)
        return false;
    entry.selected = on ? 1 : 0;
    m_selected += on ? 1 : -1;
    return true;
}

void ListBoxRows::SelectRange(int first, int last, bool on) {
    first = std::max(first, 0);
    last = std::min(last, Count() - 1);
    if (m_noData)
        m_marked.Set(first, last, on);
    else
        for (int row = first; row <= last; ++row)
            Select(row, on);
}

bool ListBoxRows::SelectOnly(int first, int last) {
    first = std::max(first, 0);
    last = std::min(last, Count() - 1);
    if (m_noData) {
        const bool cleared = m_marked.Set(0, first - 1, false);
        const bool ended = m_marked.Set(last + 1, m_count, false);
        return m_marked.Set(first, last, true) || cleared || ended;
    }
    bool changed = false;
    for (int row = NextSelected(0); row >= 0; row = NextSelected(row + 1))
        if (row < first || row > last)
            changed = Select(row, false) || changed;
    for (int row = first; row <= last; ++row)
        changed = Select(row, true) || changed;
    return changed;
}

int ListBoxRows::NextSelected(int from) const noexcept {
    if (m_noData)
        return m_marked.Next(from);
    if (m_selected != 0)
        for (int row = std::max(from, 0); row < Count(); ++row)
            if (m_rows[Index(row)].selected)
                return row;
    return -1;
}

int ListBoxRows::Find(int after, std::string_view text, bool exact) const {
    return TextMatch(text).Find(after, Count(), exact, [this](int row) { return Text(row); });
}

bool ListBoxRows::Reorder(std::span<const DWORD> order) {
    if (m_noData)
        return false;
    const std::size_t count = m_rows.size();
    if (order.size() != count)
        return false;
    std::vector<bool> seen(count);
    for (const DWORD from : order) {
        if (from >= count || seen[from])
            return false;
        seen[from] = true;
    }
    const auto reordered = [&](const auto& values) {
        auto moved = values;
        for (std::size_t i = 0; i < values.size(); ++i)
            moved[i] = values[order[i]];
        return moved;
    };
    auto rows = reordered(m_rows);
    auto data = reordered(m_data);
    auto heights = reordered(m_heights);
    m_rows.swap(rows);
    m_data.swap(data);
    m_heights.swap(heights);
    m_sumsValid = false;
    Check();
    return true;
}

// --- heights ---------------------------------------------------------------------------------

void ListBoxRows::SetHeight(int height) { m_height = std::clamp(height, 1, 0xFFFF); }

void ListBoxRows::SetHeightOf(int row, int height) {
    if (m_heights.empty())
        m_heights.assign(m_rows.size(), static_cast<WORD>(m_height));
    const int before = m_heights[Index(row)];
    m_heights[Index(row)] = static_cast<WORD>(std::clamp(height, 1, 0xFFFF));
    if (m_sumsValid)
        for (std::size_t i = Index(row) + 1; i <= m_heights.size(); i += LowestBit(i))
            m_sums[i - 1] += m_heights[Index(row)] - before;
}

void ListBoxRows::EnsureSums() const {
    if (m_sumsValid)
        return;
    m_sums.assign(m_heights.begin(), m_heights.end());
    for (std::size_t i = 1; i <= m_sums.size(); ++i) {
        const std::size_t above = i + LowestBit(i);
        if (above <= m_sums.size())
            m_sums[above - 1] += m_sums[i - 1];
    }
    m_sumsValid = true;
}

/// The heights of the rows before it, which have their own.
std::int64_t ListBoxRows::SumBefore(int row) const {
    EnsureSums();
    std::int64_t top = 0;
    for (std::size_t i = Index(row); i > 0; i -= LowestBit(i))
        top += m_sums[i - 1];
    return top;
}

int ListBoxRows::RowAt(std::int64_t y) const {
    if (y < 0)
        return -1;
    if (m_heights.empty())
        return static_cast<int>(std::min<std::int64_t>(y / m_height, Count()));
    EnsureSums();
    std::size_t row = 0;
    for (std::size_t step = std::bit_floor(m_sums.size()); step > 0; step /= 2)
        if (row + step <= m_sums.size() && m_sums[row + step - 1] <= y) {
            row += step;
            y -= m_sums[row - 1];
        }
    return static_cast<int>(row);
}

std::size_t ListBoxRows::MemoryUse() const noexcept {
    std::size_t bytes =
        (m_rows.capacity() + m_aside.capacity()) * sizeof(Row) +
        m_asideData.capacity() * sizeof(std::uintptr_t) + m_asideHeights.capacity() * sizeof(WORD) +
        m_data.capacity() * sizeof(std::uintptr_t) + m_heights.capacity() * sizeof(WORD) +
        m_sums.capacity() * sizeof(std::int64_t) + m_marked.MemoryUse();
    for (const Chunk& chunk : m_chunks)
        bytes += chunk.size + sizeof(Chunk);
    return bytes;
}

void ListBoxRows::Check() const noexcept {
#ifndef NDEBUG
    std::size_t given = 0;
    for (const Chunk& chunk : m_chunks)
        given += chunk.used;
    assert(m_live + m_garbage <= given);
    assert(m_data.empty() || m_data.size() == m_rows.size());
    assert(m_asideData.empty() || m_asideData.size() == m_aside.size());
    assert(m_asideHeights.empty() || m_asideHeights.size() == m_aside.size());
    assert(m_heights.empty() || m_heights.size() == m_rows.size());
    const auto selected =
        std::count_if(m_rows.begin(), m_rows.end(), [](const Row& row) { return row.selected; });
    assert(selected == m_selected);
    assert(m_noData ? m_rows.empty() : m_count == 0);
    assert(m_marked.Next(m_count) < 0);
#endif
}

} // namespace vnbytstr::detail

// The list box: rows put aside.
#include "src/window/controls/ListBoxControl.h"

#include "vnbytstr/window/AccessibleTable.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

namespace vnbytstr::detail {
namespace {

/// A property of all rows, those put aside last, `fallback` where it has not been set.
template <class T>
std::vector<T> Joined(const std::vector<T>& rows, std::size_t rowCount, const std::vector<T>& aside,
                      std::size_t asideCount, T fallback) {
    std::vector<T> all(rows);
    all.resize(rowCount, fallback);
    all.insert(all.end(), aside.begin(), aside.end());
    all.resize(rowCount + asideCount, fallback);
    return all;
}

/// Whether some of the rows stay in their order and none comes back: what a filter does that
/// becomes narrower.
bool OnlyLeavesOut(std::span<const DWORD> rows, std::size_t count) {
    return (rows.empty() || rows.back() < count) &&
           std::adjacent_find(rows.begin(), rows.end(), std::greater_equal<>()) == rows.end();
}

/// Keeps these of the values, in place, and appends the others to `aside`, which has room for them.
template <class T>
void KeepOnly(std::vector<T>& values, std::span<const DWORD> kept, std::vector<T>& aside) {
    std::size_t next = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (next < kept.size() && kept[next] == i)
            values[next++] = values[i];
        else
            aside.push_back(values[i]);
    }
    values.resize(next);
}

} // namespace

void ListBoxRows::LeaveOut(std::span<const DWORD> kept) {
    const std::size_t out = m_rows.size() - kept.size();
    const std::size_t asideBefore = m_aside.size();
    const auto makeRoom = [&](const auto& shown, auto& aside, auto fallback) {
        if (shown.empty() && aside.empty())
            return;
        aside.reserve(asideBefore + out);
        aside.resize(asideBefore, fallback);
    };
    const bool hasData = !m_data.empty() || !m_asideData.empty();
    const bool hasHeights = !m_heights.empty() || !m_asideHeights.empty();
    if (hasData)
        m_data.resize(m_rows.size());
    if (hasHeights)
        m_heights.resize(m_rows.size(), static_cast<WORD>(m_height));
    m_aside.reserve(asideBefore + out);
    makeRoom(m_data, m_asideData, std::uintptr_t{0});
    makeRoom(m_heights, m_asideHeights, static_cast<WORD>(m_height));
    // Nothing fails from here on.
    KeepOnly(m_rows, kept, m_aside);
    if (hasData)
        KeepOnly(m_data, kept, m_asideData);
    if (hasHeights)
        KeepOnly(m_heights, kept, m_asideHeights);
    for (std::size_t i = asideBefore; m_selected > 0 && i < m_aside.size(); ++i) {
        m_selected -= m_aside[i].selected ? 1 : 0;
        m_aside[i].selected = 0;
    }
    m_sumsValid = false;
    Check();
}

bool ListBoxRows::ShowOnly(std::span<const DWORD> rows) {
    if (m_noData)
        return false;
    const std::size_t count = m_rows.size();
    const std::size_t total = count + m_aside.size();
    if (OnlyLeavesOut(rows, count)) {
        LeaveOut(rows);
        return true;
    }
    std::vector<bool> isShown(total);
    for (const DWORD row : rows) {
        if (row >= total || isShown[row])
            return false;
        isShown[row] = true;
    }
    std::vector<DWORD> rest;
    rest.reserve(total - rows.size());
    for (std::size_t row = count; row < total; ++row)
        if (!isShown[row])
            rest.push_back(static_cast<DWORD>(row));
    for (std::size_t row = 0; row < count; ++row)
        if (!isShown[row])
            rest.push_back(static_cast<DWORD>(row));

    // Everything that needs memory comes first.
    const auto divide = [&](const auto& all, auto& shown, auto& aside) {
        shown.resize(rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i)
            shown[i] = all(rows[i]);
        aside.resize(rest.size());
        for (std::size_t i = 0; i < rest.size(); ++i)
            aside[i] = all(rest[i]);
    };
    const auto divided = [&](auto shown, auto aside, auto fallback) {
        if (!shown.empty() || !aside.empty()) {
            const auto all = Joined(shown, count, aside, total - count, fallback);
            divide([&all](DWORD row) { return all[row]; }, shown, aside);
        }
        return std::pair(std::move(shown), std::move(aside));
    };
    std::vector<Row> shown;
    std::vector<Row> aside;
    divide([&](DWORD row) { return row < count ? m_rows[row] : m_aside[row - count]; }, shown,
           aside);
    auto data = divided(m_data, m_asideData, std::uintptr_t{0});
    auto heights = divided(m_heights, m_asideHeights, static_cast<WORD>(m_height));
    for (Row& row : aside) {
        m_selected -= row.selected ? 1 : 0;
        row.selected = 0;
    }
    m_data.swap(data.first);
    m_asideData.swap(data.second);
    m_heights.swap(heights.first);
    m_asideHeights.swap(heights.second);
    m_rows.swap(shown);
    m_aside.swap(aside);
    m_sumsValid = false;
    Check();
    return true;
}

bool ListBoxControl::ShowOnly(std::span<const DWORD> rows) {
    const auto before = static_cast<DWORD>(m_rows.Count());
    if (!m_rows.ShowOnly(rows))
        return false;
    const auto moved = [&](int row) {
        const auto at = std::find(rows.begin(), rows.end(), static_cast<DWORD>(row));
        return row >= 0 && static_cast<DWORD>(row) < before && at != rows.end()
                   ? static_cast<int>(at - rows.begin())
                   : -1;
    };
    // One that is gone leaves its place to the next.
    const auto movedOrNext = [&](int row) {
        if (m_rows.Count() == 0 || row < 0)
            return -1;
        const auto at = std::find_if(rows.begin(), rows.end(), [&](DWORD from) {
            return from < before && from >= static_cast<DWORD>(row);
        });
        return std::min(static_cast<int>(at - rows.begin()), m_rows.Count() - 1);
    };
    m_current = moved(m_current);
    m_caret = movedOrNext(m_caret);
    m_anchor = movedOrNext(m_anchor);
    m_top = std::max(movedOrNext(m_top), 0);
    m_top = std::min(m_top, LastTop());
    RowsChanged();
    m_top = std::min(m_top, LastTop()); // the scroll bar may have come or gone
    InvalidateFrom(0);
    NotifyAccessibility(m_window.Handle(), AccessibleChange::Rows);
    return true;
}

/// In the order of the rows, then those put aside.
void ListBoxControl::ShowAll() {
    std::vector<DWORD> all(static_cast<std::size_t>(m_rows.Count() + m_rows.AsideCount()));
    std::iota(all.begin(), all.end(), DWORD{0});
    ShowOnly(all);
}

} // namespace vnbytstr::detail

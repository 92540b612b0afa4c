// Invariants of FilterPlaces:
// 1. Both vectors are empty while it is not active.
// 2. Together they hold each number below TotalCount once.
// 3. m_shown ascends.
#include "src/lists/FilterPlaces.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <numeric>

namespace vnbytstr::detail {

void FilterPlaces::Begin(int count) {
    m_isActive = true;
    m_aside.clear();
    m_shown.resize(static_cast<std::size_t>(std::max(count, 0)));
    std::iota(m_shown.begin(), m_shown.end(), DWORD{0});
}

int FilterPlaces::PlaceOf(int row) const {
    return row >= 0 && row < ShownCount() ? static_cast<int>(m_shown[static_cast<std::size_t>(row)])
                                          : -1;
}

int FilterPlaces::RowAt(int place) const {
    const auto wanted = static_cast<DWORD>(place);
    const auto at = std::lower_bound(m_shown.begin(), m_shown.end(), wanted);
    return place >= 0 && at != m_shown.end() && *at == wanted
               ? static_cast<int>(at - m_shown.begin())
               : -1;
}

std::vector<DWORD> FilterPlaces::InOrder() const {
    std::vector<DWORD> rows(static_cast<std::size_t>(TotalCount()));
    DWORD number = 0;
    for (const std::vector<DWORD>* places : {&m_shown, &m_aside})
        for (const DWORD place : *places)
            rows[place] = number++;
    return rows;
}

std::vector<DWORD> FilterPlaces::ShowOnly(std::span<const DWORD> rows, bool wantsRest) {
    const std::size_t count = m_shown.size();
    const std::size_t total = count + m_aside.size();
    if ((rows.empty() || rows.back() < count) &&
        std::adjacent_find(rows.begin(), rows.end(), std::greater_equal<>()) == rows.end())
        return LeaveOut(rows, wantsRest);
    std::vector<bool> isShown(total);
    for (const DWORD row : rows)
        isShown[row] = true;
    std::vector<DWORD> rest;
    rest.reserve(total - rows.size());
    for (std::size_t row = count; row < total; ++row)
        if (!isShown[row])
            rest.push_back(static_cast<DWORD>(row));
    for (std::size_t row = 0; row < count; ++row)
        if (!isShown[row])
            rest.push_back(static_cast<DWORD>(row));
    const auto placesOf = [&](std::span<const DWORD> numbers) {
        std::vector<DWORD> places(numbers.size());
        for (std::size_t i = 0; i < numbers.size(); ++i)
            places[i] = numbers[i] < count ? m_shown[numbers[i]] : m_aside[numbers[i] - count];
        return places;
    };
    auto shown = placesOf(rows);
    auto aside = placesOf(rest);
    m_shown.swap(shown);
    m_aside.swap(aside);
    Check();
    return rest;
}

/// The same when the rows are some of those shown, in their order.
std::vector<DWORD> FilterPlaces::LeaveOut(std::span<const DWORD> rows, bool wantsRest) {
    std::vector<DWORD> rest;
    const auto count = static_cast<DWORD>(m_shown.size());
    if (wantsRest)
        for (std::size_t i = 0; i < m_aside.size(); ++i)
            rest.push_back(count + static_cast<DWORD>(i));
    m_aside.reserve(m_aside.size() + m_shown.size() - rows.size());
    std::size_t next = 0;
    for (DWORD row = 0; row < count; ++row) {
        if (next < rows.size() && rows[next] == row) {
            m_shown[next++] = m_shown[row];
            continue;
        }
        m_aside.push_back(m_shown[row]);
        if (wantsRest)
            rest.push_back(row);
    }
    m_shown.resize(next);
    Check();
    return rest;
}

void FilterPlaces::Appended(int shownCount) {
    while (ShownCount() < shownCount)
        m_shown.push_back(static_cast<DWORD>(TotalCount()));
}

void FilterPlaces::Inserted(int row) {
    if (row < 0 || row >= ShownCount()) {
        Appended(ShownCount() + 1);
        return;
    }
    const DWORD place = m_shown[static_cast<std::size_t>(row)];
    for (std::vector<DWORD>* places : {&m_shown, &m_aside})
        for (DWORD& other : *places)
            other += other >= place ? 1 : 0;
    m_shown.insert(m_shown.begin() + row, place);
    Check();
}

void FilterPlaces::Removed(int row) {
    if (row < 0 || row >= ShownCount())
        return;
    const DWORD place = m_shown[static_cast<std::size_t>(row)];
    m_shown.erase(m_shown.begin() + row);
    for (std::vector<DWORD>* places : {&m_shown, &m_aside})
        for (DWORD& other : *places)
            other -= other > place ? 1 : 0;
    Check();
}

void FilterPlaces::Check() const {
#ifndef NDEBUG
    assert(m_isActive || (m_shown.empty() && m_aside.empty()));
    assert(std::is_sorted(m_shown.begin(), m_shown.end()));
    std::vector<bool> seen(static_cast<std::size_t>(TotalCount()));
    for (const std::vector<DWORD>* places : {&m_shown, &m_aside})
        for (const DWORD place : *places) {
            assert(place < seen.size() && !seen[place]);
            seen[place] = true;
        }
#endif
}

} // namespace vnbytstr::detail

// CRowFilter. Invariants:
// 1. m_entries is in ascending order of columns, each at most once, none with an empty text.
// 2. m_active and m_conditions name the entries whose conditions are valid, in the same order.
#include "vnbytstr/RowFilter.h"

#include "src/lists/CellCondition.h"

#include <algorithm>

using vnbytstr::detail::CellCondition;

/// What was typed for a column.
struct CRowFilter::Entry {
    int column;
    std::string typed;
    bool isNumber;
    std::shared_ptr<const CellCondition> condition;
};

CRowFilter::CRowFilter() = default;
CRowFilter::~CRowFilter() = default;
CRowFilter::CRowFilter(const CRowFilter& other) = default;
CRowFilter& CRowFilter::operator=(const CRowFilter& other) = default;

const CRowFilter::Entry* CRowFilter::Find(int column) const {
    const auto at = std::find_if(m_entries.begin(), m_entries.end(),
                                 [column](const Entry& entry) { return entry.column == column; });
    return at != m_entries.end() ? &*at : nullptr;
}

void CRowFilter::SetCondition(int column, std::string_view typed, bool isNumber) {
    if (column < 0)
        return;
    const std::string text(typed); // may be one of the entries' own
    std::erase_if(m_entries, [column](const Entry& entry) { return entry.column == column; });
    if (!text.empty()) {
        const auto at =
            std::find_if(m_entries.begin(), m_entries.end(),
                         [column](const Entry& entry) { return entry.column > column; });
        m_entries.insert(at, {column, text, isNumber,
                              std::make_shared<const CellCondition>(text, isNumber, m_null)});
    }
    Refresh();
}

void CRowFilter::Refresh() {
    m_active.clear();
    m_conditions.clear();
    for (const Entry& entry : m_entries) {
        if (!entry.condition->IsValid())
            continue;
        m_active.push_back(entry.column);
        m_conditions.push_back(entry.condition);
    }
}

std::string CRowFilter::GetCondition(int column) const {
    const Entry* entry = Find(column);
    return entry != nullptr ? entry->typed : std::string();
}

bool CRowFilter::IsValid(int column) const {
    const Entry* entry = Find(column);
    return entry == nullptr || entry->condition->IsValid();
}

void CRowFilter::Clear() {
    m_entries.clear();
    Refresh();
}

void CRowFilter::SetNullText(std::string_view text) {
    m_null = text;
    for (Entry& entry : m_entries)
        entry.condition =
            std::make_shared<const CellCondition>(entry.typed, entry.isNumber, m_null);
    Refresh();
}

bool CRowFilter::MatchesCell(std::size_t index, std::string_view text) const {
    return m_conditions[index]->Matches(text);
}

bool CRowFilter::MatchesCell(std::size_t index, std::string_view text, bool isNull) const {
    return m_conditions[index]->Matches(text, isNull);
}

bool CRowFilter::AsksForNull(std::size_t index) const { return m_conditions[index]->AsksForNull(); }

bool CRowFilter::Narrows(const CRowFilter& other) const {
    for (std::size_t i = 0; i < other.m_active.size(); ++i) {
        const auto at = std::find(m_active.begin(), m_active.end(), other.m_active[i]);
        if (at == m_active.end() ||
            !m_conditions[static_cast<std::size_t>(at - m_active.begin())]->Narrows(
                *other.m_conditions[i]))
            return false;
    }
    return true;
}

bool CRowFilter::operator==(const CRowFilter& other) const {
    return Narrows(other) && other.Narrows(*this);
}

#include "vnquery/window/ResultDocument.h"

#include "vnquery/window/RowText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <tuple>

namespace vnquery {

namespace {

/// The place of a value in the order of numbers.
struct NumberKey {
    int rank = 0; ///< NULL, number, anything else (also "nan", which has no order among numbers)
    long double number = 0;
    bool operator<(const NumberKey& other) const {
        return std::tie(rank, number) < std::tie(other.rank, other.number);
    }
};

NumberKey KeyOf(const Value& value) {
    if (value.IsNull())
        return {0, 0};
    const std::string_view text = value.GetShort();
    NumberKey key{1, 0};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), key.number);
    if (value.GetStream() || error != std::errc() || end != text.data() + text.size() ||
        std::isnan(key.number))
        return {2, 0};
    return key;
}

bool IsInteger(std::string_view number) {
    return number.find_first_not_of("-0123456789") == std::string_view::npos;
}

} // namespace

void ResultDocument::Begin(ResultShape&& shape, const std::string& sql,
                           const Connection& connection) {
    m_sql = sql;
    m_connection = connection;
    m_isDetached = false;
    m_layout = LoadLayout(sql, shape.columns.size());
    m_result = ResultSet(std::move(shape.columns));
    m_kinds = std::move(shape.kinds);
    m_plan = std::move(shape.plan);
    m_edits.Clear();
    m_rows.clear();
}

std::size_t ResultDocument::ShowNewRows() {
    const std::size_t first = m_rows.size();
    m_rows.resize(m_result.GetRowCount());
    std::iota(m_rows.begin() + static_cast<std::ptrdiff_t>(first), m_rows.end(), first);
    return m_rows.size() - first;
}

std::size_t ResultDocument::ShownColumnOf(std::size_t column) const {
    return static_cast<std::size_t>(std::ranges::find(m_layout.order, column) -
                                    m_layout.order.begin());
}

void ResultDocument::LearnKinds() {
    for (std::size_t column = 0; column < m_kinds.size(); ++column) {
        if (m_kinds[column] != ColumnKind::Unknown)
            continue;
        bool hasValues = false;
        bool isInteger = true;
        bool isNumber = true;
        for (std::size_t row = 0; isNumber && row < m_result.GetRowCount(); ++row) {
            const Value& value = m_result.At(row, column);
            if (value.IsNull())
                continue;
            hasValues = true;
            isNumber = value.GetType() == Value::Type::Number;
            isInteger = isInteger && isNumber && IsInteger(value.GetShort());
        }
        // A column with values of several kinds stays Unknown: it takes what is typed.
        if (hasValues && isNumber)
            m_kinds[column] = isInteger ? ColumnKind::Integer : ColumnKind::Decimal;
    }
}

std::string ResultDocument::GetRowText(std::size_t shownRow) const {
    return DisplayRow(m_result, m_edits, m_rows[shownRow], m_layout.order, m_format);
}

std::string ResultDocument::GetCellText(std::size_t shownRow, std::size_t shownColumn) const {
    return DisplayCell(m_result, m_edits, PlaceOf(shownRow, shownColumn), m_format);
}

const Value& ResultDocument::GetValue(CellPlace place) const {
    const NewValue* edit = m_edits.Find(place);
    return edit ? edit->value : m_result.At(place.first, place.second);
}

ReadOnlyReason ResultDocument::GetReadOnlyReason(CellPlace place) const {
    const ReadOnlyReason reason = GetReadOnlyReason(place.second);
    const bool isLost = !m_plan.rowIdName.empty() && !m_result.GetRowId(place.first);
    return reason == ReadOnlyReason::None && isLost ? ReadOnlyReason::NoKey : reason;
}

std::vector<std::uint32_t> ResultDocument::GetNumberOrder(std::size_t column,
                                                          bool ascending) const {
    std::vector<NumberKey> keys;
    keys.reserve(m_rows.size());
    for (const std::size_t row : m_rows)
        keys.push_back(KeyOf(GetValue({row, column})));
    std::vector<std::uint32_t> order(m_rows.size());
    std::iota(order.begin(), order.end(), 0u);
    std::ranges::stable_sort(
        order, [&](std::uint32_t left, std::uint32_t right) { return keys[left] < keys[right]; });
    if (!ascending)
        std::ranges::reverse(order);
    return order;
}

void ResultDocument::Reorder(const std::vector<std::uint32_t>& order) {
    std::vector<std::size_t> rows;
    rows.reserve(order.size());
    for (const std::uint32_t row : order)
        rows.push_back(m_rows[row]);
    m_rows = std::move(rows);
}

bool ResultDocument::MoveColumn(std::size_t shownColumn, int by) {
    const std::size_t to = shownColumn + static_cast<std::size_t>(by);
    if (shownColumn >= m_layout.order.size() || to >= m_layout.order.size())
        return false;
    std::swap(m_layout.order[shownColumn], m_layout.order[to]);
    return true;
}

} // namespace vnquery

#include "vnquery/document/QueryLayout.h"

#include "vnquery/files/RecentTexts.h"
#include "vnquery/sources/OneTableQuery.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <optional>

namespace vnquery {

namespace {

constexpr int kMaxWidth = 32767;

RecentTexts Layouts() { return {"Queries", 200}; }

template <class Numbers>
std::string Join(const Numbers& numbers) {
    std::string text;
    for (const auto number : numbers)
        text += (text.empty() ? "" : ",") + std::to_string(number);
    return text;
}

/// Takes comma-separated numbers up to and including `end`; nothing when there is anything else.
template <class Number>
std::optional<std::vector<Number>> TakeNumbers(std::string_view& text, char end) {
    std::vector<Number> numbers;
    std::string_view rest = text.substr(0, text.find(end));
    text.remove_prefix(std::min(rest.size() + 1, text.size()));
    while (!rest.empty()) {
        Number number = 0;
        const auto [read, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
        if (error != std::errc())
            return {};
        rest.remove_prefix(static_cast<std::size_t>(read - rest.data()));
        if (!rest.empty() && rest[0] != ',')
            return {};
        rest.remove_prefix(rest.empty() ? 0 : 1);
        numbers.push_back(number);
    }
    return numbers;
}

bool IsPermutation(std::vector<std::size_t> order) {
    std::ranges::sort(order);
    for (std::size_t i = 0; i < order.size(); ++i)
        if (order[i] != i)
            return false;
    return true;
}

/// Takes conditions, each as its column, the length of its text and the text: "2,5,>1990".
bool TakeFilters(std::string_view text, std::size_t columns, QueryLayout& layout) {
    while (!text.empty()) {
        const auto column = TakeNumbers<std::size_t>(text, ',');
        const auto length = TakeNumbers<std::size_t>(text, ',');
        if (!column || column->size() != 1 || column->front() >= columns || !length ||
            length->size() != 1 || length->front() > text.size())
            return false;
        layout.filters[column->front()] = text.substr(0, length->front());
        text.remove_prefix(length->front());
    }
    return true;
}

/// "0,2,1;80,0,120;2,1;1;0;2,5,>1990": order, widths, sort column with 1 for ascending and 2 for
/// descending, hidden columns, frozen ones, filters. The last three may be absent.
std::optional<QueryLayout> Parse(std::string_view text, std::size_t columns) {
    const auto order = TakeNumbers<std::size_t>(text, ';');
    const auto widths = TakeNumbers<int>(text, ';');
    const auto sort = TakeNumbers<std::size_t>(text, ';');
    const auto hidden = TakeNumbers<std::size_t>(text, ';');
    const auto frozen = TakeNumbers<int>(text, ';');
    if (!order || !widths || !sort || !hidden || !frozen || order->size() != columns ||
        widths->size() != columns || sort->size() != 2 || (*sort)[0] >= columns || (*sort)[1] > 2 ||
        !IsPermutation(*order) || frozen->size() > 1)
        return {};
    if (std::ranges::any_of(*widths, [](int width) { return width < 0 || width > kMaxWidth; }))
        return {};
    QueryLayout layout{*order,
                       *widths,
                       (*sort)[0],
                       static_cast<QueryLayout::Sort>((*sort)[1]),
                       {hidden->begin(), hidden->end()},
                       frozen->empty() ? 0 : frozen->front(),
                       {}};
    const bool areShown = layout.hidden.size() < std::max<std::size_t>(columns, 1) &&
                          (layout.hidden.empty() || *layout.hidden.rbegin() < columns);
    if (!areShown || layout.frozen < 0 || layout.frozen > static_cast<int>(columns) ||
        !TakeFilters(text, columns, layout))
        return {};
    return layout;
}

} // namespace

QueryLayout DefaultLayout(std::size_t columns) {
    QueryLayout layout;
    layout.order.resize(columns);
    std::iota(layout.order.begin(), layout.order.end(), std::size_t{0});
    layout.widths.resize(columns);
    return layout;
}

QueryLayout LoadLayout(std::string_view sql, std::size_t columns) {
    return Parse(Layouts().Get(NormaliseSql(sql)), columns).value_or(DefaultLayout(columns));
}

bool SaveLayout(std::string_view sql, const QueryLayout& layout) {
    std::string text = Join(layout.order) + ";" + Join(layout.widths) + ";" +
                       std::to_string(layout.sortColumn) + "," +
                       std::to_string(static_cast<int>(layout.sort)) + ";" + Join(layout.hidden) +
                       ";" + std::to_string(layout.frozen) + ";";
    for (const auto& [column, condition] : layout.filters)
        text += std::to_string(column) + "," + std::to_string(condition.size()) + "," + condition;
    return Layouts().Add(NormaliseSql(sql), text);
}

} // namespace vnquery

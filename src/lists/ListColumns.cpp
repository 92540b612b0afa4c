#include "src/lists/ListColumns.h"

#include "src/lists/RowText.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace vnbytstr::detail {
namespace {

int Limited(std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, INT_MIN, INT_MAX));
}

} // namespace

int RowAt(int y, int topRow, int rowHeight, int rowCount) {
    if (y < 0 || rowHeight <= 0)
        return -1;
    const std::int64_t row = static_cast<std::int64_t>(topRow) + y / rowHeight;
    return row >= 0 && row < rowCount ? static_cast<int>(row) : -1;
}

int MulDiv(int value, int numerator, int denominator) {
    if (denominator == 0)
        return -1;
    std::int64_t product = static_cast<std::int64_t>(value) * numerator;
    std::int64_t divisor = denominator;
    if (divisor < 0) {
        product = -product;
        divisor = -divisor;
    }
    const std::int64_t half = divisor / 2;
    const std::int64_t result = (product < 0 ? product - half : product + half) / divisor;
    return result < INT_MIN || result > INT_MAX ? -1 : static_cast<int>(result);
}

void ComputeWidths(std::span<SListColumn> columns, std::span<const int> percents, int usable) {
    std::int64_t sum = 0;
    int sharers = 0; // deliberately counts the columns of fixed width as well
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const int percent = i < percents.size() ? percents[i] : 0;
        if (columns[i].m_nWidth == 0 && percent != 0)
            columns[i].m_nWidth = std::max(0, MulDiv(usable, percent, 100));
        else
            ++sharers;
        sum += columns[i].m_nWidth;
    }
    if (sharers == 0)
        return;
    const int share = sum > usable ? 50 : Limited((usable - sum) / sharers);
    for (SListColumn& column : columns)
        if (column.m_nWidth == 0)
            column.m_nWidth = share;
}

bool ReadColumnInformation(std::string_view text, int count,
                           const std::function<void(int, std::string_view)>& storeHeading,
                           const std::function<void(int, int)>& storeWidth) {
    for (int column = 0; column < count; ++column) {
        const std::size_t headingEnd = text.find('\n');
        if (headingEnd == std::string_view::npos)
            return false;
        storeHeading(column, text.substr(0, headingEnd));
        text.remove_prefix(headingEnd + 1);
        if (text.empty())
            return false;
        const std::size_t widthEnd = text.find('\n');
        if (widthEnd == std::string_view::npos && column != count - 1)
            return false;
        // strtol, since atoi of a number out of range is undefined.
        const long width = std::strtol(std::string(text.substr(0, widthEnd)).c_str(), nullptr, 10);
        if (width < 1 || width > INT_MAX)
            return false;
        storeWidth(column, static_cast<int>(width));
        text = widthEnd == std::string_view::npos ? std::string_view() : text.substr(widthEnd + 1);
    }
    return true;
}

void LayOutRow(Columns columns, std::string_view row, std::string_view separator, PixelSpan area,
               int offset, const std::function<void(const DrawnCell&)>& draw) {
    CellReader reader(row, separator);
    std::int64_t left = area.left;
    for (std::size_t i = 0; i < columns.size() && left < area.right; ++i) {
        std::string_view value;
        if (reader.Rest().empty() || !reader.Next(value))
            break;
        left += offset;
        std::int64_t width = columns[i].m_nWidth;
        if (left + width > area.right)
            width = area.right - offset - left;
        draw({static_cast<int>(i),
              value,
              {Limited(left), Limited(left + width - columns[i].m_nSpacing)}});
        if (reader.AtEnd())
            break;
        left += width - offset;
    }
}

} // namespace vnbytstr::detail

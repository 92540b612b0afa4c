// Columns for tests of the arithmetic.
#pragma once

#include "vnbytstr/ListColumn.h"

#include <vector>

namespace vnbytstr::test {

inline std::vector<SListColumn> ColumnsOf(const std::vector<int>& widths) {
    std::vector<SListColumn> columns(widths.size());
    for (std::size_t i = 0; i < widths.size(); ++i)
        columns[i].m_nWidth = widths[i];
    return columns;
}

} // namespace vnbytstr::test

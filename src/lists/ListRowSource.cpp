#include "vnbytstr/ListRowSource.h"

#include "src/window/controls/TextMatch.h"
#include "vnbytstr/ListBoxEx.h"

#include <chrono>

using vnbytstr::detail::TextMatch;

CListRowSource::~CListRowSource() {
    while (!m_lists.empty())
        m_lists.back()->SetRowSource(nullptr);
}

ENullAnswer CListRowSource::IsNull(int, int) { return ENullAnswer::ByMarker; }

bool CListRowSource::SetCell(int, int, std::string_view) { return false; }

ESortAnswer CListRowSource::SortRows(int, bool) { return ESortAnswer::NotSorted; }

int CListRowSource::GetSortedRow(int) { return -1; }

SRowSearch CListRowSource::FindRow(int column, std::string_view text, int first, int end) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kLongest{20};
    const Clock::time_point until = Clock::now() + kLongest;
    const TextMatch wanted(text);
    std::string cell;
    for (int row = first; row < end; ++row) {
        cell.clear();
        GetCell(row, column, cell);
        if (wanted.Begins(cell))
            return {row, -1};
        if (Clock::now() >= until)
            return {-1, row + 1};
    }
    return {};
}

bool CListRowSource::FilterRows(const CRowFilter&) { return false; }

bool CListRowSource::TakesFiles(int) { return false; }

short CListRowSource::GetEditSubType(int) { return 1; }

short CListRowSource::GetEditDataType(int) { return 0; }

bool CListRowSource::GetFileName(int, std::string&) { return false; }

void CListRowSource::SetFileName(int, std::string_view) {}

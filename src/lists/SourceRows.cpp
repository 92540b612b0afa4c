// CListBoxEx: rows that a source is asked for.
#include "src/lists/ListColumns.h"
#include "src/lists/ListRows.h"
#include "src/lists/LongText.h"
#include "src/lists/RowText.h"

#include "src/window/controls/TextMatch.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

using namespace vnbytstr::detail;

namespace {

using Clock = std::chrono::steady_clock;

/// A search goes on after other messages when it has taken this long.
constexpr std::chrono::milliseconds kSearchPart{20};
/// DrawItem keeps 2 pixels free at either side of a row.
constexpr int kRowMargin = 2;

} // namespace

int CListBoxEx::SourceRows::Count() const {
    if (m_list.GetSafeHwnd() == nullptr)
        return 0;
    const int shown = std::max(0, static_cast<int>(m_list.SendMessage(LB_GETCOUNT)));
    if (m_filter.isOn)
        return std::min(shown, static_cast<int>(m_filter.told));
    return std::clamp(m_source.GetRowCount(), 0, shown);
}

std::string_view CListBoxEx::SourceRows::Cell(int row, int column, std::string& buffer) const {
    buffer.clear();
    const int asked = UnfilteredRow(row);
    if (asked >= 0 && HasColumn(column))
        m_source.GetCell(asked, column, buffer);
    return buffer;
}

bool CListBoxEx::SourceRows::IsSourceNull(int row, int column, std::string_view text) const {
    const ENullAnswer answer = m_source.IsNull(row, column);
    return answer == ENullAnswer::Yes ||
           (answer == ENullAnswer::ByMarker && Rows::IsNull(row, column, text));
}

bool CListBoxEx::SourceRows::IsNull(int row, int column, std::string_view text) const {
    const int asked = UnfilteredRow(row);
    return asked >= 0 && HasColumn(column) && IsSourceNull(asked, column, text);
}

void CListBoxEx::SourceRows::ForEachCell(int row, const CellUse& use) const {
    std::string buffer;
    for (int column = 0; column < std::max(1, m_list.m_nColumns); ++column)
        use(column, Cell(row, column, buffer));
}

/// Columns out of view are not asked for; their cells are empty.
void CListBoxEx::SourceRows::TextToDraw(int row, std::string& text) const {
    text.clear();
    if (!Has(row))
        return;
    CRect client;
    m_list.GetClientRect(client);
    // Texts begin a little right of their columns and may end right of them.
    const int margin = std::abs(m_list.m_nOffset) + kRowMargin;
    const std::int64_t left = std::int64_t{m_list.GetSideShift()} - margin;
    const std::int64_t right = left + client.Width() + 2 * margin;
    const std::string_view separator = ViewOf(m_list.m_strSeparator);
    const Columns columns = m_list.GetColumns();
    std::string cell;
    const ColumnView view = m_list.GetColumnView();
    if (!view.IsPlain()) {
        const std::vector<PixelSpan> places = view.VisiblePlaces();
        for (int column = 0; column < m_list.m_nColumns; ++column) {
            if (column > 0)
                text.append(separator);
            const PixelSpan place = places[static_cast<std::size_t>(column)];
            if (place.IsEmpty() || place.right <= -margin || place.left >= client.Width() + margin)
                continue;
            const std::size_t from = text.size();
            text.append(Beginning(Cell(row, column, cell), kMaxDrawnBytes));
            CleanCell(text, from, separator);
        }
        return;
    }
    std::int64_t start = 0;
    for (int column = 0; column < std::max(1, m_list.m_nColumns) && start < right; ++column) {
        if (column > 0)
            text.append(separator);
        const std::int64_t end =
            columns.empty() ? right : start + columns[static_cast<std::size_t>(column)].m_nWidth;
        if (end > left && end > start) {
            const std::size_t from = text.size();
            text.append(Beginning(Cell(row, column, cell), kMaxDrawnBytes));
            CleanCell(text, from, separator);
        }
        start = end;
    }
}

/// Of many rows the visible ones and others spread evenly over all of them. Cells in view are
/// measured however long it takes: they are drawn anyway.
void CListBoxEx::SourceRows::ForEachMeasured(int column, Time until, const TextUse& use) const {
    std::string buffer;
    const int count = Count();
    const int top = std::max(0, static_cast<int>(m_list.SendMessage(LB_GETTOPINDEX)));
    CRect client;
    m_list.GetClientRect(client);
    const int height = std::max(1, static_cast<int>(m_list.SendMessage(LB_GETITEMHEIGHT)));
    const int inView = std::min(client.Height() / height + 1, kMaxVisibleRows);
    const PixelSpan place = m_list.GetColumnView().Place(column);
    const bool isSeen =
        place.left < client.Width() && place.right >= client.left && !m_list.IsColumnHidden(column);
    for (int row = top; row < count && row - top < inView; ++row)
        if (isSeen || Clock::now() < until)
            use(Cell(row, column, buffer));
    const int others = std::min(count, kMaxMeasuredRows);
    // In steps over the whole, so that those before `until` are spread, too.
    constexpr int kStep = 619; // a prime that divides no number of rows up to kMaxMeasuredRows
    static_assert(kMaxMeasuredRows < 2 * kStep);
    for (int i = 0; i < others && Clock::now() < until; ++i) {
        const int at = others == kStep ? i : static_cast<int>(std::int64_t{i} * kStep % others);
        const std::int64_t row = others > 1 ? std::int64_t{at} * (count - 1) / (others - 1) : 0;
        use(Cell(static_cast<int>(row), column, buffer));
    }
}

bool CListBoxEx::SourceRows::SetCell(int row, int column, const char* text) {
    CListBoxEx& list = m_list; // this object ends with the list's use of the source
    const Lifeline life(&list);
    // The source may show a message: the editor that loses the focus to it stores nothing.
    const BOOL before = std::exchange(list.m_bCommitting, TRUE);
    const bool stored = m_source.SetCell(UnfilteredRow(row), column, text);
    if (life.Holds())
        list.m_bCommitting = before;
    return stored;
}

LPCTSTR CListBoxEx::SourceRows::FileName(int row) const {
    m_fileName.clear();
    return m_source.GetFileName(UnfilteredRow(row), m_fileName) && !m_fileName.empty()
               ? m_fileName.c_str()
               : nullptr;
}

void CListBoxEx::SourceRows::SetFileName(int row, LPCTSTR name) {
    m_source.SetFileName(UnfilteredRow(row), name != nullptr ? name : "");
}

// --- search by typing ----------------------------------------------------------------------------

void CListBoxEx::SourceRows::FindTyped(const CString& typed) {
    const int current = static_cast<int>(m_list.SendMessage(LB_GETCURSEL));
    m_search.running = true;
    m_search.text = typed;
    m_search.from = current >= 0 && current < Count() - 1 ? current + 1 : 0;
    m_search.next = m_search.from;
    m_search.fromTop = false;
    m_search.caret = static_cast<int>(m_list.SendMessage(LB_GETCARETINDEX));
    ContinueSearch();
}

/// Searches for a while; then goes on when the messages that have come meanwhile are handled.
void CListBoxEx::SourceRows::ContinueSearch() {
    if (!m_search.running || m_search.caret != m_list.SendMessage(LB_GETCARETINDEX)) {
        m_search.running = false;
        return;
    }
    const auto until = Clock::now() + kSearchPart;
    int found = -1;
    do
        found = SearchPart();
    while (m_search.running && Clock::now() < until);
    if (m_search.running)
        m_list.PostMessage(kContinueSearch);
    else if (found >= 0)
        m_list.SelectFound(found);
}

/// Asks the source once. Returns the row when it has found one; ends the search when it has, and
/// when all rows were looked at.
int CListBoxEx::SourceRows::SearchPart() {
    const int count = Count();
    const int end = m_search.fromTop ? std::min(m_search.from, count) : count;
    SRowSearch answer;
    if (m_search.next < end)
        answer = m_filter.isOn ? FindShown(m_search.next, end)
                               : m_source.FindRow(0, ViewOf(m_search.text), m_search.next, end);
    if (Has(answer.m_nFound)) {
        m_search.running = false;
        return answer.m_nFound;
    }
    if (answer.m_nNext > m_search.next && answer.m_nNext < end) {
        m_search.next = answer.m_nNext;
    } else if (!m_search.fromTop) {
        m_search.fromTop = true;
        m_search.next = 0;
    } else {
        m_search.running = false;
    }
    return -1;
}

/// As CListRowSource::FindRow, in the rows that the filter shows.
SRowSearch CListBoxEx::SourceRows::FindShown(int first, int end) const {
    const auto until = Clock::now() + kSearchPart;
    const TextMatch wanted(ViewOf(m_search.text));
    std::string cell;
    for (int row = first; row < end; ++row) {
        if (wanted.Begins(Cell(row, 0, cell)))
            return {row, -1};
        if (Clock::now() >= until)
            return {-1, row + 1};
    }
    return {};
}

// --- sorting -------------------------------------------------------------------------------------

BOOL CListBoxEx::SourceRows::Sort(int column) {
    CListBoxEx& list = m_list; // this object ends with the list's use of the source
    CListRowSource* const source = &m_source;
    if (list.GetSafeHwnd() == nullptr || !HasColumn(column))
        return FALSE;
    const Lifeline life(&list);
    if (list.m_pActiveEditor != nullptr && (!list.CellEnter(TRUE) || !life.Holds()))
        return FALSE; // its row would move
    const bool isColumn = list.IsColumn(column) || (list.m_nColumns == 0 && column == 0);
    if (list.GetRowSource() != source || !isColumn)
        return FALSE; // the parent changed rows or columns when it was asked
    const bool ascending = column != list.m_nSortColumn || list.m_nSortState != kSortedAscending;
    if (source->SortRows(column, ascending) != ESortAnswer::Sorted || !life.Holds() ||
        list.GetRowSource() != source)
        return FALSE;
    list.SourceSorted(column, ascending ? kSortedAscending : kSortedDescending);
    return TRUE;
}

void CListBoxEx::SourceSorted(int column, int state) {
    CListRowSource* const source = GetRowSource();
    if (source == nullptr)
        return;
    const bool isSorted = state == kSortedAscending || state == kSortedDescending;
    m_nSortColumn = isSorted && (IsColumn(column) || column == 0) ? column : -1;
    m_nSortState = m_nSortColumn >= 0 ? state : kNotSorted;
    const Lifeline life(this);
    if (IsFiltering()) {
        static_cast<SourceRows&>(*m_pRows).SourceRowsMoved(
            [source](int row) { return source->GetSortedRow(row); });
        if (!life.Holds())
            return;
        NotifyAccessibility(m_hWnd, AccessibleChange::Sort, -1, m_nSortColumn);
        return;
    }
    RowsChanged();
    if (!life.Holds() || GetRowSource() != source)
        return;
    const auto moved = [&](int row) {
        const int now = IsRow(row) ? source->GetSortedRow(row) : -1;
        return IsRow(now) ? now : -1;
    };
    if (m_pActiveEditor != nullptr && moved(m_nCurRow) < 0) {
        CellCancel();
        if (!life.Holds() || GetRowSource() != source)
            return;
    }
    m_nCurRow = moved(m_nCurRow);
    std::vector<int> selected;
    for (int row = ListBoxNextSelected(m_hWnd, 0); row >= 0;
         row = ListBoxNextSelected(m_hWnd, row + 1)) {
        if (std::ssize(selected) == SourceRows::kMaxFollowed) {
            selected.clear();
            break;
        }
        if (const int now = moved(row); now >= 0)
            selected.push_back(now);
    }
    std::sort(selected.begin(), selected.end());
    const int caret = moved(static_cast<int>(SendMessage(LB_GETCARETINDEX)));
    SendMessage(WM_SETREDRAW, FALSE);
    SendMessage(LB_SETTOPINDEX, 0);
    if (HasManySelected()) {
        SendMessage(LB_SETSEL, FALSE, -1);
        for (const int row : selected)
            SendMessage(LB_SETSEL, TRUE, row);
        if (!selected.empty() || caret >= 0)
            SendMessage(LB_SETCARETINDEX,
                        static_cast<WPARAM>(caret >= 0 ? caret : selected.front()));
    } else {
        SendMessage(LB_SETCURSEL, static_cast<WPARAM>(selected.empty() ? -1 : selected.front()));
    }
    SendMessage(WM_SETREDRAW, TRUE);
    FollowEditedRow();
    RedrawAll();
    NotifyAccessibility(m_hWnd, AccessibleChange::Sort, -1, m_nSortColumn);
    CheckInvariants();
}

#include "src/lists/ListFinder.h"

#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <climits>

using namespace vnbytstr::detail;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kFirstPart{40};
constexpr std::chrono::milliseconds kPart{20};
/// The clock is read once for so many rows.
constexpr int kRowsPerLook = 16;

} // namespace

int CListBoxEx::Finder::ShownColumns() const {
    return m_list.m_nColumns > 0 ? m_list.GetColumnView().Count() : 1;
}

int CListBoxEx::Finder::FocusRow() const {
    const int row = m_list.HasManySelected()
                        ? static_cast<int>(m_list.SendMessage(LB_GETCARETINDEX))
                        : m_list.GetFirstSel();
    return m_list.IsRow(row) ? row : -1;
}

int CListBoxEx::Finder::CurrentColumn() const {
    const bool isThere = m_hitRow >= 0 && m_hitRow == FocusRow() &&
                         (m_list.IsColumn(m_hitColumn) || m_list.m_nColumns == 0);
    return isThere ? m_hitColumn : -1;
}

// --- the way -------------------------------------------------------------------------------------

EFindResult CListBoxEx::Finder::Begin(std::string_view text, unsigned flags) {
    const CellSearch search(text, flags);
    const bool counts = (flags & kFindCount) != 0 && !search.IsEmpty();
    const int firstColumn = (flags & kFindSkipFirst) != 0 ? 1 : 0;
    if (!(search == m_search) || counts != m_counts || firstColumn != m_firstColumn) {
        m_search = search;
        m_firstColumn = firstColumn;
        m_counts = counts;
        RowsReplaced();
    }
    m_list.RedrawAll();
    m_isRunning = false;
    if (m_search.IsEmpty())
        return kFindNone;
    // From the current hit, which stays one while more is typed.
    const int column = CurrentColumn();
    const int position =
        column >= 0 && m_list.m_nColumns > 0 ? m_list.GetColumnView().PositionOf(column) : 0;
    const Cell first{std::max(FocusRow(), 0), std::max(position, 0)};
    return Start(first, first, true);
}

EFindResult CListBoxEx::Finder::Go(bool forward) {
    m_isRunning = false;
    if (m_search.IsEmpty())
        return kFindNone;
    const int row = FocusRow();
    const int column = CurrentColumn();
    const int position = m_list.m_nColumns > 0 ? m_list.GetColumnView().PositionOf(column) : column;
    if (position >= 0) {
        const Cell hit{row, position};
        return Start({row, position + (forward ? 1 : -1)}, hit, forward);
    }
    // The row itself, unless it is passed backwards.
    const Cell first{std::max(row, 0), forward ? 0 : -1};
    return Start(first, {first.row, 0}, forward);
}

EFindResult CListBoxEx::Finder::Start(Cell first, Cell last, bool forward) {
    m_isForward = forward;
    m_hasWrapped = false;
    m_next = first;
    m_last = last;
    m_focus = FocusRow();
    m_isRunning = true;
    return SearchUntil(Clock::now() + kFirstPart);
}

/// Goes on with the cell after the end of a row; false when all have been looked at.
bool CListBoxEx::Finder::NextRow() {
    const int count = m_list.GetCount();
    m_next.row += m_isForward ? 1 : -1;
    if (m_next.row < 0 || m_next.row >= count) {
        if (m_hasWrapped || count == 0)
            return false;
        m_hasWrapped = true;
        m_next.row = m_isForward ? 0 : count - 1;
    }
    m_next.column = m_isForward ? 0 : ShownColumns() - 1;
    return true;
}

/// Beyond the cell where the search ends.
bool CListBoxEx::Finder::IsPast() const {
    if (!m_hasWrapped)
        return false;
    const auto isAfter = [](Cell a, Cell b) {
        return a.row != b.row ? a.row > b.row : a.column > b.column;
    };
    return m_isForward ? isAfter(m_next, m_last) : isAfter(m_last, m_next);
}

bool CListBoxEx::Finder::IsHit(int row, int column) {
    return IsMarked(column, m_list.m_pRows->Cell(row, column, m_buffer));
}

EFindResult CListBoxEx::Finder::SearchUntil(Time until) {
    // The columns stay what they are during a part.
    const int columns = ShownColumns();
    const ColumnView view = m_list.GetColumnView();
    int looked = 0;
    while (true) {
        const bool isIn = m_list.IsRow(m_next.row) && m_next.column >= 0 && m_next.column < columns;
        if (!isIn) {
            if (!NextRow())
                break;
            if (++looked % kRowsPerLook == 0 && Clock::now() >= until) {
                Post();
                return kFindSearching;
            }
        }
        if (IsPast())
            break;
        const int column = m_list.m_nColumns > 0 ? view.ColumnOf(m_next.column) : 0;
        if (IsHit(m_next.row, column)) {
            m_isRunning = false;
            return Show(m_next.row, column);
        }
        m_next.column += m_isForward ? 1 : -1;
    }
    m_isRunning = false;
    return kFindNone;
}

/// Makes a hit the current cell.
EFindResult CListBoxEx::Finder::Show(int row, int column) {
    const EFindResult result = m_hasWrapped ? kFindWrapped : kFindHit;
    CListBoxEx& list = m_list; // this object ends with the list
    const Lifeline life(&list);
    const int before = m_hitRow;
    m_hitRow = row;
    m_hitColumn = column;
    if (list.IsRow(before))
        list.InvalidateRow(before);
    bool changes = false; // the selection
    if ((list.GetStyle() & LBS_MULTIPLESEL) != 0) {
        list.SendMessage(LB_SETCARETINDEX, static_cast<WPARAM>(row));
    } else {
        changes = list.SendMessage(LB_GETSEL, static_cast<WPARAM>(row)) <= 0 ||
                  (list.HasManySelected() && list.SendMessage(LB_GETSELCOUNT) != 1);
        list.SetOnlySel(row);
    }
    if (!life.Holds())
        return result;
    list.InvalidateRow(row);
    if (list.m_bSideScroll && list.IsColumn(column))
        list.ShowColumn(column);
    NotifyAccessibility(list.m_hWnd, AccessibleChange::Focus, row, column);
    if (changes)
        list.NotifySelChange(); // as the last thing: the list may end with it
    return result;
}

void CListBoxEx::Finder::Post() {
    if (!m_isPosted)
        m_isPosted = m_list.PostMessage(kContinueFind) != FALSE;
}

void CListBoxEx::Finder::Continue() {
    m_isPosted = false;
    if (m_isRunning) {
        CListBoxEx& list = m_list;
        const Lifeline life(&list);
        EFindResult result = kFindStopped;
        m_isRunning = m_focus == FocusRow() && list.m_pActiveEditor == nullptr;
        if (m_isRunning)
            result = SearchUntil(Clock::now() + kPart);
        if (!life.Holds() || result == kFindSearching)
            return;
        if (CWnd* parent = list.GetParent(); parent != nullptr)
            parent->PostMessage(VNM_FINDENDED, static_cast<WPARAM>(result));
        if (m_isCounting)
            Post();
    } else if (m_isCounting) {
        CountUntil(Clock::now() + kPart);
    }
}

void CListBoxEx::Finder::End() {
    m_search = CellSearch();
    m_isRunning = false;
    m_counts = m_isCounting = false;
    m_hits = m_hitRow = m_hitColumn = -1;
    m_list.RedrawAll();
}

// --- the number of hits --------------------------------------------------------------------------

void CListBoxEx::Finder::RowsReplaced() {
    m_isCounting = false;
    m_hits = -1;
    m_countNext = 0;
    RowsChanged();
}

void CListBoxEx::Finder::RowsChanged() {
    if (!m_counts)
        return;
    const int count = m_list.GetCount();
    if (m_hits >= 0 && count == m_countNext)
        return;
    if (count < m_countNext || m_hits < 0) {
        m_countNext = 0;
        m_hits = 0;
    }
    m_isCounting = true;
    Post();
}

void CListBoxEx::Finder::CountUntil(Time until) {
    const int count = m_list.GetCount();
    const int columns = ShownColumns();
    const ColumnView view = m_list.GetColumnView();
    while (m_countNext < count) {
        for (int position = 0; position < columns; ++position)
            if (m_hits < INT_MAX &&
                IsHit(m_countNext, m_list.m_nColumns > 0 ? view.ColumnOf(position) : 0))
                ++m_hits;
        if (++m_countNext % kRowsPerLook == 0 && Clock::now() >= until) {
            Post();
            return;
        }
    }
    m_isCounting = false;
    if (CWnd* parent = m_list.GetParent(); parent != nullptr)
        parent->PostMessage(VNM_FINDCOUNTED, static_cast<WPARAM>(m_hits));
}

// CListBoxEx: the filter over the rows of a source. The list keeps the numbers of the rows that
// match, 4 bytes each, and looks for them in parts between messages.
#include "src/lists/ListFinder.h"
#include "src/lists/ListRows.h"

#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <climits>
#include <utility>

using namespace vnbytstr::detail;

namespace {

using Clock = std::chrono::steady_clock;

/// The list looks at rows this long before it handles messages again; at first longer, so that few
/// filters show their result in pieces.
constexpr std::chrono::milliseconds kPart{20};
constexpr std::chrono::milliseconds kFirstPart{40};
/// The clock is read once for so many rows.
constexpr int kRowsPerLook = 16;

} // namespace

int CListBoxEx::SourceRows::UnfilteredCount() const { return std::max(0, m_source.GetRowCount()); }

int CListBoxEx::SourceRows::UnfilteredRow(int row) const {
    if (!m_filter.isOn)
        return Has(row) ? row : -1;
    if (row < 0 || static_cast<std::size_t>(row) >= m_filter.told)
        return -1;
    const auto shown = static_cast<int>(m_filter.shown[static_cast<std::size_t>(row)]);
    return shown < m_source.GetRowCount() ? shown : -1;
}

int CListBoxEx::SourceRows::FilteredRow(int row) const {
    if (!m_filter.isOn)
        return Has(row) ? row : -1;
    const auto end = m_filter.shown.begin() + static_cast<std::ptrdiff_t>(m_filter.told);
    const auto at = std::lower_bound(m_filter.shown.begin(), end, static_cast<DWORD>(row));
    return row >= 0 && at != end && *at == static_cast<DWORD>(row)
               ? static_cast<int>(at - m_filter.shown.begin())
               : -1;
}

/// Numbers of the source's rows, since those of the list are about to change.
void CListBoxEx::SourceRows::RememberSelection() {
    if (m_filter.isRunning && m_filter.isOn) // rows not found again yet are still remembered
        std::erase_if(m_filter.selected, [this](int row) { return FilteredRow(row) >= 0; });
    else
        m_filter.selected.clear();
    for (int row = ListBoxNextSelected(m_list.m_hWnd, 0); row >= 0;
         row = ListBoxNextSelected(m_list.m_hWnd, row + 1)) {
        if (std::ssize(m_filter.selected) >= kMaxFollowed) {
            m_filter.selected.clear();
            break;
        }
        if (const int unfiltered = UnfilteredRow(row); unfiltered >= 0)
            m_filter.selected.push_back(unfiltered);
    }
    std::sort(m_filter.selected.begin(), m_filter.selected.end());
    const int caret = UnfilteredRow(static_cast<int>(m_list.SendMessage(LB_GETCARETINDEX)));
    m_filter.caret = caret >= 0 ? caret : m_filter.caret;
}

void CListBoxEx::SourceRows::ApplyFilter(const CRowFilter& filter) {
    m_search.running = false;
    CListBoxEx& list = m_list;
    CListRowSource* const source = &m_source;
    const Lifeline life(&list);
    const bool isSources = source->FilterRows(filter);
    if (!life.Holds() || list.GetRowSource() != source)
        return;
    RememberSelection();
    if (isSources || filter.IsEmpty()) {
        const bool wasOn = m_filter.isOn;
        const std::vector<int> selected = std::move(m_filter.selected);
        const int caret = m_filter.caret;
        ForgetFilter();
        if (!wasOn && !isSources)
            return;
        list.SendMessage(WM_SETREDRAW, FALSE);
        list.SendMessage(LB_SETCOUNT, static_cast<WPARAM>(UnfilteredCount()));
        if (wasOn) {
            list.SendMessage(LB_SETSEL, FALSE, -1);
            list.SendMessage(LB_SETCURSEL, static_cast<WPARAM>(-1));
            for (const int row : selected)
                SelectAgain(row);
            if (list.HasManySelected() && caret >= 0)
                list.SendMessage(LB_SETCARETINDEX, static_cast<WPARAM>(caret));
        }
        list.SendMessage(WM_SETREDRAW, TRUE);
        return;
    }
    const bool narrows = m_filter.isOn && filter.Narrows(m_filter.wanted);
    if (narrows) {
        // What has matched so far, then what the former filter had not looked at.
        std::vector<DWORD> rest(m_filter.former.begin() +
                                    static_cast<std::ptrdiff_t>(m_filter.nextFormer),
                                m_filter.former.end());
        m_filter.former = std::move(m_filter.shown);
        m_filter.former.insert(m_filter.former.end(), rest.begin(), rest.end());
    } else {
        m_filter.former.clear();
        m_filter.next = 0;
    }
    m_filter.wanted = filter;
    BeginFilter();
}

/// With `wanted`, `former` and `next` set.
void CListBoxEx::SourceRows::BeginFilter() {
    m_filter.isOn = true;
    m_filter.isRunning = true;
    m_filter.shown.clear();
    m_filter.nextFormer = 0;
    m_filter.told = 0;
    LookAtRows(Clock::now() + kFirstPart);
    m_list.SendMessage(WM_SETREDRAW, FALSE);
    m_list.SendMessage(LB_SETCOUNT, 0); // forgets the selection, which follows the rows
    ShowFound();
    m_list.SendMessage(WM_SETREDRAW, TRUE);
}

void CListBoxEx::SourceRows::ContinueFilter() {
    m_filter.isPosted = false;
    if (!m_filter.isOn || !m_filter.isRunning)
        return;
    LookAtRows(Clock::now() + kPart);
    ShowFound();
}

/// Whether one of the source's rows matches what is wanted.
bool CListBoxEx::SourceRows::Matches(int row, std::string& buffer) const {
    const CRowFilter& wanted = m_filter.wanted;
    const std::span<const int> columns = wanted.GetColumns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const int column = columns[i];
        buffer.clear();
        if (HasColumn(column))
            m_source.GetCell(row, column, buffer);
        const bool matches = wanted.AsksForNull(i) && HasColumn(column)
                                 ? wanted.MatchesCell(i, buffer, IsSourceNull(row, column, buffer))
                                 : wanted.MatchesCell(i, buffer);
        if (!matches)
            return false;
    }
    return true;
}

void CListBoxEx::SourceRows::LookAtRows(Time until) {
    std::string cell;
    const auto look = [&](int row) {
        if (Matches(row, cell))
            m_filter.shown.push_back(static_cast<DWORD>(row));
    };
    const int count = UnfilteredCount();
    int looked = 0;
    const auto isTime = [&] { return ++looked % kRowsPerLook == 0 && Clock::now() >= until; };
    while (m_filter.nextFormer < m_filter.former.size()) {
        const auto row = static_cast<int>(m_filter.former[m_filter.nextFormer++]);
        if (row < count)
            look(row);
        if (isTime())
            return;
    }
    while (m_filter.next < count) {
        look(m_filter.next++);
        if (isTime())
            return;
    }
    std::vector<DWORD>().swap(m_filter.former);
    m_filter.nextFormer = 0;
    m_filter.isRunning = false;
}

/// Tells the list box of the rows found since the last time.
void CListBoxEx::SourceRows::ShowFound() {
    const std::size_t before = m_filter.told;
    m_filter.told = m_filter.shown.size();
    m_list.SendMessage(LB_SETCOUNT, static_cast<WPARAM>(m_filter.told));
    for (std::size_t row = before; row < m_filter.told && !m_filter.selected.empty(); ++row)
        if (std::binary_search(m_filter.selected.begin(), m_filter.selected.end(),
                               static_cast<int>(m_filter.shown[row])))
            SelectAgain(static_cast<int>(row));
    if (m_list.HasManySelected() && m_filter.caret >= 0)
        if (const int caret = FilteredRow(m_filter.caret); caret >= static_cast<int>(before))
            m_list.SendMessage(LB_SETCARETINDEX, static_cast<WPARAM>(caret));
    if (m_filter.isRunning && !m_filter.isPosted) {
        m_filter.isPosted = true;
        m_list.PostMessage(kContinueFilter);
    }
    m_list.FilterChanged();
}

void CListBoxEx::SourceRows::SelectAgain(int row) {
    if (m_list.HasManySelected())
        m_list.SendMessage(LB_SETSEL, TRUE, row);
    else
        m_list.SendMessage(LB_SETCURSEL, static_cast<WPARAM>(row));
}

void CListBoxEx::SourceRows::ForgetFilter() {
    const bool isPosted = m_filter.isPosted;
    m_filter = {};
    m_filter.isPosted = isPosted;
}

void CListBoxEx::SourceRows::SourceCountChanged() {
    if (UnfilteredCount() < m_filter.next) {
        SourceRowsMoved([](int row) { return row; }); // any of them may be gone
        return;
    }
    m_filter.isRunning = true;
    ContinueFilter();
}

void CListBoxEx::SourceRows::SourceRowsMoved(const std::function<int(int)>& moved) {
    const bool isEditing = m_list.m_pActiveEditor != nullptr;
    const int edited = isEditing ? UnfilteredRow(m_list.m_nCurRow) : -1;
    RememberSelection();
    for (int& row : m_filter.selected)
        row = moved(row);
    std::erase_if(m_filter.selected, [](int row) { return row < 0; });
    std::sort(m_filter.selected.begin(), m_filter.selected.end());
    if (m_filter.caret >= 0)
        m_filter.caret = moved(m_filter.caret);
    m_filter.former.clear();
    m_filter.next = 0;
    if (m_list.m_pFinder != nullptr)
        m_list.m_pFinder->RowsReplaced();
    BeginFilter();
    m_list.m_nCurRow = edited >= 0 ? FilteredRow(moved(edited)) : -1;
    if (isEditing && m_list.m_nCurRow >= 0)
        m_list.FollowEditedRow();
    else
        m_list.CellCancel(); // as the last thing: the list may end with it
}

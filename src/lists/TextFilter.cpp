// CListBoxEx: the filter over rows that are texts of the list box. The list box keeps the rows that
// match and puts the others aside, with what belongs to them in the arrays of AsideData.
#include "src/lists/ListRows.h"
#include "src/lists/RowText.h"

#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <numeric>

using namespace vnbytstr::detail;

namespace {

/// Texts are got for so many rows at a time.
constexpr std::size_t kRowsPerPiece = 4096;

/// Divides one of the arrays of per-row data as the rows were divided: `shown` and `rest` are the
/// numbers of the rows from before, of which `count` were shown.
template <class Array, class Value>
void Divide(Array& array, Array& aside, int count, std::span<const DWORD> shown,
            std::span<const DWORD> rest, Value fallback) {
    if (array.IsEmpty() && aside.IsEmpty())
        return;
    const auto valueOf = [&](DWORD number) -> Value {
        const int row = static_cast<int>(number);
        const Array& from = row < count ? array : aside;
        const int index = row < count ? row : row - count;
        return index < from.GetSize() ? Value(from[index]) : fallback;
    };
    const auto collect = [&](std::span<const DWORD> numbers, Array& result) {
        result.SetSize(static_cast<int>(numbers.size()));
        for (std::size_t i = 0; i < numbers.size(); ++i)
            result[static_cast<int>(i)] = valueOf(numbers[i]);
    };
    Array newShown;
    Array newAside;
    collect(shown, newShown);
    collect(rest, newAside);
    array.Swap(newShown);
    aside.Swap(newAside);
}

} // namespace

void CListBoxEx::TextRows::ShowOnly(std::span<const DWORD> rows) {
    const int count = Count();
    if (!ListBoxShowOnly(m_list.m_hWnd, rows))
        return;
    const bool hasData = !m_list.m_DragDrop.IsEmpty() || !m_list.m_EditSubTypes.IsEmpty() ||
                         !m_list.m_EditDataTypes.IsEmpty() || !m_list.m_FileNames.IsEmpty() ||
                         !m_aside.IsEmpty();
    const std::vector<DWORD> rest = m_places.ShowOnly(rows, hasData);
    if (!hasData && m_list.m_nCurRow < 0)
        return;
    Divide(m_list.m_DragDrop, m_aside.dragDrop, count, rows, rest, BYTE{0});
    Divide(m_list.m_EditSubTypes, m_aside.subTypes, count, rows, rest, BYTE{1});
    Divide(m_list.m_EditDataTypes, m_aside.dataTypes, count, rows, rest, WORD{0});
    Divide(m_list.m_FileNames, m_aside.fileNames, count, rows, rest, CString());
    if (m_list.m_nCurRow >= 0) {
        const auto at = std::find(rows.begin(), rows.end(), static_cast<DWORD>(m_list.m_nCurRow));
        m_list.m_nCurRow = at != rows.end() ? static_cast<int>(at - rows.begin()) : -1;
    }
}

void CListBoxEx::TextRows::ApplyFilter(const CRowFilter& filter) {
    if (m_list.GetSafeHwnd() == nullptr)
        return;
    if (filter.IsEmpty()) {
        LiftFilter();
        return;
    }
    m_places.Appended(m_places.IsActive() ? Count() : 0);
    const bool narrows = m_places.IsActive() && filter.Narrows(m_applied);
    const bool begins = !m_places.IsActive();
    if (begins)
        m_places.Begin(Count());
    m_applied = filter;
    std::vector<DWORD> rows;
    if (narrows || begins) {
        rows.resize(static_cast<std::size_t>(Count()));
        std::iota(rows.begin(), rows.end(), DWORD{0});
    } else {
        rows = m_places.InOrder();
    }
    rows.resize(Matching(filter, rows));
    ShowOnly(rows);
}

/// Moves the numbers of the rows that match to the front, in their order; returns how many.
std::size_t CListBoxEx::TextRows::Matching(const CRowFilter& filter, std::span<DWORD> rows) const {
    const std::string_view separator =
        m_list.m_nColumns > 0 ? ViewOf(m_list.m_strSeparator) : std::string_view();
    std::vector<std::string_view> texts(std::min(rows.size(), kRowsPerPiece));
    std::size_t count = 0;
    for (std::size_t first = 0; first < rows.size(); first += kRowsPerPiece) {
        const auto piece = rows.subspan(first, std::min(kRowsPerPiece, rows.size() - first));
        const auto pieceTexts = std::span(texts).first(piece.size());
        if (!ListBoxRowTexts(m_list.m_hWnd, piece, pieceTexts))
            break;
        for (std::size_t i = 0; i < piece.size(); ++i) {
            const std::string_view text = pieceTexts[i];
            // Without a branch: whether a row matches cannot be predicted.
            rows[count] = piece[i];
            count += filter.Matches([&](int column) { return CellText(text, separator, column); })
                         ? 1
                         : 0;
        }
    }
    return count;
}

void CListBoxEx::TextRows::LiftFilter() {
    if (!m_places.IsActive())
        return;
    m_places.Appended(Count());
    ShowOnly(m_places.InOrder());
    ForgetFilter();
}

void CListBoxEx::TextRows::ForgetFilter() {
    m_places.End();
    m_applied.Clear();
    m_aside.Clear();
}

void CListBoxEx::TextRows::RowInserted(int row) {
    if (!m_places.IsActive())
        return;
    m_places.Appended(Count() - 1); // rows added before, of which the list was not told
    m_places.Inserted(row);
}

void CListBoxEx::TextRows::RowRemoved(int row) {
    if (!m_places.IsActive())
        return;
    m_places.Appended(Count() + 1);
    m_places.Removed(row);
}

int CListBoxEx::TextRows::UnfilteredCount() const {
    return m_places.IsActive() ? m_places.TotalCount() + Count() - m_places.ShownCount() : Count();
}

int CListBoxEx::TextRows::UnfilteredRow(int row) const {
    if (row < 0 || row >= Count())
        return -1;
    if (!m_places.IsActive())
        return row;
    const int added = row - m_places.ShownCount();
    return added >= 0 ? m_places.TotalCount() + added : m_places.PlaceOf(row);
}

int CListBoxEx::TextRows::FilteredRow(int row) const {
    if (row < 0 || row >= UnfilteredCount())
        return -1;
    if (!m_places.IsActive())
        return row;
    const int added = row - m_places.TotalCount();
    return added >= 0 ? m_places.ShownCount() + added : m_places.RowAt(row);
}

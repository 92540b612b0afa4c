// CListBoxEx: rows that are texts of the list box.
#include "src/lists/ListRows.h"
#include "src/lists/LongText.h"
#include "src/lists/RowText.h"

#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

using namespace vnbytstr::detail;

namespace {

/// Sets an element; an array that is too short is filled up to it with `fallback`.
template <class Array, class Value>
void SetGrowing(Array& array, int row, Value value, Value fallback) {
    while (array.GetSize() < row)
        array.Add(fallback);
    array.SetAtGrow(row, value);
}

} // namespace

bool CListBoxEx::Rows::IsNull(int, int, std::string_view text) const {
    return !m_list.m_strNull.IsEmpty() && text == ViewOf(m_list.m_strNull);
}

int CListBoxEx::TextRows::Count() const {
    if (m_list.GetSafeHwnd() == nullptr)
        return 0;
    return std::max(0, static_cast<int>(m_list.SendMessage(LB_GETCOUNT)));
}

std::string_view CListBoxEx::TextRows::Text(int row) const {
    int length = 0;
    const char* text =
        m_list.GetSafeHwnd() != nullptr ? ListBoxRowText(m_list.m_hWnd, row, &length) : nullptr;
    return text != nullptr ? std::string_view(text, static_cast<std::size_t>(length))
                           : std::string_view();
}

std::string_view CListBoxEx::TextRows::CellOf(int row, int column) const {
    const std::string_view text = Text(row);
    if (m_list.m_nColumns == 0)
        return column == 0 ? text : std::string_view();
    return CellText(text, ViewOf(m_list.m_strSeparator), column);
}

std::string_view CListBoxEx::TextRows::Cell(int row, int column, std::string&) const {
    return CellOf(row, column);
}

void CListBoxEx::TextRows::ForEachCell(int row, const CellUse& use) const {
    const int columns = m_list.m_nColumns;
    CellReader reader(Text(row), columns > 0 ? ViewOf(m_list.m_strSeparator) : std::string_view());
    for (int column = 0; column < std::max(1, columns); ++column) {
        std::string_view value;
        if (!reader.Next(value))
            value = {};
        use(column, value);
    }
}

void CListBoxEx::TextRows::TextToDraw(int row, std::string& shown) const {
    const std::string_view text = Text(row);
    if (text.size() <= kLongRow) {
        shown.assign(text);
        return;
    }
    const int columns = m_list.m_nColumns;
    CellReader reader(text, columns > 0 ? ViewOf(m_list.m_strSeparator) : std::string_view());
    shown.clear();
    std::string_view value;
    for (int column = 0; column < std::max(1, columns) && reader.Next(value); ++column) {
        if (column > 0)
            shown.append(ViewOf(m_list.m_strSeparator));
        shown.append(Beginning(value, kMaxDrawnBytes));
    }
}

/// The `count` rows with the longest values of a column, in bytes; the first ones of equal length.
std::vector<int> CListBoxEx::TextRows::LongestValues(int column, int count) const {
    std::vector<std::pair<std::size_t, int>> lengths(static_cast<std::size_t>(Count()));
    for (std::size_t row = 0; row < lengths.size(); ++row)
        lengths[row] = {CellOf(static_cast<int>(row), column).size(), -static_cast<int>(row)};
    const auto end = lengths.begin() + std::min<std::ptrdiff_t>(count, std::ssize(lengths));
    std::nth_element(lengths.begin(), end, lengths.end(), std::greater<>());
    std::vector<int> rows;
    for (auto at = lengths.begin(); at != end; ++at)
        rows.push_back(-at->second);
    return rows;
}

void CListBoxEx::TextRows::ForEachMeasured(int column, Time, const TextUse& use) const {
    const int count = Count();
    if (count <= kMaxMeasuredRows) {
        for (int row = 0; row < count; ++row)
            use(CellOf(row, column));
        return;
    }
    const int top = static_cast<int>(m_list.SendMessage(LB_GETTOPINDEX));
    for (int row = top; row < std::min(count, top + kMaxVisibleRows); ++row)
        use(CellOf(row, column));
    for (const int row : LongestValues(column, kMaxMeasuredRows))
        use(CellOf(row, column));
}

bool CListBoxEx::TextRows::SetCell(int row, int column, const char* text) {
    const std::string updated =
        m_list.m_nColumns == 0
            ? std::string(text)
            : ReplaceCell(Text(row), ViewOf(m_list.m_strSeparator), column, text);
    return ListBoxSetRowText(m_list.m_hWnd, row, updated.c_str()) != FALSE;
}

void CListBoxEx::TextRows::FindTyped(const CString& typed) {
    const LRESULT found =
        m_list.SendMessage(LB_FINDSTRING, static_cast<WPARAM>(m_list.SendMessage(LB_GETCURSEL)),
                           reinterpret_cast<LPARAM>(static_cast<const char*>(typed)));
    if (found >= 0)
        m_list.SelectFound(static_cast<int>(found));
}

BOOL CListBoxEx::TextRows::Sort(int column) {
    const std::unique_ptr<SSortItem[]> items(m_list.SortForOrder(column));
    return items != nullptr;
}

// --- what belongs to a row -----------------------------------------------------------------------

BOOL CListBoxEx::TextRows::TakesFiles(int row) const {
    return row < m_list.m_DragDrop.GetSize() && m_list.m_DragDrop[row] == 1;
}

void CListBoxEx::TextRows::SetTakesFiles(int row, BOOL on) {
    SetGrowing(m_list.m_DragDrop, row, static_cast<BYTE>(on ? 1 : 0), BYTE{0});
}

short CListBoxEx::TextRows::SubType(int row) const {
    return row < m_list.m_EditSubTypes.GetSize() ? m_list.m_EditSubTypes[row] : short{1};
}

void CListBoxEx::TextRows::SetSubType(int row, short type) {
    SetGrowing(m_list.m_EditSubTypes, row, static_cast<BYTE>(type), BYTE{1});
}

short CListBoxEx::TextRows::DataType(int row) const {
    return row < m_list.m_EditDataTypes.GetSize() ? static_cast<short>(m_list.m_EditDataTypes[row])
                                                  : short{0};
}

void CListBoxEx::TextRows::SetDataType(int row, short type) {
    SetGrowing(m_list.m_EditDataTypes, row, static_cast<WORD>(type), WORD{0});
}

LPCTSTR CListBoxEx::TextRows::FileName(int row) const {
    const CStringArray& names = m_list.m_FileNames;
    return row < names.GetSize() && !names[row].IsEmpty() ? static_cast<LPCTSTR>(names[row])
                                                          : nullptr;
}

void CListBoxEx::TextRows::SetFileName(int row, LPCTSTR name) {
    if (row >= m_list.m_FileNames.GetSize())
        m_list.m_FileNames.SetSize(row + 10);
    m_list.m_FileNames[row] = name;
}

// Shared by the sources of CListBoxEx.
#pragma once

#include "src/lists/ColumnView.h"
#include "vnbytstr/ListBoxEx.h"

#include <string_view>

namespace vnbytstr::detail {

/// Control ids of a cell editor's windows; they are children of the list.
inline constexpr UINT kCellEditorId = 1;
inline constexpr UINT kBrowseButtonId = 2;
inline constexpr UINT kSpinnerId = 3;

/// Posted by the list to itself when a value was refused because the focus was leaving: the editor
/// gets the focus back. List boxes have no messages with numbers as high as this.
inline constexpr UINT kRefocusEditor = WM_USER + 0x100;
/// Posted by the list to itself while it searches for what was typed.
inline constexpr UINT kContinueSearch = WM_USER + 0x101;
/// Posted by the list to itself when it finds that its source has fewer rows than it shows.
inline constexpr UINT kRowsGone = WM_USER + 0x102;
/// Posted by the list to itself while it looks for the rows of a source that its filter shows.
inline constexpr UINT kContinueFilter = WM_USER + 0x103;
/// Posted by the list to itself when rows have been added that its filter has not seen.
inline constexpr UINT kApplyFilter = WM_USER + 0x104;
/// Posted by the list to itself while it looks for a text.
inline constexpr UINT kContinueFind = WM_USER + 0x105;

/// The characters of a string, without copying.
inline std::string_view ViewOf(const CString& text) {
    return {static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength())};
}
/// A copy as a CString.
inline CString StringOf(std::string_view text) {
    return {text.data(), static_cast<int>(text.size())};
}

} // namespace vnbytstr::detail

/// Tells whether the list still exists after a message to the parent, which may have destroyed it.
/// Lives on the stack.
class CListBoxEx::Lifeline {
public:
    explicit Lifeline(CListBoxEx* list) : m_pList(list), m_pOuter(list->m_pLifeline) {
        list->m_pLifeline = this;
    }
    ~Lifeline() {
        if (m_pList != nullptr)
            m_pList->m_pLifeline = m_pOuter;
    }
    Lifeline(const Lifeline&) = delete;
    Lifeline& operator=(const Lifeline&) = delete;

    /// The object has not been deleted.
    bool Exists() const { return m_pList != nullptr; }
    /// Neither the object nor its window has been destroyed.
    bool Holds() const { return m_pList != nullptr && m_pList->GetSafeHwnd() != nullptr; }

private:
    friend class CListBoxEx;
    CListBoxEx* m_pList;
    Lifeline* m_pOuter;
};

/// Where a cell is in the client area, and what kind of editor it gets.
struct CListBoxEx::CellPlace {
    CRect m_rect;
    int m_nType = kEditorNone; ///< takes the row's subtype into account
};

/// The row that is being drawn; lives on the stack of DrawItem.
struct CListBoxEx::DrawnRow {
    int m_row = -1;
    COLORREF m_background = 0;
    COLORREF m_text = 0;
    bool m_greyNulls = false;
};

/// What screen readers see: rows, columns, column headers, texts as displayed.
class CListBoxEx::Accessible : public CAccessibleTable {
public:
    explicit Accessible(CListBoxEx& list) : m_list(list) {}

    int GetAccessibleRowCount() const override;
    int GetAccessibleColumnCount() const override;
    CString GetAccessibleCellText(int row, int column) const override;
    CString GetAccessibleHeading(int column) const override;
    CString GetAccessibleCellDescription(int row, int column) const override;
    int GetAccessibleRowHeaderColumn() const override;
    Sort GetAccessibleSort(int column) const override;
    CString GetAccessibleSortText(Sort sort) const override;
    bool IsAccessibleRowSelected(int row) const override;
    bool SelectAccessibleRow(int row, bool on) override;
    int GetAccessibleFocusRow() const override;
    int GetAccessibleFocusColumn() const override;
    CRect GetAccessibleCellRect(int row, int column) const override;
    CRect GetAccessibleHeadingRect(int column) const override;
    bool IsAccessibleCellEditable(int row, int column) const override;

private:
    CListBoxEx& m_list;
};

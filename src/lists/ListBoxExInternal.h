// What the sources of CListBoxEx share.
#pragma once

#include "vnbytstr/ListBoxEx.h"

#include <string_view>

namespace vnbytstr::detail {

/// Control ids of a cell editor's windows; they are children of the list.
inline constexpr UINT kCellEditorId = 1;
inline constexpr UINT kBrowseButtonId = 2;
inline constexpr UINT kSpinnerId = 3;

/// Posted by the list to itself: the value was refused while the focus was leaving, the editor gets
/// it back. A list box knows no messages of its own from here on.
inline constexpr UINT kRefocusEditor = WM_USER + 0x100;

inline std::string_view ViewOf(const CString& text) {
    return {static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength())};
}
inline CString StringOf(std::string_view text) {
    return {text.data(), static_cast<int>(text.size())};
}

} // namespace vnbytstr::detail

/// Tells whether the list still stands after the parent, which may have destroyed it, was asked.
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

    bool Exists() const { return m_pList != nullptr; }
    /// The object is there, and so is its window.
    bool Holds() const { return m_pList != nullptr && m_pList->GetSafeHwnd() != nullptr; }

private:
    friend class CListBoxEx;
    CListBoxEx* m_pList;
    Lifeline* m_pOuter;
};

/// Where a cell lies in the client area, and what is edited there.
struct CListBoxEx::CellPlace {
    CRect m_rect;
    int m_nType = kEditorNone; ///< after the row's subtype has been looked at
};

/// What screen readers see: rows, columns, headings, texts as displayed.
class CListBoxEx::Accessible : public CAccessibleTable {
public:
    explicit Accessible(CListBoxEx& list) : m_list(list) {}

    int GetAccessibleRowCount() const override;
    int GetAccessibleColumnCount() const override;
    CString GetAccessibleCellText(int row, int column) const override;
    CString GetAccessibleHeading(int column) const override;
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

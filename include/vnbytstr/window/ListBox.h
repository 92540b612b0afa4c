// CListBox, the system's list box.
//
// All of it also goes by LB_ messages, to a window of the class "LISTBOX". Rows count from 0.
// LB_ERR (-1) answers a row that is not there, and what the list's style does not allow. A row's
// text may hold any bytes but NUL. A list box with LBS_SORT is kept in the order of the system's
// collation (ignoring case, kana type and width).
#pragma once

#include "vnbytstr/window/Wnd.h"

#include <span>

class VNBYTSTR_API CListBox : public CWnd {
    DECLARE_DYNAMIC(CListBox)
public:
    CListBox() = default;
    /// A child window of class "LISTBOX".
    virtual BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
    using CWnd::Create;

    int GetCount() const;
    int GetTopIndex() const;
    int SetTopIndex(int row);
    std::uintptr_t GetItemData(int row) const; ///< LB_ERR for a row that is not there
    int SetItemData(int row, std::uintptr_t data);
    int GetItemRect(int row, LPRECT rect) const;
    int SetItemHeight(int row, UINT height);
    int GetItemHeight(int row) const;
    int GetSel(int row) const;                  ///< above 0: selected
    int GetText(int row, LPTSTR buffer) const;  ///< the buffer needs GetTextLen + 1 bytes
    void GetText(int row, CString& text) const; ///< empty for a row that is not there
    int GetTextLen(int row) const;
    UINT ItemFromPoint(CPoint point, BOOL& outside) const; ///< the nearest row

    int GetCurSel() const; ///< single selection: -1 for none
    int SetCurSel(int row);
    int SetSel(int row, BOOL select = TRUE); ///< row -1: all rows
    int GetSelCount() const;
    int GetSelItems(int count, int* rows) const;
    int SelItemRange(BOOL select, int first, int last);
    int GetCaretIndex() const;

    int AddString(LPCTSTR text);
    int InsertString(int row, LPCTSTR text); ///< -1: at the end; not sorted in
    int DeleteString(UINT row);
    void ResetContent();
    int FindString(int after, LPCTSTR beginning) const;
    int FindStringExact(int after, LPCTSTR text) const;
    int SelectString(int after, LPCTSTR beginning);
    int InitStorage(int rows, UINT bytes);

    /// Draw and measure a row of an owner-draw list box; the base does nothing.
    virtual void DrawItem(LPDRAWITEMSTRUCT item);
    virtual void MeasureItem(LPMEASUREITEMSTRUCT item);

protected:
    BOOL OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) override;
};

// --- beyond messages, for lists of many rows ---------------------------------------------------
// `list` is a window of class "LISTBOX" (CListBoxEx's own window, say); any other is refused.

/// A row's text without copying; null when it is not there. Good until the rows change.
VNBYTSTR_API LPCSTR ListBoxRowText(HWND list, int row, int* length = nullptr);
/// Adds rows at the end (an LBS_SORT list sorts them in), as that many LB_ADDSTRING. `texts` holds
/// the rows' texts, each with its NUL, one after the other. Returns the index of the first new row,
/// LB_ERRSPACE when memory ran out (nothing was added).
VNBYTSTR_API int ListBoxAddRows(HWND list, LPCSTR texts, std::size_t bytes, int count);
/// Puts the rows in a new order: the row that stood at order[i] comes to i. Text, data, height and
/// selection go along; caret and current row stay with their row; the view stays where it is. FALSE
/// when `order` is no permutation of the rows (nothing changed).
VNBYTSTR_API BOOL ListBoxReorder(HWND list, std::span<const DWORD> order);
/// How many pixels a list that scrolls sideways (WS_HSCROLL, LB_SETHORIZONTALEXTENT) hides at its
/// left; 0 for any other window. In a mirrored list: at its right.
VNBYTSTR_API int ListBoxSideShift(HWND list);
/// Scrolls it sideways, as far as there is something to see.
VNBYTSTR_API void ListBoxSetSideShift(HWND list, int pixels);
/// Replaces a row's text in place; data, selection and place stay (an LBS_SORT list too).
VNBYTSTR_API BOOL ListBoxSetRowText(HWND list, int row, LPCSTR text);

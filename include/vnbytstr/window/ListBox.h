// CListBox, the system's list box.
//
// All of it also goes by LB_ messages, to a window of the class "LISTBOX". Rows count from 0.
// LB_ERR (-1) answers a row that is not there, and what the list's style does not allow. A row's
// text may hold any bytes but NUL. A list box with LBS_SORT is kept in the order of the system's
// collation (ignoring case, kana type and width).
//
// An owner-draw list box with LBS_NODATA, and without LBS_HASSTRINGS and LBS_SORT (with either of
// them LBS_NODATA is ignored), has a number of rows, set by LB_SETCOUNT, and their selection: no
// texts and no data. Its rows are drawn by number. A row costs no memory but, once rows have been
// selected, at most a bit. LB_SETCOUNT keeps selection, caret and top row as far as their rows stay
// and takes no longer for many rows than for few; there may be 2^31 - 1. Adding and inserting
// ignore the text or data given; finding and setting data answer LB_ERR, and item data reads as 0.
// With LBS_OWNERDRAWVARIABLE all rows are as high as the first, which is measured when rows come to
// the empty list. WM_DELETEITEM is not sent.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

#include <span>
#include <string_view>

// --- messages, answers, notifications and styles -------------------------------------------------
inline constexpr UINT LB_ADDSTRING = 0x0180;
inline constexpr UINT LB_INSERTSTRING = 0x0181;
inline constexpr UINT LB_DELETESTRING = 0x0182;
inline constexpr UINT LB_SELITEMRANGEEX = 0x0183;
inline constexpr UINT LB_RESETCONTENT = 0x0184;
inline constexpr UINT LB_SETSEL = 0x0185;
inline constexpr UINT LB_SETCURSEL = 0x0186;
inline constexpr UINT LB_GETSEL = 0x0187;
inline constexpr UINT LB_GETCURSEL = 0x0188;
inline constexpr UINT LB_GETTEXT = 0x0189;
inline constexpr UINT LB_GETTEXTLEN = 0x018A;
inline constexpr UINT LB_GETCOUNT = 0x018B;
inline constexpr UINT LB_SELECTSTRING = 0x018C;
inline constexpr UINT LB_GETTOPINDEX = 0x018E;
inline constexpr UINT LB_FINDSTRING = 0x018F;
inline constexpr UINT LB_GETSELCOUNT = 0x0190;
inline constexpr UINT LB_GETSELITEMS = 0x0191;
inline constexpr UINT LB_SETTABSTOPS = 0x0192;
inline constexpr UINT LB_GETHORIZONTALEXTENT = 0x0193;
inline constexpr UINT LB_SETHORIZONTALEXTENT = 0x0194;
inline constexpr UINT LB_SETTOPINDEX = 0x0197;
inline constexpr UINT LB_GETITEMRECT = 0x0198;
inline constexpr UINT LB_GETITEMDATA = 0x0199;
inline constexpr UINT LB_SETITEMDATA = 0x019A;
inline constexpr UINT LB_SELITEMRANGE = 0x019B;
inline constexpr UINT LB_SETANCHORINDEX = 0x019C;
inline constexpr UINT LB_GETANCHORINDEX = 0x019D;
inline constexpr UINT LB_SETCARETINDEX = 0x019E;
inline constexpr UINT LB_GETCARETINDEX = 0x019F;
inline constexpr UINT LB_SETITEMHEIGHT = 0x01A0;
inline constexpr UINT LB_GETITEMHEIGHT = 0x01A1;
inline constexpr UINT LB_FINDSTRINGEXACT = 0x01A2;
inline constexpr UINT LB_SETLOCALE = 0x01A5;
inline constexpr UINT LB_GETLOCALE = 0x01A6;
inline constexpr UINT LB_SETCOUNT = 0x01A7;
inline constexpr UINT LB_INITSTORAGE = 0x01A8;
inline constexpr UINT LB_ITEMFROMPOINT = 0x01A9;
inline constexpr int LB_OKAY = 0;
inline constexpr int LB_ERR = -1;
inline constexpr int LB_ERRSPACE = -2;
inline constexpr int LBN_ERRSPACE = -2;
inline constexpr int LBN_SELCHANGE = 1;
inline constexpr int LBN_DBLCLK = 2;
inline constexpr int LBN_SETFOCUS = 4;
inline constexpr int LBN_KILLFOCUS = 5;
inline constexpr DWORD LBS_NOTIFY = 0x0001;
inline constexpr DWORD LBS_SORT = 0x0002;
inline constexpr DWORD LBS_MULTIPLESEL = 0x0008;
inline constexpr DWORD LBS_OWNERDRAWFIXED = 0x0010;
inline constexpr DWORD LBS_OWNERDRAWVARIABLE = 0x0020;
inline constexpr DWORD LBS_HASSTRINGS = 0x0040;
inline constexpr DWORD LBS_NOINTEGRALHEIGHT = 0x0100;
inline constexpr DWORD LBS_WANTKEYBOARDINPUT = 0x0400;
inline constexpr DWORD LBS_EXTENDEDSEL = 0x0800;
inline constexpr DWORD LBS_DISABLENOSCROLL = 0x1000;
inline constexpr DWORD LBS_NODATA = 0x2000;
inline constexpr DWORD LBS_NOSEL = 0x4000;

class VNBYTSTR_CONTROLS_API CListBox : public CWnd {
    DECLARE_DYNAMIC(CListBox)
public:
    CListBox() = default;
    /// A child window of class "LISTBOX".
    virtual BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
    using CWnd::Create;

    /// Rows: how many there are, the first in view, data, place and height.
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
    /// Bytes of the text, without a NUL; LB_ERR for a row that is not there.
    int GetTextLen(int row) const;
    UINT ItemFromPoint(CPoint point, BOOL& outside) const; ///< the nearest row

    int GetCurSel() const; ///< single selection: -1 when no row is selected
    /// Selects a row and scrolls to it; -1: none.
    int SetCurSel(int row);
    int SetSel(int row, BOOL select = TRUE); ///< row -1: all rows
    /// Several selections: how many rows, which of them, and a range of rows.
    int GetSelCount() const;
    int GetSelItems(int count, int* rows) const;
    int SelItemRange(BOOL select, int first, int last);
    /// The row that has the focus rectangle.
    int GetCaretIndex() const;

    /// Adds a row at its place in the order of LBS_SORT, else at the end; returns its number.
    int AddString(LPCTSTR text);
    int InsertString(int row, LPCTSTR text); ///< -1: at the end; not sorted in
    /// Deletes a row; returns how many are left.
    int DeleteString(UINT row);
    /// Deletes all rows.
    void ResetContent();
    /// The next row after `after` (-1: from the first), going round, that begins with (is) a text;
    /// LB_ERR when there is none. SelectString selects it.
    int FindString(int after, LPCTSTR beginning) const;
    int FindStringExact(int after, LPCTSTR text) const;
    int SelectString(int after, LPCTSTR beginning);
    /// LBS_NODATA only: the number of rows. LB_ERR with any other style, and below 0.
    int SetCount(int rows);
    /// Makes room for that many more rows; `bytes` is not needed. Returns how many there is room
    /// for.
    int InitStorage(int rows, UINT bytes);

    /// Draw and measure a row of an owner-draw list box; the base does nothing.
    virtual void DrawItem(LPDRAWITEMSTRUCT item);
    virtual void MeasureItem(LPMEASUREITEMSTRUCT item);

protected:
    BOOL OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) override;
};

// --- beyond messages, for lists of many rows ---------------------------------------------------
// `list` is a window of class "LISTBOX" (CListBoxEx's own window, say); any other is refused.

/// A row's text without copying; null when there is no such row. Valid until the rows change.
VNBYTSTR_CONTROLS_API LPCSTR ListBoxRowText(HWND list, int row, int* length = nullptr);
/// Adds rows at the end (an LBS_SORT list sorts them in), as that many LB_ADDSTRING. `texts` holds
/// the rows' texts, each with its NUL, one after the other. Returns the index of the first new row,
/// LB_ERRSPACE when memory ran out (nothing was added).
VNBYTSTR_CONTROLS_API int ListBoxAddRows(HWND list, LPCSTR texts, std::size_t bytes, int count);
/// Empties an owner-draw list and takes its rows' texts away (LBS_NODATA instead of LBS_HASSTRINGS)
/// or gives them back. FALSE for any other list, and for one with LBS_SORT.
VNBYTSTR_CONTROLS_API BOOL ListBoxSetNoData(HWND list, BOOL on);
/// The next selected row at or after `from`; -1 when there is none.
VNBYTSTR_CONTROLS_API int ListBoxNextSelected(HWND list, int from);
/// Puts the rows in a new order: the row that stood at order[i] comes to i. Text, data, height and
/// selection go along; caret and current row stay with their row; the view stays where it is. FALSE
/// when `order` is no permutation of the rows (nothing changed).
VNBYTSTR_CONTROLS_API BOOL ListBoxReorder(HWND list, std::span<const DWORD> order);
/// From now on the list has these rows only, in this order; the others are put aside: messages do
/// not see them, and they keep all they have but their selection. A number below LB_GETCOUNT is a
/// row of the list, one from there on a row put aside before, in the order in which they are
/// aside. Newly put aside are the rows, in their order, after those that were aside and stay.
/// Caret, current and top row stay with their rows, or move to the next one that is shown.
/// LB_RESETCONTENT removes those put aside, too. FALSE when a number is out of range or comes
/// twice (nothing changed).
VNBYTSTR_CONTROLS_API BOOL ListBoxShowOnly(HWND list, std::span<const DWORD> rows);
/// The texts of many rows, numbered like that; texts[i] is that of rows[i]. FALSE when the spans
/// differ in size or a number is out of range. Valid until the rows change.
VNBYTSTR_CONTROLS_API BOOL ListBoxRowTexts(HWND list, std::span<const DWORD> rows,
                                           std::span<std::string_view> texts);
/// How many pixels a list that scrolls horizontally (WS_HSCROLL, LB_SETHORIZONTALEXTENT) hides at
/// its left; 0 for any other window. In a mirrored list: at its right.
VNBYTSTR_CONTROLS_API int ListBoxSideShift(HWND list);
/// Scrolls it horizontally, within its extent.
VNBYTSTR_CONTROLS_API void ListBoxSetSideShift(HWND list, int pixels);
/// Replaces a row's text in place; data, selection and place stay (an LBS_SORT list too).
VNBYTSTR_CONTROLS_API BOOL ListBoxSetRowText(HWND list, int row, LPCSTR text);

// CComboBox, the system's combo box: a drop-down with an edit field (CBS_DROPDOWN), a drop-down
// list to pick from (CBS_DROPDOWNLIST), or an edit field with the list always below it
// (CBS_SIMPLE).
//
// All of it also goes by CB_ messages, to a window of the class "COMBOBOX". Items count from 0;
// CB_ERR (-1) answers one that is not there. CBS_SORT keeps the items in the order of the system's
// collation (ignoring case, kana type and width). The window's height is that of the field and the
// dropped list together, as callers give it; the field itself takes the height its font needs.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

// --- messages, answers, notifications and styles -------------------------------------------------
inline constexpr UINT CB_GETEDITSEL = 0x0140;
inline constexpr UINT CB_LIMITTEXT = 0x0141;
inline constexpr UINT CB_ADDSTRING = 0x0143;
inline constexpr UINT CB_DELETESTRING = 0x0144;
inline constexpr UINT CB_GETCOUNT = 0x0146;
inline constexpr UINT CB_GETCURSEL = 0x0147;
inline constexpr UINT CB_GETLBTEXT = 0x0148;
inline constexpr UINT CB_GETLBTEXTLEN = 0x0149;
inline constexpr UINT CB_INSERTSTRING = 0x014A;
inline constexpr UINT CB_RESETCONTENT = 0x014B;
inline constexpr UINT CB_FINDSTRING = 0x014C;
inline constexpr UINT CB_SELECTSTRING = 0x014D;
inline constexpr UINT CB_SETCURSEL = 0x014E;
inline constexpr UINT CB_SHOWDROPDOWN = 0x014F;
inline constexpr UINT CB_GETITEMDATA = 0x0150;
inline constexpr UINT CB_SETITEMDATA = 0x0151;
inline constexpr UINT CB_GETDROPPEDCONTROLRECT = 0x0152;
inline constexpr UINT CB_SETITEMHEIGHT = 0x0153;
inline constexpr UINT CB_GETITEMHEIGHT = 0x0154;
inline constexpr UINT CB_GETDROPPEDSTATE = 0x0157;
inline constexpr UINT CB_FINDSTRINGEXACT = 0x0158;
inline constexpr UINT CB_INITSTORAGE = 0x0161;
inline constexpr int CB_OKAY = 0;
inline constexpr int CB_ERR = -1;
inline constexpr int CBN_SELCHANGE = 1;
inline constexpr int CBN_SETFOCUS = 3;
inline constexpr int CBN_KILLFOCUS = 4;
inline constexpr int CBN_EDITCHANGE = 5;
inline constexpr int CBN_EDITUPDATE = 6;
inline constexpr int CBN_DROPDOWN = 7;
inline constexpr int CBN_CLOSEUP = 8;
inline constexpr int CBN_SELENDOK = 9;
inline constexpr int CBN_SELENDCANCEL = 10;
inline constexpr DWORD CBS_SIMPLE = 0x0001;
inline constexpr DWORD CBS_DROPDOWN = 0x0002;
inline constexpr DWORD CBS_DROPDOWNLIST = 0x0003;
inline constexpr DWORD CBS_AUTOHSCROLL = 0x0040;
inline constexpr DWORD CBS_SORT = 0x0100;

class VNBYTSTR_CONTROLS_API CComboBox : public CWnd {
    DECLARE_DYNAMIC(CComboBox)
public:
    CComboBox() = default;
    /// A child window of class "COMBOBOX". The rectangle's height includes the dropped list.
    virtual BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
    using CWnd::Create;

    /// How many items there are.
    int GetCount() const;
    int AddString(LPCTSTR text);               ///< the new item's index
    int InsertString(int index, LPCTSTR text); ///< -1: at the end; not sorted in
    int DeleteString(UINT index);              ///< how many are left
    void ResetContent();                       ///< empties the field too
    /// An item's text and its length in bytes. An item that is not there gives CB_ERR, or an empty
    /// CString.
    int GetLBText(int index, LPTSTR text) const; ///< the buffer needs GetLBTextLen + 1 bytes
    void GetLBText(int index, CString& text) const;
    int GetLBTextLen(int index) const;
    /// The next item after `after` (-1: from the first), going round, that begins with (is) a text;
    /// case does not matter.
    int FindString(int after, LPCTSTR beginning) const;
    int FindStringExact(int after, LPCTSTR text) const;
    /// As FindString, and selects it.
    int SelectString(int after, LPCTSTR beginning);
    int GetCurSel() const;
    /// Selects an item and shows it in the field; -1 selects nothing and empties the field. Sends
    /// no notification.
    int SetCurSel(int index);
    std::uintptr_t GetItemData(int index) const;
    int SetItemData(int index, std::uintptr_t data);
    /// Makes room for that many more items; `bytes` is not needed. Returns how many there is room
    /// for.
    int InitStorage(int items, UINT bytes);

    BOOL LimitText(int bytes); ///< as CEdit::LimitText
    /// As CEdit's of these names, for the field.
    DWORD GetEditSel() const;
    void Clear();
    void Copy();
    void Cut();
    void Paste();

    /// Opens or closes the list; whether it is open.
    void ShowDropDown(BOOL show = TRUE);
    BOOL GetDroppedState() const;
    void
    GetDroppedControlRect(LPRECT rect) const; ///< screen coordinates, the dropped list included
    /// Heights of the items (index 0) and of the field (index -1).
    int SetItemHeight(int index, UINT height);
    int GetItemHeight(int index) const;
};

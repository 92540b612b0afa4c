// CSpinButtonCtrl, a pair of arrow buttons that counts up and down, most often beside an edit
// control (its buddy), whose text it then reads and writes (UDS_SETBUDDYINT).
//
// All of it also goes by UDM_ messages, to a window of the class "msctls_updown32". Before the
// position changes the parent gets UDN_DELTAPOS (WM_NOTIFY with an NM_UPDOWN; a nonzero answer
// keeps the position), after it WM_VSCROLL (UDS_HORZ: WM_HSCROLL) with SB_THUMBPOSITION and the
// position in wParam's high word, and SB_ENDSCROLL when the button is let go.
//
// "Up" moves towards the range's upper end, which may be the smaller number. The initial range is
// 100 (lower) to 0 (upper), so a program should set one.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

// --- styles, messages and notifications ----------------------------------------------------------
inline constexpr DWORD UDS_WRAP = 0x0001;
inline constexpr DWORD UDS_SETBUDDYINT = 0x0002;
inline constexpr DWORD UDS_ALIGNRIGHT = 0x0004;
inline constexpr DWORD UDS_ALIGNLEFT = 0x0008;
inline constexpr DWORD UDS_AUTOBUDDY = 0x0010;
inline constexpr DWORD UDS_ARROWKEYS = 0x0020;
inline constexpr DWORD UDS_NOTHOUSANDS = 0x0080;
inline constexpr UINT UDM_SETRANGE = WM_USER + 101;
inline constexpr UINT UDM_GETRANGE = WM_USER + 102;
inline constexpr UINT UDM_SETPOS = WM_USER + 103;
inline constexpr UINT UDM_GETPOS = WM_USER + 104;
inline constexpr UINT UDM_SETBUDDY = WM_USER + 105;
inline constexpr UINT UDM_GETBUDDY = WM_USER + 106;
inline constexpr UINT UDM_SETRANGE32 = WM_USER + 111;
inline constexpr UINT UDM_GETRANGE32 = WM_USER + 112;
inline constexpr UINT UDM_SETPOS32 = WM_USER + 113;
inline constexpr UINT UDM_GETPOS32 = WM_USER + 114;
inline constexpr UINT UDN_DELTAPOS = 0xFFFFFD2E;
inline constexpr DWORD UDS_HORZ = 0x0040;
inline constexpr int UD_MAXVAL = 0x7FFF;

/// What UDN_DELTAPOS carries. The handler may change iDelta.
struct NMUPDOWN {
    /// The position, and the step to be made.
    NMHDR hdr;
    int iPos;
    int iDelta;
};
/// Another name.
using NM_UPDOWN = NMUPDOWN;
using LPNMUPDOWN = NMUPDOWN*;

class VNBYTSTR_CONTROLS_API CSpinButtonCtrl : public CWnd {
    DECLARE_DYNAMIC(CSpinButtonCtrl)
public:
    CSpinButtonCtrl() = default;
    /// A child window of class "msctls_updown32". UDS_AUTOBUDDY takes the sibling before it.
    virtual BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
    using CWnd::Create;

    /// With UDS_ALIGNRIGHT or UDS_ALIGNLEFT the spin button takes its place at that edge of the
    /// buddy, which gets narrower by as much; with UDS_ARROWKEYS the buddy's up and down keys
    /// count. Returns the one before.
    CWnd* SetBuddy(CWnd* buddy);
    CWnd* GetBuddy() const;
    void SetRange(short lower, short upper);
    void SetRange32(int lower, int upper);
    void GetRange(int& lower, int& upper) const;
    /// Clamped to the range. Returns the previous position. Sends no notification.
    int SetPos(int position);
    /// The position, read from the buddy with UDS_SETBUDDYINT; `*error` is set when its text is not
    /// a number in the range.
    int GetPos(BOOL* error = nullptr) const;
};

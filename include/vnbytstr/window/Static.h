// CStatic, a label: text, or a picture (SS_BITMAP).
//
// The same as a window of the class "STATIC". '&' in the text underlines the next character, which
// with Alt gives the focus to the control that follows; SS_NOPREFIX shows '&' itself. With
// SS_NOTIFY the parent gets STN_CLICKED and STN_DBLCLK.
//
// STM_SETIMAGE (wParam IMAGE_BITMAP) shows an HBITMAP, which stays the caller's and must live as
// long as it is shown; null takes it away. It returns the one before. A picture larger than the
// control is scaled down, keeping its sides' ratio.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

// --- styles, messages and notifications ----------------------------------------------------------
inline constexpr DWORD SS_LEFT = 0x0000;
inline constexpr DWORD SS_CENTER = 0x0001;
inline constexpr DWORD SS_RIGHT = 0x0002;
inline constexpr DWORD SS_BITMAP = 0x000E;
inline constexpr DWORD SS_NOPREFIX = 0x0080;
inline constexpr DWORD SS_NOTIFY = 0x0100;
inline constexpr DWORD SS_CENTERIMAGE = 0x0200;
inline constexpr DWORD SS_SUNKEN = 0x1000;
inline constexpr DWORD SS_ENDELLIPSIS = 0x4000;
inline constexpr UINT STM_SETIMAGE = 0x0172;
inline constexpr DWORD SS_BLACKFRAME = 0x0007;
inline constexpr DWORD SS_ETCHEDHORZ = 0x0010;
inline constexpr int STN_CLICKED = 0;
inline constexpr int STN_DBLCLK = 1;
inline constexpr WPARAM IMAGE_BITMAP = 0;

class VNBYTSTR_CONTROLS_API CStatic : public CWnd {
    DECLARE_DYNAMIC(CStatic)
public:
    CStatic() = default;
    /// A child window of class "STATIC".
    virtual BOOL Create(LPCTSTR text, DWORD style, const RECT& rect, CWnd* parent,
                        UINT id = 0xFFFF);
    using CWnd::Create;
};

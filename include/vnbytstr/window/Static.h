// CStatic, a label. The same as a window of the class "STATIC". '&' in the text
// underlines the next character, which with Alt gives the focus to the control that follows;
// SS_NOPREFIX shows it as it is. With SS_NOTIFY the parent gets STN_CLICKED and STN_DBLCLK.
#pragma once

#include "vnbytstr/window/Wnd.h"

inline constexpr DWORD SS_BLACKFRAME = 0x0007;
inline constexpr DWORD SS_ETCHEDHORZ = 0x0010;
inline constexpr int STN_CLICKED = 0;
inline constexpr int STN_DBLCLK = 1;

class VNBYTSTR_API CStatic : public CWnd {
    DECLARE_DYNAMIC(CStatic)
public:
    CStatic() = default;
    /// A child window of class "STATIC".
    virtual BOOL Create(LPCTSTR text, DWORD style, const RECT& rect, CWnd* parent,
                        UINT id = 0xFFFF);
    using CWnd::Create;
};

// CButton, the system's button: push button, check box, radio button, group box.
//
// All of it also goes by BM_ messages, to a window of the class "BUTTON". '&' in the text
// underlines the next character, which with Alt presses the button ("&&" shows one). The parent
// gets BN_CLICKED when the button is pressed by mouse, key or BM_CLICK. Owner-draw buttons are not
// supported.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

// --- styles, messages, states and notifications --------------------------------------------------
inline constexpr DWORD BS_PUSHBUTTON = 0x0000;
inline constexpr DWORD BS_DEFPUSHBUTTON = 0x0001;
inline constexpr DWORD BS_CHECKBOX = 0x0002;
inline constexpr DWORD BS_AUTOCHECKBOX = 0x0003;
inline constexpr DWORD BS_RADIOBUTTON = 0x0004;
inline constexpr DWORD BS_3STATE = 0x0005;
inline constexpr DWORD BS_AUTO3STATE = 0x0006;
inline constexpr DWORD BS_GROUPBOX = 0x0007;
inline constexpr DWORD BS_AUTORADIOBUTTON = 0x0009;
inline constexpr DWORD BS_OWNERDRAW = 0x000B;
inline constexpr DWORD BS_TYPEMASK = 0x000F;
inline constexpr UINT BM_GETCHECK = 0x00F0;
inline constexpr UINT BM_SETCHECK = 0x00F1;
inline constexpr UINT BM_GETSTATE = 0x00F2;
inline constexpr UINT BM_SETSTYLE = 0x00F4;
inline constexpr UINT BM_CLICK = 0x00F5;
inline constexpr int BST_UNCHECKED = 0;
inline constexpr int BST_CHECKED = 1;
inline constexpr int BST_INDETERMINATE = 2;
inline constexpr int BN_CLICKED = 0;
inline constexpr int BN_DBLCLK = 5;
inline constexpr int BN_SETFOCUS = 6;
inline constexpr int BN_KILLFOCUS = 7;

inline constexpr DWORD BS_USERBUTTON = 0x0008;
inline constexpr DWORD BS_LEFTTEXT = 0x0020;
inline constexpr DWORD BS_PUSHLIKE = 0x1000;
inline constexpr DWORD BS_NOTIFY = 0x4000;
inline constexpr UINT BST_PUSHED = 0x0004;
inline constexpr UINT BST_FOCUS = 0x0008;

class VNBYTSTR_CONTROLS_API CButton : public CWnd {
    DECLARE_DYNAMIC(CButton)
public:
    CButton() = default;
    /// A child window of class "BUTTON".
    virtual BOOL Create(LPCTSTR caption, DWORD style, const RECT& rect, CWnd* parent, UINT id);
    using CWnd::Create;

    int GetCheck() const;  ///< BST_UNCHECKED, BST_CHECKED or BST_INDETERMINATE
    UINT GetState() const; ///< the check with BST_PUSHED and BST_FOCUS
};

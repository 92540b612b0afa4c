// CButton, the system's button: push button, check box, radio button, group box.
//
// All of it also goes by BM_ messages, to a window of the class "BUTTON". '&' in the text
// underlines the next character, which with Alt presses the button ("&&" shows one). The parent
// gets BN_CLICKED when the button is pressed by mouse, key or BM_CLICK. Owner-draw buttons are not
// supported.
#pragma once

#include "vnbytstr/window/Wnd.h"

inline constexpr DWORD BS_USERBUTTON = 0x0008;
inline constexpr DWORD BS_LEFTTEXT = 0x0020;
inline constexpr DWORD BS_PUSHLIKE = 0x1000;
inline constexpr DWORD BS_NOTIFY = 0x4000;
inline constexpr UINT BST_PUSHED = 0x0004;
inline constexpr UINT BST_FOCUS = 0x0008;

class VNBYTSTR_API CButton : public CWnd {
    DECLARE_DYNAMIC(CButton)
public:
    CButton() = default;
    /// A child window of class "BUTTON".
    virtual BOOL Create(LPCTSTR caption, DWORD style, const RECT& rect, CWnd* parent, UINT id);
    using CWnd::Create;

    int GetCheck() const; ///< BST_UNCHECKED, BST_CHECKED or BST_INDETERMINATE
    /// Sets the state without a notification. Checking a radio button does not uncheck its
    /// neighbours; a click on BS_AUTORADIOBUTTON does (up to the next WS_GROUP).
    void SetCheck(int check);
    UINT GetState() const; ///< the check with BST_PUSHED and BST_FOCUS
};

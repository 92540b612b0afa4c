// CCmdTarget, the base of objects that handle messages and commands through a message map, and the
// macros that define one.
//
//     class CMyWnd : public CWnd {
//         ...
//         void OnPaint();
//         void OnSave();
//         DECLARE_MESSAGE_MAP()
//     };
//     BEGIN_MESSAGE_MAP(CMyWnd, CWnd)
//         ON_WM_PAINT()
//         ON_COMMAND(IDM_SAVE, OnSave)
//     END_MESSAGE_MAP()
//
// The maps are searched from the class itself up to its bases; the first entry that matches handles
// the message. Handlers are members of the map's class and need not be virtual.
#pragma once

#include "vnbytstr/framework/Object.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Messages.h"

class CCmdTarget;

/// The code by which a map tells entries of commands from those of notifications.
inline constexpr int CN_COMMAND = 0;

/// One entry of a message map.
struct AFX_MSGMAP_ENTRY {
    UINT nMessage; ///< 0 ends the map
    int nCode;     ///< notification code, or CN_COMMAND
    UINT nID;      ///< first control or command id; 0 for other messages
    /// The last id of the range, the same as nID for one.
    UINT nLastID;
    /// A message that is registered at run time (its number); null for others.
    const UINT* pRegistered;
    LRESULT (*pfn)(CCmdTarget* target, WPARAM wParam, LPARAM lParam);
};

/// A class's map and the function that returns its base's.
struct AFX_MSGMAP {
    const AFX_MSGMAP* (*pfnGetBaseMap)(); ///< null at the root
    const AFX_MSGMAP_ENTRY* lpEntries;    ///< the class's own entries
};

/// What a notification handler gets and answers.
struct AFX_NOTIFY {
    LRESULT* pResult; ///< the handler's answer
    NMHDR* pNMHDR;    ///< what WM_NOTIFY carries
};

/// What gets commands and notifications through a message map.
class VNBYTSTR_CONTROLS_API CCmdTarget : public CObject {
    DECLARE_DYNAMIC(CCmdTarget)
public:
    /// Offers a command (`code` CN_COMMAND) or a control's notification (`code` as the control sent
    /// it; `extra` what its handler gets) to this object's map. Returns whether it was handled.
    virtual BOOL OnCmdMsg(UINT id, int code, void* extra);

protected:
    CCmdTarget() = default;
    /// The map of the object's own class, and of this one.
    virtual const AFX_MSGMAP* GetMessageMap() const;
    static const AFX_MSGMAP* GetThisMessageMap();
    /// The first entry for the message in the maps of this class and its bases; null when there is
    /// none.
    const AFX_MSGMAP_ENTRY* FindMessageEntry(UINT message, int code, UINT id) const;
};

/// In a class's body: the class has a message map.
#define DECLARE_MESSAGE_MAP()                                                                      \
protected:                                                                                         \
    const AFX_MSGMAP* GetMessageMap() const override;                                              \
    static const AFX_MSGMAP* GetThisMessageMap();

// Class names cannot stand in parentheses; a handler's parameters are its own declaration's.
// NOLINTBEGIN(bugprone-macro-parentheses)
/// In one source file: the map, whose entries stand between these two.
#define BEGIN_MESSAGE_MAP(class_name, base_class_name)                                             \
    const AFX_MSGMAP* class_name::GetMessageMap() const {                                          \
        return class_name::GetThisMessageMap();                                                    \
    }                                                                                              \
    const AFX_MSGMAP* class_name::GetThisMessageMap() {                                            \
        using ThisClass [[maybe_unused]] = class_name;                                             \
        using BaseClass = base_class_name;                                                         \
        static const AFX_MSGMAP_ENTRY entries[] = {
#define END_MESSAGE_MAP()                                                                          \
    { 0, 0, 0, 0, nullptr, nullptr }                                                               \
    }                                                                                              \
    ;                                                                                              \
    static const AFX_MSGMAP map = {[] { return BaseClass::GetThisMessageMap(); }, entries};        \
    return &map;                                                                                   \
    }

/// The body of an entry: `call` may use `self`, `w` and `l`, and yields an LRESULT.
#define AFX_ENTRY_FUNCTION(call)                                                                   \
    [](CCmdTarget* target, [[maybe_unused]] WPARAM w, [[maybe_unused]] LPARAM l) -> LRESULT {      \
        [[maybe_unused]] auto* const self = static_cast<ThisClass*>(target);                       \
        call                                                                                       \
    }
/// Entries of a message whose handler returns nothing, or the answer.
#define AFX_VOID_ENTRY(message, call)                                                              \
    { message, 0, 0, 0, nullptr, AFX_ENTRY_FUNCTION(self->call; return 0;) }                       \
    ,
#define AFX_RESULT_ENTRY(message, call)                                                            \
    { message, 0, 0, 0, nullptr, AFX_ENTRY_FUNCTION(return static_cast<LRESULT>(self->call);) }    \
    ,

/// Any message: `LRESULT member(WPARAM, LPARAM)`.
#define ON_MESSAGE(message, member) AFX_RESULT_ENTRY(message, member(w, l))
/// A command (menu, button click): `void member()`.
#define ON_COMMAND(id, member)                                                                     \
    {                                                                                              \
        WM_COMMAND, CN_COMMAND, static_cast<UINT>(id), static_cast<UINT>(id), nullptr,             \
            AFX_ENTRY_FUNCTION(self->member(); return 1;)                                          \
    }                                                                                              \
    ,
/// A control's notification, in its parent: `void member()`.
#define ON_CONTROL(code, id, member)                                                               \
    {                                                                                              \
        WM_COMMAND, static_cast<int>(code), static_cast<UINT>(id), static_cast<UINT>(id), nullptr, \
            AFX_ENTRY_FUNCTION(self->member(); return 1;)                                          \
    }                                                                                              \
    ,

/// A control's own notification, in the control itself: `void member()`; the parent does not get
/// it. The _EX form lets it through when `BOOL member()` returns FALSE.
#define ON_CONTROL_REFLECT_EX(code, member)                                                        \
    {                                                                                              \
        WM_REFLECT_BASE + WM_COMMAND, static_cast<int>(code), 0, 0, nullptr,                       \
            AFX_ENTRY_FUNCTION(return self->member();)                                             \
    }                                                                                              \
    ,
/// Any other message that came back from the parent: `LRESULT member(WPARAM, LPARAM)`.
#define ON_WM_DRAWITEM_REFLECT()                                                                   \
    AFX_VOID_ENTRY(WM_REFLECT_BASE + WM_DRAWITEM, DrawItem(reinterpret_cast<LPDRAWITEMSTRUCT>(l)))
#define ON_WM_MEASUREITEM_REFLECT()                                                                \
    AFX_VOID_ENTRY(WM_REFLECT_BASE + WM_MEASUREITEM,                                               \
                   MeasureItem(reinterpret_cast<LPMEASUREITEMSTRUCT>(l)))

// --- the messages of windows, with the handler each one calls --------------------------------
/// int OnCreate(LPCREATESTRUCT): -1 cancels the creation.
#define ON_WM_CREATE() AFX_RESULT_ENTRY(WM_CREATE, OnCreate(reinterpret_cast<LPCREATESTRUCT>(l)))
/// void OnDestroy()
#define ON_WM_DESTROY() AFX_VOID_ENTRY(WM_DESTROY, OnDestroy())
/// void OnEnable(BOOL on)
#define ON_WM_ENABLE() AFX_VOID_ENTRY(WM_ENABLE, OnEnable(w != 0))
/// void OnSize(UINT type, int cx, int cy)
#define ON_WM_SIZE() AFX_VOID_ENTRY(WM_SIZE, OnSize(static_cast<UINT>(w), LOWORD(l), HIWORD(l)))
/// void OnSetFocus(CWnd* old), void OnKillFocus(CWnd* next)
#define ON_WM_SETFOCUS()                                                                           \
    AFX_VOID_ENTRY(WM_SETFOCUS, OnSetFocus(CWnd::FromHandle(reinterpret_cast<HWND>(w))))
#define ON_WM_KILLFOCUS()                                                                          \
    AFX_VOID_ENTRY(WM_KILLFOCUS, OnKillFocus(CWnd::FromHandle(reinterpret_cast<HWND>(w))))
/// void OnPaint()
#define ON_WM_PAINT() AFX_VOID_ENTRY(WM_PAINT, OnPaint())
/// void OnClose()
#define ON_WM_CLOSE() AFX_VOID_ENTRY(WM_CLOSE, OnClose())
/// void OnSysColorChange()
#define ON_WM_SYSCOLORCHANGE() AFX_VOID_ENTRY(WM_SYSCOLORCHANGE, OnSysColorChange())
/// void OnCancelMode()
#define ON_WM_CANCELMODE() AFX_VOID_ENTRY(WM_CANCELMODE, OnCancelMode())
/// BOOL OnSetCursor(CWnd* window, UINT hitTest, UINT message)
#define ON_WM_SETCURSOR()                                                                          \
    AFX_RESULT_ENTRY(WM_SETCURSOR, OnSetCursor(CWnd::FromHandle(reinterpret_cast<HWND>(w)),        \
                                               LOWORD(l), HIWORD(l)))
/// void OnWindowPosChanging(WINDOWPOS*), void OnWindowPosChanged(WINDOWPOS*)
#define ON_WM_WINDOWPOSCHANGING()                                                                  \
    AFX_VOID_ENTRY(WM_WINDOWPOSCHANGING, OnWindowPosChanging(reinterpret_cast<WINDOWPOS*>(l)))
/// void OnGetMinMaxInfo(MINMAXINFO*)
#define ON_WM_GETMINMAXINFO()                                                                      \
    AFX_VOID_ENTRY(WM_GETMINMAXINFO, OnGetMinMaxInfo(reinterpret_cast<MINMAXINFO*>(l)))
/// void OnContextMenu(CWnd* window, CPoint screen); (-1, -1) for the keyboard
#define ON_WM_CONTEXTMENU()                                                                        \
    AFX_VOID_ENTRY(WM_CONTEXTMENU,                                                                 \
                   OnContextMenu(CWnd::FromHandle(reinterpret_cast<HWND>(w)), CPoint(l)))
/// UINT OnGetDlgCode()
#define ON_WM_GETDLGCODE() AFX_RESULT_ENTRY(WM_GETDLGCODE, OnGetDlgCode())
/// void OnKeyDown(UINT key, UINT repeat, UINT flags), likewise OnChar
#define ON_WM_KEYDOWN()                                                                            \
    AFX_VOID_ENTRY(WM_KEYDOWN, OnKeyDown(static_cast<UINT>(w), LOWORD(l), HIWORD(l)))
#define ON_WM_CHAR() AFX_VOID_ENTRY(WM_CHAR, OnChar(static_cast<UINT>(w), LOWORD(l), HIWORD(l)))
/// void OnTimer(UINT_PTR id)
#define ON_WM_TIMER() AFX_VOID_ENTRY(WM_TIMER, OnTimer(w))
/// void OnHScroll(UINT code, UINT position, CWnd* bar) and OnVScroll
#define ON_WM_HSCROLL()                                                                            \
    AFX_VOID_ENTRY(WM_HSCROLL,                                                                     \
                   OnHScroll(LOWORD(w), HIWORD(w), CWnd::FromHandle(reinterpret_cast<HWND>(l))))
#define ON_WM_VSCROLL()                                                                            \
    AFX_VOID_ENTRY(WM_VSCROLL,                                                                     \
                   OnVScroll(LOWORD(w), HIWORD(w), CWnd::FromHandle(reinterpret_cast<HWND>(l))))
/// void OnMouseMove(UINT flags, CPoint point), likewise the buttons; client coordinates
#define ON_WM_MOUSEMOVE() AFX_VOID_ENTRY(WM_MOUSEMOVE, OnMouseMove(static_cast<UINT>(w), CPoint(l)))
#define ON_WM_LBUTTONDOWN()                                                                        \
    AFX_VOID_ENTRY(WM_LBUTTONDOWN, OnLButtonDown(static_cast<UINT>(w), CPoint(l)))
#define ON_WM_LBUTTONUP() AFX_VOID_ENTRY(WM_LBUTTONUP, OnLButtonUp(static_cast<UINT>(w), CPoint(l)))
#define ON_WM_LBUTTONDBLCLK()                                                                      \
    AFX_VOID_ENTRY(WM_LBUTTONDBLCLK, OnLButtonDblClk(static_cast<UINT>(w), CPoint(l)))
#define ON_WM_RBUTTONDOWN()                                                                        \
    AFX_VOID_ENTRY(WM_RBUTTONDOWN, OnRButtonDown(static_cast<UINT>(w), CPoint(l)))
/// BOOL OnMouseWheel(UINT flags, short delta, CPoint screen)
#define ON_WM_MOUSEWHEEL()                                                                         \
    AFX_RESULT_ENTRY(WM_MOUSEWHEEL,                                                                \
                     OnMouseWheel(LOWORD(w), static_cast<short>(HIWORD(w)), CPoint(l)))
/// void OnMouseLeave()
#define ON_WM_MOUSELEAVE() AFX_VOID_ENTRY(WM_MOUSELEAVE, OnMouseLeave())
/// HBRUSH OnCtlColor(CDC* dc, CWnd* control, UINT type), type being the message's number
#define ON_WM_CTLCOLOR()                                                                           \
    {                                                                                              \
        WM_CTLCOLOREDIT, 0, 0, 0, nullptr,                                                         \
            AFX_ENTRY_FUNCTION(auto* color = reinterpret_cast<AFX_CTLCOLOR*>(l);                   \
                               return reinterpret_cast<LRESULT>(self->OnCtlColor(                  \
                                   CDC::FromHandle(color->hDC), CWnd::FromHandle(color->hWnd),     \
                                   color->nCtlType));)                                             \
    }                                                                                              \
    ,
// ON_WM_GETFONT and ON_WM_SETFONT do not exist: use ON_MESSAGE(WM_GETFONT, ...).

/// Notifications of a button and of an edit control: `void member()`.
#define ON_BN_CLICKED(id, member) ON_CONTROL(BN_CLICKED, id, member)
#define ON_EN_KILLFOCUS(id, member) ON_CONTROL(EN_KILLFOCUS, id, member)
// NOLINTEND(bugprone-macro-parentheses)

/// What a WM_CTLCOLOR... message looks like to its handler.
struct AFX_CTLCOLOR {
    /// The control, what it is drawn with, and the message's number.
    HWND hWnd;
    HDC hDC;
    UINT nCtlType;
};

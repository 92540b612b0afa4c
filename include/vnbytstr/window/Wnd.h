// CWnd, a window: handles messages through its message map, and has a Qt widget underneath.
#pragma once

#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/CmdTarget.h"
#include "vnbytstr/window/DC.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Gdi.h"
#include "vnbytstr/window/Messages.h"
#include "vnbytstr/window/QtInterop.h"
#include "vnbytstr/window/WindowFunctions.h"

class CAccessibleTable;
namespace vnbytstr::detail {
class Window;
}

/// A window. The C++ object and the window have separate lives: Create makes the window;
/// DestroyWindow, or the destruction of its parent, destroys it and leaves the object; the object's
/// destructor destroys the window. PostNcDestroy is the place for `delete this`.
///
/// Everything runs on the program's main thread. Coordinates: see DC.h; a child's position is in
/// its parent's client coordinates.
class VNBYTSTR_CONTROLS_API CWnd : public CCmdTarget {
    DECLARE_DYNAMIC(CWnd)
public:
    CWnd() = default;
    ~CWnd() override;

    /// The window's handle; null when there is no window.
    HWND m_hWnd = nullptr;
    operator HWND() const { return m_hWnd; }
    HWND GetSafeHwnd() const;

    // --- creation and destruction ------------------------------------------------------------
    /// A child window. `className` is a registered or system class ("LISTBOX", "EDIT", "COMBOBOX",
    /// "BUTTON", "STATIC", "msctls_updown32"; case does not matter); null is a plain window.
    /// FALSE when the class is unknown, there is no parent, or WM_CREATE was answered with -1.
    virtual BOOL Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT& rect,
                        CWnd* parent, UINT id, void* context = nullptr);
    /// A window of any kind; `parent` may be null (a top-level window), `id` is the child's id.
    BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style,
                  const RECT& rect, CWnd* parent, UINT id, void* param = nullptr);
    /// A child window inside any widget of a Qt program, which then owns it.
    BOOL CreateInWidget(vnbytstr::HostWidget* parent, LPCTSTR className, LPCTSTR windowName,
                        DWORD style, const RECT& rect, UINT id);
    /// May change class, style and position before the window is created; FALSE cancels creation.
    virtual BOOL PreCreateWindow(CREATESTRUCT& create);
    virtual BOOL DestroyWindow();
    /// Called last, after WM_NCDESTROY; m_hWnd is null.
    virtual void PostNcDestroy();
    /// Attaches the handle of an existing window, without receiving its messages.
    BOOL Attach(HWND window);
    HWND Detach();
    virtual void PreSubclassWindow();

    /// The object attached to a window, else a temporary one that lives as long as the window; null
    /// for null.
    static CWnd* FromHandle(HWND window);
    /// The window's widget, for a Qt program that puts it into a layout; null when there is no
    /// window. A window without a Qt parent may be given one with setParent.
    vnbytstr::HostWidget* GetWidget() const;
    /// The window of a widget or of its nearest ancestor that has one; null when none has.
    static CWnd* FromWidget(const vnbytstr::HostWidget* widget);

    // --- messages ----------------------------------------------------------------------------
    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    BOOL PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    /// Sends to a child by its id.
    LRESULT SendDlgItemMessage(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    /// Gets every message of the window.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// The window class's treatment of a message that no handler took.
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// Gets keyboard messages before the window that has the focus: called for that window first,
    /// then for its parents up to the top-level window. TRUE: handled.
    virtual BOOL PreTranslateMessage(MSG* message);
    /// The message being handled.
    static const MSG* GetCurrentMessage();

    // --- place, state, order -----------------------------------------------------------------
    DWORD GetStyle() const;
    DWORD GetExStyle() const;
    /// Changes style bits; TRUE when that changed any. `flags` nonzero: SWP_* for a SetWindowPos.
    BOOL ModifyStyle(DWORD remove, DWORD add, UINT flags = 0);
    BOOL ModifyStyleEx(DWORD remove, DWORD add, UINT flags = 0);
    int GetDlgCtrlID() const;
    void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE);
    void MoveWindow(LPCRECT rect, BOOL repaint = TRUE) {
        MoveWindow(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top,
                   repaint);
    }
    /// `after`: &wndTop, &wndBottom, or the window that is to be in front of this one.
    BOOL SetWindowPos(const CWnd* after, int x, int y, int cx, int cy, UINT flags);
    static const CWnd wndTop;
    static const CWnd wndBottom;
    void GetWindowRect(LPRECT rect) const; ///< screen coordinates
    void GetClientRect(LPRECT rect) const; ///< left and top are 0
    void ClientToScreen(LPPOINT point) const;
    void ClientToScreen(LPRECT rect) const;
    void ScreenToClient(LPPOINT point) const;
    void ScreenToClient(LPRECT rect) const;
    /// From this window's client coordinates to another's (null: the screen's).
    void MapWindowPoints(CWnd* to, LPPOINT points, UINT count) const;
    void MapWindowPoints(CWnd* to, LPRECT rect) const;
    BOOL ShowWindow(int command); ///< SW_*; TRUE when the window was visible
    BOOL IsWindowVisible() const;
    /// Returns whether the window was disabled before.
    virtual BOOL EnableWindow(BOOL on = TRUE);
    BOOL IsWindowEnabled() const;
    void CenterWindow(CWnd* around = nullptr);

    // --- text and font -----------------------------------------------------------------------
    void SetWindowText(LPCTSTR text);
    int GetWindowText(LPTSTR buffer, int size) const; ///< bytes copied, without the NUL
    void GetWindowText(CString& text) const;
    int GetWindowTextLength() const;
    void SetFont(CFont* font, BOOL redraw = TRUE);
    CFont* GetFont() const;

    // --- painting ----------------------------------------------------------------------------
    void Invalidate(BOOL erase = TRUE);
    void InvalidateRect(LPCRECT rect, BOOL erase = TRUE);
    /// Paints invalid areas at once.
    void UpdateWindow();
    void SetRedraw(BOOL on = TRUE);

    // --- family ------------------------------------------------------------------------------
    /// The parent window; for a top-level window its owner. Null when there is none, or when it is
    /// not a CWnd's widget.
    CWnd* GetParent() const;
    CWnd* GetTopLevelParent() const;
    CWnd* GetDlgItem(int id) const; ///< null when there is none
    void GetDlgItem(int id, HWND* window) const;
    CWnd* GetWindow(UINT which) const;     ///< GW_*
    BOOL IsChild(const CWnd* other) const; ///< `other` lies in this window
    void SetDlgItemText(int id, LPCTSTR text);
    int GetDlgItemText(int id, CString& text) const;
    /// The next (or previous) child that Tab goes to.
    CWnd* GetNextDlgTabItem(CWnd* from, BOOL previous = FALSE) const;

    // --- focus, mouse, time ------------------------------------------------------------------
    static CWnd* GetFocus();
    CWnd* SetFocus(); ///< the window that had it
    static CWnd* GetActiveWindow();
    CWnd* SetActiveWindow();
    static CWnd* GetCapture();
    CWnd* SetCapture(); ///< all mouse messages come here until ReleaseCapture
    /// Calls OnTimer (or sends WM_TIMER) every `milliseconds`; returns `id`, 0 on failure.
    std::uintptr_t SetTimer(std::uintptr_t id, UINT milliseconds, void* = nullptr);
    BOOL KillTimer(std::uintptr_t id);
    int MessageBox(LPCTSTR text, LPCTSTR caption = nullptr, UINT type = 0);

    // --- accessibility -----------------------------------------------------------------------
    /// Describes a table that the window draws itself to screen readers. The window does not own
    /// it; null removes it. See AccessibleTable.h; call NotifyAccessibility after changes.
    void SetAccessibleTable(CAccessibleTable* table);
    /// What screen readers call the window, if it has no text of its own that says so.
    void SetAccessibleName(LPCTSTR name);

    BOOL OnCmdMsg(UINT id, int code, void* extra) override;

protected:
    /// Handle WM_COMMAND and WM_NOTIFY. TRUE: handled.
    virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);
    virtual BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT* result);
    /// Gets a message that this control sends to its parent before the parent does. TRUE: handled;
    /// the parent does not get it.
    virtual BOOL OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result);
    /// Calls the handler of a message in the message map. FALSE when it has none.
    virtual BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result);
    /// Reflects the message being handled to the child that sent it.
    static BOOL ReflectLastMsg(HWND child, LRESULT* result = nullptr);
    /// The default treatment of the message being handled.
    LRESULT Default();

    // Default handlers of the ON_WM_ macros: each calls Default.
    int OnCreate(LPCREATESTRUCT create);
    void OnDestroy();
    void OnEnable(BOOL on);
    void OnSize(UINT type, int cx, int cy);
    void OnSetFocus(CWnd* old);
    void OnKillFocus(CWnd* next);
    void OnPaint();
    void OnClose();
    void OnSysColorChange();
    void OnCancelMode();
    BOOL OnSetCursor(CWnd* window, UINT hitTest, UINT message);
    void OnWindowPosChanging(WINDOWPOS* place);
    void OnGetMinMaxInfo(MINMAXINFO* info);
    void OnContextMenu(CWnd* window, CPoint screen);
    UINT OnGetDlgCode();
    void OnKeyDown(UINT key, UINT repeat, UINT flags);
    void OnChar(UINT ch, UINT repeat, UINT flags);
    void OnTimer(std::uintptr_t id);
    void OnHScroll(UINT code, UINT position, CWnd* bar);
    void OnVScroll(UINT code, UINT position, CWnd* bar);
    void OnMouseMove(UINT flags, CPoint point);
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonUp(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    void OnRButtonDown(UINT flags, CPoint point);
    BOOL OnMouseWheel(UINT flags, short delta, CPoint screen);
    void OnMouseLeave();
    HBRUSH OnCtlColor(CDC* dc, CWnd* control, UINT type);

    DECLARE_MESSAGE_MAP()

    /// Offers a message that `child` sent to its parent to the child's own object.
    static BOOL ReflectMessage(HWND child, UINT message, WPARAM wParam, LPARAM lParam,
                               LRESULT* result);

private:
    friend class vnbytstr::detail::Window;
    static LRESULT Dispatch(CWnd& object, UINT message, WPARAM wParam, LPARAM lParam);
    BOOL ReflectChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result);
    BOOL m_subclassed = FALSE; ///< takes the window's messages (Create)
};

// CFrameWnd, a program's top-level window: menu bar, keys, status line, and a view that fills the
// rest (GetPaneRect). Menu bar and status line are child windows inside the client area.
//
// Commands go to the view first, then to the frame, then to the program.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Menu.h"
#include "vnbytstr/window/Wnd.h"

// --- ids of the parts of a frame -----------------------------------------------------------------
inline constexpr UINT AFX_IDW_STATUS_BAR = 0xE801;
inline constexpr UINT AFX_IDW_MENU_BAR = 0xE802;
inline constexpr UINT AFX_IDW_PANE_FIRST = 0xE900; ///< the id of the view

class VNBYTSTR_CONTROLS_API CFrameWnd : public CWnd {
    DECLARE_DYNAMIC(CFrameWnd)
public:
    CFrameWnd() = default;
    ~CFrameWnd() override;

    /// `rect` null: the system's choice of size and place.
    virtual BOOL Create(LPCTSTR title, DWORD style = WS_OVERLAPPEDWINDOW, LPCRECT rect = nullptr,
                        CWnd* parent = nullptr, DWORD exStyle = 0);
    using CWnd::Create;

    /// Sets or (null) removes the menu bar. The window takes the menu over and detaches it from
    /// `menu`. Items are updated through ON_UPDATE_COMMAND_UI when they are shown.
    BOOL SetMenu(CMenu* menu);
    CMenu* GetMenu() const;
    /// To be called after changes of the bar itself; those of its popups are seen when they open.
    void DrawMenuBar();
    /// The keys; the table must outlive the window.
    void SetAccelerators(const CAcceleratorTable* table) { m_accelerators = table; }

    /// A line at the bottom with `panes` fields at its right.
    BOOL CreateStatusLine(int panes = 0);
    /// The line's message (pane -1) or a field's text.
    void SetMessageText(LPCTSTR text) { SetPaneText(-1, text); }
    void SetPaneText(int pane, LPCTSTR text);
    CString GetPaneText(int pane) const;

    /// Places the view (the child AFX_IDW_PANE_FIRST) and the status line. Called on WM_SIZE.
    virtual void RecalcLayout();
    /// The client area that is left for the view.
    void GetPaneRect(LPRECT rect) const;

    BOOL PreTranslateMessage(MSG* message) override;
    BOOL OnCmdMsg(UINT id, int code, void* extra) override;

protected:
    void OnSize(UINT type, int cx, int cy);
    void OnSetFocus(CWnd* old);
    LRESULT OnInitMenuPopup(WPARAM wParam, LPARAM lParam);
    DECLARE_MESSAGE_MAP()

private:
    const CAcceleratorTable* m_accelerators = nullptr;
    HMENU m_menu = nullptr;
    CWnd m_menuBar;
    CWnd m_statusLine;
};

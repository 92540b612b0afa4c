#include "vnbytstr/window/FrameWnd.h"

#include "src/window/controls/FrameControls.h"
#include "src/window/controls/MenuInternal.h"
#include "vnbytstr/window/Application.h"

#include <algorithm>

using vnbytstr::detail::MenuBarControl;
using vnbytstr::detail::MenuData;
using vnbytstr::detail::MenuItem;
using vnbytstr::detail::StatusControl;

IMPLEMENT_DYNAMIC(CFrameWnd, CWnd)

BEGIN_MESSAGE_MAP(CFrameWnd, CWnd)
ON_WM_SIZE()
ON_WM_SETFOCUS()
ON_MESSAGE(WM_INITMENUPOPUP, OnInitMenuPopup)
END_MESSAGE_MAP()

namespace {

/// Lets an update handler set a menu item's state.
class MenuItemUI final : public CCmdUI {
public:
    explicit MenuItemUI(MenuItem& item) : m_item(item) { m_nID = item.id; }
    void Enable(BOOL on) override {
        CCmdUI::Enable(on);
        m_item.flags = (m_item.flags & ~(MF_GRAYED | MF_DISABLED)) | (on ? 0 : MF_GRAYED);
    }
    void SetCheck(int check) override {
        m_item.flags = (m_item.flags & ~MF_CHECKED) | (check != 0 ? MF_CHECKED : 0);
    }
    void SetText(LPCTSTR text) override { m_item.text = text != nullptr ? text : ""; }

private:
    MenuItem& m_item;
};

} // namespace

CFrameWnd::~CFrameWnd() {
    // In this destructor WM_DESTROY still reaches this class's message map.
    DestroyWindow();
    const std::unique_ptr<MenuData> menu(MenuData::Of(m_menu));
}

BOOL CFrameWnd::Create(LPCTSTR title, DWORD style, LPCRECT rect, CWnd* parent, DWORD exStyle) {
    constexpr int kAny = CW_USEDEFAULT;
    const RECT place = rect != nullptr ? *rect : RECT{kAny, kAny, kAny, kAny};
    return CreateEx(exStyle, nullptr, title, style, place, parent, 0);
}

// --- menu and keys ------------------------------------------------------------------------------

BOOL CFrameWnd::SetMenu(CMenu* menu) {
    MenuData* const given = menu != nullptr ? MenuData::Of(menu->m_hMenu) : nullptr;
    if (m_hWnd == nullptr || (menu != nullptr && (given == nullptr || given->m_owned)))
        return FALSE;
    const std::unique_ptr<MenuData> old(MenuData::Of(m_menu));
    m_menu = nullptr;
    if (given != nullptr) {
        m_menu = menu->Detach();
        given->m_owned = true;
    }
    if (m_menuBar.m_hWnd == nullptr && m_menu != nullptr &&
        !m_menuBar.Create("MenuBar", nullptr, WS_CHILD | WS_VISIBLE, CRect(0, 0, 0, 0), this,
                          AFX_IDW_MENU_BAR))
        return FALSE;
    DrawMenuBar();
    RecalcLayout();
    return TRUE;
}

CMenu* CFrameWnd::GetMenu() const { return CMenu::FromHandle(m_menu); }

void CFrameWnd::DrawMenuBar() {
    if (m_menuBar.m_hWnd != nullptr)
        m_menuBar.SendMessage(MenuBarControl::kSetMenu, 0, reinterpret_cast<LPARAM>(m_menu));
}

LRESULT CFrameWnd::OnInitMenuPopup(WPARAM wParam, LPARAM) {
    const auto handle = reinterpret_cast<HMENU>(wParam);
    const MenuData* const menu = MenuData::Of(handle);
    for (std::size_t i = 0;
         menu != nullptr && MenuData::Of(handle) == menu && i < menu->m_items.size(); ++i) {
        auto& item = const_cast<MenuItem&>(menu->m_items[i]);
        if (item.popup != nullptr || (item.flags & MF_SEPARATOR) != 0)
            continue;
        MenuItemUI state(item);
        OnCmdMsg(item.id, CN_UPDATE_COMMAND_UI, &state);
    }
    return 0;
}

BOOL CFrameWnd::PreTranslateMessage(MSG* message) {
    if (CWnd::PreTranslateMessage(message))
        return TRUE;
    return m_accelerators != nullptr ? m_accelerators->Translate(this, message) : FALSE;
}

BOOL CFrameWnd::OnCmdMsg(UINT id, int code, void* extra) {
    CWnd* const view = m_hWnd != nullptr ? GetDlgItem(AFX_IDW_PANE_FIRST) : nullptr;
    if (view != nullptr && view->OnCmdMsg(id, code, extra))
        return TRUE;
    if (CWnd::OnCmdMsg(id, code, extra))
        return TRUE;
    CWinApp* const app = AfxGetApp();
    return app != nullptr ? app->OnCmdMsg(id, code, extra) : FALSE;
}

// --- status line and layout ---------------------------------------------------------------------

BOOL CFrameWnd::CreateStatusLine(int panes) {
    if (m_hWnd == nullptr ||
        (m_statusLine.m_hWnd == nullptr &&
         !m_statusLine.Create("msctls_statusbar32", nullptr, WS_CHILD | WS_VISIBLE,
                              CRect(0, 0, 0, 0), this, AFX_IDW_STATUS_BAR)))
        return FALSE;
    m_statusLine.SendMessage(StatusControl::kSetPanes, static_cast<WPARAM>(std::max(panes, 0)));
    RecalcLayout();
    return TRUE;
}

void CFrameWnd::SetPaneText(int pane, LPCTSTR text) {
    if (m_statusLine.m_hWnd != nullptr)
        m_statusLine.SendMessage(StatusControl::kSetText, static_cast<WPARAM>(pane) + 1,
                                 reinterpret_cast<LPARAM>(text));
}

CString CFrameWnd::GetPaneText(int pane) const {
    std::string text;
    if (m_statusLine.m_hWnd != nullptr)
        m_statusLine.SendMessage(StatusControl::kGetText, static_cast<WPARAM>(pane) + 1,
                                 reinterpret_cast<LPARAM>(&text));
    return text.c_str();
}

void CFrameWnd::GetPaneRect(LPRECT rect) const {
    GetClientRect(rect);
    if (m_menuBar.m_hWnd != nullptr && m_menu != nullptr)
        rect->top += static_cast<LONG>(
            m_menuBar.SendMessage(MenuBarControl::kGetHeight, static_cast<WPARAM>(rect->right)));
    if (m_statusLine.m_hWnd != nullptr) {
        CClientDC dc(nullptr);
        TEXTMETRIC metrics{};
        dc.GetTextMetrics(&metrics);
        rect->bottom -= metrics.tmHeight + 6;
    }
    rect->bottom = std::max(rect->bottom, rect->top);
}

void CFrameWnd::RecalcLayout() {
    if (m_hWnd == nullptr)
        return;
    CRect client;
    GetClientRect(client);
    CRect pane;
    GetPaneRect(pane);
    if (m_menuBar.m_hWnd != nullptr) {
        m_menuBar.ShowWindow(m_menu != nullptr ? SW_SHOW : SW_HIDE);
        m_menuBar.MoveWindow(0, 0, client.right, pane.top);
    }
    if (m_statusLine.m_hWnd != nullptr)
        m_statusLine.MoveWindow(0, pane.bottom, client.right, client.bottom - pane.bottom);
    if (CWnd* const view = GetDlgItem(AFX_IDW_PANE_FIRST))
        view->MoveWindow(pane);
}

void CFrameWnd::OnSize(UINT type, int cx, int cy) {
    CWnd::OnSize(type, cx, cy);
    RecalcLayout();
}

void CFrameWnd::OnSetFocus(CWnd* old) {
    CWnd::OnSetFocus(old);
    if (CWnd* const view = GetDlgItem(AFX_IDW_PANE_FIRST))
        view->SetFocus();
}

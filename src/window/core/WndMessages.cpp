// How a CWnd handles messages: dispatch through the message map, commands, reflection.
#include "vnbytstr/window/Wnd.h"

#include "src/window/core/WindowInternal.h"

using vnbytstr::detail::Window;

IMPLEMENT_DYNAMIC(CWnd, CCmdTarget)
BEGIN_MESSAGE_MAP(CWnd, CCmdTarget)
END_MESSAGE_MAP()

namespace {

MSG currentMessage{};

bool IsCtlColor(UINT message) { return message >= WM_CTLCOLOREDIT && message <= WM_CTLCOLORSTATIC; }

/// The control that sent a notification to its parent; null for other messages.
HWND SenderOf(UINT message, LPARAM lParam) {
    if (lParam == 0)
        return nullptr;
    switch (message) {
    case WM_COMMAND:
    case WM_HSCROLL:
    case WM_VSCROLL:
    case WM_VKEYTOITEM:
    case WM_CHARTOITEM:
        return reinterpret_cast<HWND>(lParam);
    case WM_NOTIFY:
        return reinterpret_cast<const NMHDR*>(lParam)->hwndFrom;
    case WM_DRAWITEM:
        return reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)->hwndItem;
    case WM_DELETEITEM:
        return reinterpret_cast<const DELETEITEMSTRUCT*>(lParam)->hwndItem;
    case WM_COMPAREITEM:
        return reinterpret_cast<const COMPAREITEMSTRUCT*>(lParam)->hwndItem;
    default:
        return IsCtlColor(message) ? reinterpret_cast<HWND>(lParam) : nullptr;
    }
}

} // namespace

LRESULT CWnd::Dispatch(CWnd& object, UINT message, WPARAM wParam, LPARAM lParam) {
    const MSG before = currentMessage;
    currentMessage = {object.m_hWnd, message, wParam, lParam, 0, {0, 0}};
    const LRESULT result = object.WindowProc(message, wParam, lParam);
    currentMessage = before;
    return result;
}

const MSG* CWnd::GetCurrentMessage() { return &currentMessage; }

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    if (OnWndMsg(message, wParam, lParam, &result))
        return result;
    return DefWindowProc(message, wParam, lParam);
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    Window* window = Window::Of(m_hWnd);
    return window != nullptr ? window->DefaultProc(message, wParam, lParam) : 0;
}

LRESULT CWnd::Default() {
    const MSG message = currentMessage;
    return DefWindowProc(message.message, message.wParam, message.lParam);
}

BOOL CWnd::PreTranslateMessage(MSG* /*message*/) { return FALSE; }

BOOL CWnd::OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    if (message == WM_COMMAND) {
        if (!OnCommand(wParam, lParam))
            return FALSE;
        *result = 1;
        return TRUE;
    }
    if (message == WM_NOTIFY) {
        *result = 0;
        return lParam != 0 && OnNotify(wParam, lParam, result);
    }
    AFX_CTLCOLOR color{};
    const bool isColor = IsCtlColor(message);
    const AFX_MSGMAP_ENTRY* entry = FindMessageEntry(isColor ? WM_CTLCOLOREDIT : message, 0, 0);
    if (entry != nullptr) {
        if (isColor) {
            color = {reinterpret_cast<HWND>(lParam), reinterpret_cast<HDC>(wParam), message};
            lParam = reinterpret_cast<LPARAM>(&color);
        }
        *result = entry->pfn(this, wParam, lParam);
        return !isColor || *result != 0;
    }
    if (HWND sender = SenderOf(message, lParam); sender != nullptr && sender != m_hWnd)
        return ReflectMessage(sender, message, wParam, lParam, result);
    if (message == WM_MEASUREITEM && lParam != 0) {
        // The message names its sender by id only.
        const auto* item = reinterpret_cast<const MEASUREITEMSTRUCT*>(lParam);
        Window* own = Window::Of(m_hWnd);
        Window* child = own != nullptr ? own->ChildOf(static_cast<int>(item->CtlID)) : nullptr;
        return child != nullptr && ReflectMessage(child->Handle(), message, wParam, lParam, result);
    }
    return FALSE;
}

BOOL CWnd::OnCommand(WPARAM wParam, LPARAM lParam) {
    const UINT id = LOWORD(wParam);
    const int code = static_cast<std::int16_t>(HIWORD(wParam));
    auto* control = reinterpret_cast<HWND>(lParam);
    if (control == nullptr)
        return id != 0 && OnCmdMsg(id, CN_COMMAND, nullptr);
    LRESULT result = 0;
    if (ReflectMessage(control, WM_COMMAND, wParam, lParam, &result))
        return TRUE;
    return OnCmdMsg(id, code, nullptr);
}

BOOL CWnd::OnNotify(WPARAM wParam, LPARAM lParam, LRESULT* result) {
    auto* header = reinterpret_cast<NMHDR*>(lParam);
    if (ReflectMessage(header->hwndFrom, WM_NOTIFY, wParam, lParam, result))
        return TRUE;
    AFX_NOTIFY notify{result, header};
    const AFX_MSGMAP_ENTRY* entry = FindMessageEntry(WM_NOTIFY, static_cast<int>(header->code),
                                                     static_cast<UINT>(header->idFrom));
    return entry != nullptr &&
           entry->pfn(this, header->idFrom, reinterpret_cast<LPARAM>(&notify)) != 0;
}

BOOL CWnd::OnCmdMsg(UINT id, int code, void* extra) {
    return CCmdTarget::OnCmdMsg(id, code, extra);
}

BOOL CWnd::OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    return ReflectChildNotify(message, wParam, lParam, result);
}

BOOL CWnd::ReflectChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    if (message == WM_COMMAND) {
        const AFX_MSGMAP_ENTRY* entry = FindMessageEntry(
            WM_REFLECT_BASE + WM_COMMAND, static_cast<std::int16_t>(HIWORD(wParam)), 0);
        return entry != nullptr && entry->pfn(this, wParam, lParam) != 0;
    }
    if (message == WM_NOTIFY) {
        auto* header = reinterpret_cast<NMHDR*>(lParam);
        AFX_NOTIFY notify{result, header};
        const AFX_MSGMAP_ENTRY* entry =
            FindMessageEntry(WM_REFLECT_BASE + WM_NOTIFY, static_cast<int>(header->code), 0);
        return entry != nullptr && entry->pfn(this, wParam, reinterpret_cast<LPARAM>(&notify)) != 0;
    }
    const bool isColor = IsCtlColor(message);
    const AFX_MSGMAP_ENTRY* entry =
        FindMessageEntry(WM_REFLECT_BASE + (isColor ? WM_CTLCOLOREDIT : message), 0, 0);
    if (entry == nullptr)
        return FALSE;
    const LRESULT answer =
        entry->pfn(this, wParam, isColor ? static_cast<LPARAM>(message) : lParam);
    if (result != nullptr)
        *result = answer;
    return !isColor || answer != 0;
}

BOOL CWnd::ReflectMessage(HWND child, UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    Window* window = Window::Of(child);
    return window != nullptr && window->Object() != nullptr &&
           window->Object()->OnChildNotify(message, wParam, lParam, result);
}

BOOL CWnd::ReflectLastMsg(HWND child, LRESULT* result) {
    const MSG message = currentMessage;
    LRESULT ignored = 0;
    return ReflectMessage(child, message.message, message.wParam, message.lParam,
                          result != nullptr ? result : &ignored);
}

// --- default handlers --------------------------------------------------------------------------

int CWnd::OnCreate(LPCREATESTRUCT) { return static_cast<int>(Default()); }
void CWnd::OnDestroy() { Default(); }
void CWnd::OnEnable(BOOL) { Default(); }
void CWnd::OnSize(UINT, int, int) { Default(); }
void CWnd::OnSetFocus(CWnd*) { Default(); }
void CWnd::OnKillFocus(CWnd*) { Default(); }
void CWnd::OnPaint() { Default(); }
void CWnd::OnClose() { Default(); }
void CWnd::OnSysColorChange() { Default(); }
void CWnd::OnCancelMode() { Default(); }
BOOL CWnd::OnSetCursor(CWnd*, UINT, UINT) { return static_cast<BOOL>(Default()); }

void CWnd::OnWindowPosChanging(WINDOWPOS*) { Default(); }
void CWnd::OnGetMinMaxInfo(MINMAXINFO*) { Default(); }
void CWnd::OnContextMenu(CWnd*, CPoint) { Default(); }
UINT CWnd::OnGetDlgCode() { return static_cast<UINT>(Default()); }
void CWnd::OnKeyDown(UINT, UINT, UINT) { Default(); }
void CWnd::OnChar(UINT, UINT, UINT) { Default(); }
void CWnd::OnTimer(std::uintptr_t) { Default(); }
void CWnd::OnHScroll(UINT, UINT, CWnd* bar) {
    if (bar == nullptr || !ReflectLastMsg(bar->m_hWnd))
        Default();
}
void CWnd::OnVScroll(UINT, UINT, CWnd* bar) {
    if (bar == nullptr || !ReflectLastMsg(bar->m_hWnd))
        Default();
}
void CWnd::OnMouseMove(UINT, CPoint) { Default(); }
void CWnd::OnLButtonDown(UINT, CPoint) { Default(); }
void CWnd::OnLButtonUp(UINT, CPoint) { Default(); }
void CWnd::OnLButtonDblClk(UINT, CPoint) { Default(); }
void CWnd::OnRButtonDown(UINT, CPoint) { Default(); }
BOOL CWnd::OnMouseWheel(UINT, short, CPoint) { return static_cast<BOOL>(Default()); }
void CWnd::OnMouseLeave() { Default(); }

HBRUSH CWnd::OnCtlColor(CDC* dc, CWnd* control, UINT type) {
    LRESULT result = 0;
    if (dc != nullptr && control != nullptr)
        ReflectMessage(control->m_hWnd, type, reinterpret_cast<WPARAM>(dc->GetSafeHdc()),
                       reinterpret_cast<LPARAM>(control->m_hWnd), &result);
    return reinterpret_cast<HBRUSH>(result);
}

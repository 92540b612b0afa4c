// CWnd: making, placing and asking windows.
#include "vnbytstr/window/Wnd.h"

#include "src/window/core/WindowWidget.h"
#include "src/window/draw/DeviceContext.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/WindowFunctions.h"

#include "vnbytstr/Interaction.h"

#include <QApplication>
#include <QScreen>
#include <QScrollBar>

#include <algorithm>
#include <cstdlib>
#include <string>

using vnbytstr::detail::Window;

const CWnd CWnd::wndTop;
const CWnd CWnd::wndBottom;

namespace {

Window* Of(const CWnd* object) { return Window::Of(object); }
CWnd* ObjectOf(Window* window) { return window != nullptr ? window->ObjectOrTemporary() : nullptr; }

} // namespace

CWnd::~CWnd() {
    if (m_hWnd == nullptr)
        return;
    if (m_subclassed)
        CWnd::DestroyWindow();
    else if (Window* window = Of(this); window != nullptr && window->Object() == this)
        window->Attach(nullptr);
}

HWND CWnd::GetSafeHwnd() const { return m_hWnd; }

BOOL CWnd::Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT& rect,
                  CWnd* parent, UINT id, void* context) {
    return parent != nullptr &&
           CreateEx(0, className, windowName, style | WS_CHILD, rect, parent, id, context);
}

BOOL CWnd::CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style,
                    const RECT& rect, CWnd* parent, UINT id, void* param) {
    if (m_hWnd != nullptr)
        return FALSE;
    CREATESTRUCT create{};
    create.lpCreateParams = param;
    create.hMenu = reinterpret_cast<HMENU>(static_cast<std::uintptr_t>(id));
    create.hwndParent = parent != nullptr ? parent->m_hWnd : nullptr;
    create.x = rect.left;
    create.y = rect.top;
    create.cx = rect.right - rect.left;
    create.cy = rect.bottom - rect.top;
    create.style = style;
    create.lpszName = windowName;
    create.lpszClass = className;
    create.dwExStyle = exStyle;
    if (!PreCreateWindow(create)) {
        PostNcDestroy();
        return FALSE;
    }
    m_subclassed = TRUE;
    return Window::Create(create, this, nullptr) != nullptr;
}

BOOL CWnd::CreateInWidget(QWidget* parent, LPCTSTR className, LPCTSTR windowName, DWORD style,
                          const RECT& rect, UINT id) {
    if (m_hWnd != nullptr || parent == nullptr)
        return FALSE;
    CREATESTRUCT create{};
    create.hMenu = reinterpret_cast<HMENU>(static_cast<std::uintptr_t>(id));
    create.x = rect.left;
    create.y = rect.top;
    create.cx = rect.right - rect.left;
    create.cy = rect.bottom - rect.top;
    create.style = style | WS_CHILD;
    create.lpszName = windowName;
    create.lpszClass = className;
    if (!PreCreateWindow(create)) {
        PostNcDestroy();
        return FALSE;
    }
    m_subclassed = TRUE;
    return Window::Create(create, this, parent) != nullptr;
}

BOOL CWnd::PreCreateWindow(CREATESTRUCT& /*create*/) { return TRUE; }

BOOL CWnd::DestroyWindow() {
    Window* window = Of(this);
    if (window == nullptr)
        return FALSE;
    window->Destroy();
    return TRUE;
}

void CWnd::PostNcDestroy() {}
void CWnd::PreSubclassWindow() {}

BOOL CWnd::Attach(HWND handle) {
    Window* window = Window::Of(handle);
    if (window == nullptr || window->Object() != nullptr || m_hWnd != nullptr)
        return FALSE;
    m_hWnd = handle;
    window->Attach(this);
    return TRUE;
}

HWND CWnd::Detach() {
    HWND handle = m_hWnd;
    if (Window* window = Of(this); window != nullptr && window->Object() == this)
        window->Attach(nullptr);
    m_hWnd = nullptr;
    m_subclassed = FALSE;
    return handle;
}

CWnd* CWnd::FromHandle(HWND handle) { return ObjectOf(Window::Of(handle)); }

QWidget* CWnd::GetWidget() const {
    Window* window = Of(this);
    return window != nullptr ? window->Widget() : nullptr;
}

CWnd* CWnd::FromWidget(const QWidget* widget) { return ObjectOf(Window::Of(widget)); }

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) const {
    return ::SendMessage(m_hWnd, message, wParam, lParam);
}

BOOL CWnd::PostMessage(UINT message, WPARAM wParam, LPARAM lParam) const {
    return ::PostMessage(m_hWnd, message, wParam, lParam);
}

LRESULT CWnd::SendDlgItemMessage(int id, UINT message, WPARAM wParam, LPARAM lParam) const {
    return ::SendMessage(::GetDlgItem(m_hWnd, id), message, wParam, lParam);
}

// --- place, state, order -----------------------------------------------------------------------

DWORD CWnd::GetStyle() const {
    Window* window = Of(this);
    return window != nullptr ? window->Style() : 0;
}

DWORD CWnd::GetExStyle() const {
    Window* window = Of(this);
    return window != nullptr ? window->ExStyle() : 0;
}

BOOL CWnd::ModifyStyle(DWORD remove, DWORD add, UINT flags) {
    Window* window = Of(this);
    if (window == nullptr)
        return FALSE;
    const DWORD next = (window->Style() & ~remove) | add;
    if (next == window->Style())
        return FALSE;
    ::SetWindowLong(m_hWnd, GWL_STYLE, static_cast<LONG>(next));
    if (flags != 0)
        SetWindowPos(nullptr, 0, 0, 0, 0,
                     flags | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    return TRUE;
}

BOOL CWnd::ModifyStyleEx(DWORD remove, DWORD add, UINT flags) {
    Window* window = Of(this);
    if (window == nullptr)
        return FALSE;
    const DWORD next = (window->ExStyle() & ~remove) | add;
    if (next == window->ExStyle())
        return FALSE;
    ::SetWindowLong(m_hWnd, GWL_EXSTYLE, static_cast<LONG>(next));
    if (flags != 0)
        SetWindowPos(nullptr, 0, 0, 0, 0,
                     flags | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    return TRUE;
}

int CWnd::GetDlgCtrlID() const { return ::GetDlgCtrlID(m_hWnd); }

void CWnd::MoveWindow(int x, int y, int width, int height, BOOL /*repaint*/) {
    SetWindowPos(nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

BOOL CWnd::SetWindowPos(const CWnd* after, int x, int y, int cx, int cy, UINT flags) {
    Window* window = Of(this);
    if (window == nullptr)
        return FALSE;
    HWND behind = after == &wndBottom ? reinterpret_cast<HWND>(1)
                  : after != nullptr  ? after->m_hWnd
                                      : nullptr;
    return window->SetPos(behind, x, y, cx, cy, flags);
}

void CWnd::GetWindowRect(LPRECT rect) const { ::GetWindowRect(m_hWnd, rect); }
void CWnd::GetClientRect(LPRECT rect) const { ::GetClientRect(m_hWnd, rect); }

void CWnd::ClientToScreen(LPPOINT point) const {
    Window* window = Of(this);
    if (window == nullptr || point == nullptr)
        return;
    const QPoint global = window->ClientToGlobal(*point);
    *point = CPoint(global.x(), global.y());
}

void CWnd::ClientToScreen(LPRECT rect) const { MapWindowPoints(nullptr, rect); }

void CWnd::ScreenToClient(LPPOINT point) const {
    Window* window = Of(this);
    if (window != nullptr && point != nullptr)
        *point = window->GlobalToClient(QPoint(point->x, point->y));
}

void CWnd::ScreenToClient(LPRECT rect) const {
    Window* window = Of(this);
    if (window == nullptr || rect == nullptr)
        return;
    const QPoint origin = window->Widget()->mapFromGlobal(QPoint(rect->left, rect->top));
    *rect = window->ToClient(
        QRect(origin.x(), origin.y(), rect->right - rect->left, rect->bottom - rect->top));
}

void CWnd::MapWindowPoints(CWnd* to, LPPOINT points, UINT count) const {
    for (UINT i = 0; i < count && points != nullptr; ++i) {
        ClientToScreen(&points[i]);
        if (to != nullptr)
            to->ScreenToClient(&points[i]);
    }
}

void CWnd::MapWindowPoints(CWnd* to, LPRECT rect) const {
    Window* window = Of(this);
    if (window == nullptr || rect == nullptr)
        return;
    const QRect area = window->ToWidget(*rect);
    const QPoint global = window->Widget()->mapToGlobal(area.topLeft());
    *rect = CRect(CPoint(global.x(), global.y()), CSize(area.width(), area.height()));
    if (to != nullptr)
        to->ScreenToClient(rect);
}

BOOL CWnd::ShowWindow(int command) { return ::ShowWindow(m_hWnd, command); }

BOOL CWnd::IsWindowVisible() const {
    const QWidget* widget = GetWidget();
    return widget != nullptr && widget->isVisible();
}

BOOL CWnd::EnableWindow(BOOL on) { return ::EnableWindow(m_hWnd, on); }

BOOL CWnd::IsWindowEnabled() const {
    Window* window = Of(this);
    return window != nullptr && (window->Style() & WS_DISABLED) == 0;
}

void CWnd::CenterWindow(CWnd* around) {
    const QWidget* widget = GetWidget();
    if (widget == nullptr)
        return;
    const CWnd* middle = around != nullptr ? around : GetParent();
    CRect place;
    const bool child = (GetStyle() & WS_CHILD) != 0;
    if (middle != nullptr && child) {
        middle->GetClientRect(place);
    } else if (middle != nullptr) {
        middle->GetWindowRect(place);
    } else if (const QScreen* screen = widget->screen()) {
        const QRect area = screen->availableGeometry();
        place = CRect(CPoint(area.x(), area.y()), CSize(area.width(), area.height()));
    }
    SetWindowPos(nullptr, place.left + (place.Width() - widget->width()) / 2,
                 place.top + (place.Height() - widget->height()) / 2, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// --- text and font -----------------------------------------------------------------------------

void CWnd::SetWindowText(LPCTSTR text) {
    SendMessage(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text != nullptr ? text : ""));
}

int CWnd::GetWindowText(LPTSTR buffer, int size) const {
    if (buffer == nullptr || size <= 0)
        return 0;
    buffer[0] = '\0';
    return static_cast<int>(
        SendMessage(WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(buffer)));
}

void CWnd::GetWindowText(CString& text) const {
    const int length = GetWindowTextLength();
    char* buffer = text.GetBuffer(length);
    const int copied = GetWindowText(buffer, length + 1);
    text.ReleaseBuffer(copied);
}

int CWnd::GetWindowTextLength() const { return static_cast<int>(SendMessage(WM_GETTEXTLENGTH)); }

void CWnd::SetFont(CFont* font, BOOL redraw) {
    SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(font != nullptr ? font->m_hObject : nullptr),
                redraw != 0 ? 1 : 0);
}

CFont* CWnd::GetFont() const {
    return CFont::FromHandle(reinterpret_cast<HFONT>(SendMessage(WM_GETFONT)));
}

// --- painting ----------------------------------------------------------------------------------

void CWnd::Invalidate(BOOL erase) { ::InvalidateRect(m_hWnd, nullptr, erase); }
void CWnd::InvalidateRect(LPCRECT rect, BOOL erase) { ::InvalidateRect(m_hWnd, rect, erase); }
void CWnd::UpdateWindow() {
    // A repaint with an empty region handles what is noted for the window.
    QWidget* widget = GetWidget();
    if (widget != nullptr && widget->isVisible())
        QCoreApplication::sendPostedEvents(widget->window(), QEvent::UpdateRequest);
}

void CWnd::SetRedraw(BOOL on) { SendMessage(WM_SETREDRAW, on != 0 ? 1 : 0); }

// --- focus, mouse, time ------------------------------------------------------------------------

CWnd* CWnd::GetFocus() { return FromHandle(::GetFocus()); }
CWnd* CWnd::SetFocus() { return m_hWnd != nullptr ? FromHandle(::SetFocus(m_hWnd)) : nullptr; }
CWnd* CWnd::GetActiveWindow() { return FromHandle(::GetActiveWindow()); }

CWnd* CWnd::SetActiveWindow() {
    CWnd* before = GetActiveWindow();
    if (QWidget* widget = GetWidget())
        widget->window()->activateWindow();
    return before;
}

CWnd* CWnd::GetCapture() { return FromHandle(::GetCapture()); }
CWnd* CWnd::SetCapture() { return FromHandle(::SetCapture(m_hWnd)); }

std::uintptr_t CWnd::SetTimer(std::uintptr_t id, UINT milliseconds, void* /*function*/) {
    Window* window = Of(this);
    if (window == nullptr)
        return 0;
    window->StartTimer(id, milliseconds);
    return id != 0 ? id : 1;
}

BOOL CWnd::KillTimer(std::uintptr_t id) {
    Window* window = Of(this);
    return window != nullptr && window->StopTimer(id);
}

int CWnd::MessageBox(LPCTSTR text, LPCTSTR caption, UINT type) {
    return vnbytstr::Interaction::Current().MessageBox(text, caption, type, 0);
}

void CWnd::SetAccessibleName(LPCTSTR name) {
    Window* window = Of(this);
    if (window == nullptr)
        return;
    const QString text = vnbytstr::detail::ToQString(name != nullptr ? name : "");
    QWidget* const widget = window->Widget();
    widget->setAccessibleName(text);
    if (QWidget* const field = widget->focusProxy(); field != nullptr) // that of a system class
        field->setAccessibleName(text);
}

void CWnd::SetAccessibleTable(CAccessibleTable* table) {
    if (Window* window = Of(this))
        window->SetAccessible(table);
}

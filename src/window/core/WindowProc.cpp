// Handling a message: the object, the class, and what is common to all windows.
#include "src/window/core/WindowWidget.h"
#include "src/window/draw/DeviceContext.h"
#include "src/window/draw/GdiInternal.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/WindowFunctions.h"
#include "vnbytstr/window/Wnd.h"

#include <QApplication>
#include <QScrollBar>

#include <algorithm>
#include <cstring>

namespace vnbytstr::detail {
namespace {

bool IsRoutedInput(UINT message) {
    return (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
           (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST) || message == WM_CONTEXTMENU;
}

bool IsKey(UINT message) { return message >= WM_KEYFIRST && message <= WM_KEYLAST; }

/// Whether the hosted widget's event belongs to this message.
bool CarriesEvent(RoutedEvent& routed, UINT message) {
    switch (routed.Event()->type()) {
    case QEvent::KeyPress:
    case QEvent::InputMethod:
        if (message == WM_CHAR || message == WM_SYSCHAR)
            return --routed.m_charsToCome == 0;
        return (message == WM_KEYDOWN || message == WM_SYSKEYDOWN) && routed.m_charsToCome == 0;
    case QEvent::KeyRelease:
        return message == WM_KEYUP || message == WM_SYSKEYUP;
    case QEvent::Wheel:
        return message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL;
    case QEvent::ContextMenu:
        return message == WM_CONTEXTMENU;
    default:
        return message >= WM_MOUSEFIRST && message <= WM_MBUTTONDBLCLK;
    }
}

} // namespace

LRESULT CopyOut(std::string_view text, char* buffer, std::size_t size) {
    if (buffer == nullptr || size == 0)
        return 0;
    const std::size_t count = text.copy(buffer, size - 1);
    buffer[count] = '\0';
    return static_cast<LRESULT>(count);
}

LRESULT Window::Send(UINT message, WPARAM wParam, LPARAM lParam) {
    const Busy busy(this);
    if (m_object != nullptr)
        return CWnd::Dispatch(*m_object, message, wParam, lParam);
    return DefaultProc(message, wParam, lParam);
}

LRESULT Window::DefaultProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const Busy busy(this);
    if (m_control)
        return m_control->Proc(message, wParam, lParam);
    WNDPROC procedure = m_class->info.lpfnWndProc;
    if (procedure != nullptr && procedure != ::DefWindowProc)
        return procedure(Handle(), message, wParam, lParam);
    return GenericProc(message, wParam, lParam);
}

LRESULT Window::GenericProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (IsRoutedInput(message)) {
        RoutedEvent* routed = RoutedEvent::Current();
        if (routed != nullptr && routed->IsFor(this)) {
            if (CarriesEvent(*routed, message))
                routed->Deliver();
            return 0;
        }
        if (IsKey(message))
            MarkKeyUnused();
    }
    switch (message) {
    case WM_NCCREATE:
        return 1;
    case WM_CLOSE:
        Destroy();
        return 0;
    case WM_PAINT: {
        bool erase = false;
        RECT paint{};
        EndWindowPaint(BeginWindowPaint(*this, erase, paint));
        return 0;
    }
    case WM_ERASEBKGND: {
        COLORREF color = 0;
        if (!BrushColor(m_class->info.hbrBackground, color))
            return 0;
        CRect all;
        ::GetClientRect(Handle(), all);
        if (CDC* dc = CDC::FromHandle(reinterpret_cast<HDC>(wParam)))
            dc->FillSolidRect(all, color);
        return 1;
    }
    case WM_SETTEXT:
        m_text = lParam != 0 ? reinterpret_cast<const char*>(lParam) : "";
        m_widget->setWindowTitle(ToQString(m_text));
        Invalidate(nullptr);
        return 1;
    case WM_GETTEXT:
        return CopyOut(m_text, reinterpret_cast<char*>(lParam), static_cast<std::size_t>(wParam));
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(m_text.size());
    case WM_SETFONT:
        ApplyFont(reinterpret_cast<HFONT>(wParam), LOWORD(lParam) != 0);
        return 0;
    case WM_GETFONT:
        return reinterpret_cast<LRESULT>(m_font);
    case WM_SETREDRAW:
        m_widget->setUpdatesEnabled(wParam != 0);
        return 0;
    case WM_SETCURSOR:
        return DefaultSetCursor(lParam);
    case WM_CANCELMODE:
        if (GetCapture() == Handle())
            ReleaseCapture();
        return 0;
    case WM_MOUSEWHEEL:
    case WM_MOUSEHWHEEL:
        return DefaultWheel(message, wParam, lParam);
    case WM_CONTEXTMENU: {
        Window* parent = (m_style & WS_CHILD) != 0 ? Parent() : nullptr;
        if (parent != nullptr)
            return parent->Send(message, wParam, lParam);
        s_isMenuLeft = true;
        return 0;
    }
    case WM_NCHITTEST:
        return HTCLIENT;
    case WM_SYSCOMMAND:
        if ((wParam & 0xFFF0) == SC_CLOSE)
            Send(WM_CLOSE);
        return 0;
    default:
        return 0;
    }
}

LRESULT Window::DefaultSetCursor(LPARAM lParam) {
    if (GET_X_LPARAM(lParam) != HTCLIENT || m_hosted)
        return 0; // a hosted widget sets its own pointer
    HCURSOR cursor = m_class->info.hCursor;
    SetCursor(cursor != nullptr ? cursor : LoadCursor(nullptr, IDC_ARROW));
    return 1;
}

LRESULT Window::DefaultWheel(UINT message, WPARAM wParam, LPARAM lParam) {
    const bool vertical = message == WM_MOUSEWHEEL;
    const QScrollBar* bar = m_bars[vertical ? SB_VERT : SB_HORZ];
    if ((m_style & (vertical ? WS_VSCROLL : WS_HSCROLL)) != 0 && bar != nullptr &&
        bar->isEnabled()) {
        // Fine wheels and touch pads turn by less than a notch at a time.
        m_wheelRest += GET_WHEEL_DELTA_WPARAM(wParam) * QApplication::wheelScrollLines();
        const int lines = m_wheelRest / WHEEL_DELTA;
        m_wheelRest -= lines * WHEEL_DELTA;
        HWND handle = Handle();
        for (int i = 0; i < std::abs(lines) && Of(handle) != nullptr; ++i)
            Send(vertical ? WM_VSCROLL : WM_HSCROLL,
                 (lines > 0) == vertical ? SB_LINEUP : SB_LINEDOWN, 0);
        return 0;
    }
    Window* parent = (m_style & WS_CHILD) != 0 ? Parent() : nullptr;
    if (parent != nullptr)
        return parent->Send(message, wParam, lParam);
    MarkKeyUnused();
    return 0;
}

QFont Window::QtFont() const { return FontOf(m_font); }

} // namespace vnbytstr::detail

// A window's geometry: position and client area.
#include "src/window/core/WindowInternal.h"

#include "src/window/core/WindowWidget.h"
#include "src/window/draw/Overlay.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <QApplication>
#include <QScrollBar>

#include <algorithm>

namespace vnbytstr::detail {
namespace {

int BorderWidth(const Window& window) {
    if ((window.Style() & WS_CHILD) == 0 && (window.Style() & WS_CAPTION) == WS_CAPTION)
        return 0;
    if ((window.ExStyle() & WS_EX_CLIENTEDGE) != 0)
        return 2;
    return (window.Style() & WS_BORDER) != 0 || (window.ExStyle() & WS_EX_STATICEDGE) != 0 ? 1 : 0;
}

} // namespace

// --- geometry --------------------------------------------------------------------------------

QRect Window::InnerArea() const {
    const int border = BorderWidth(*this);
    return m_widget->rect().adjusted(border, border, -border, -border);
}

QRect Window::ClientArea() const {
    QRect area = InnerArea();
    if ((m_style & WS_VSCROLL) != 0 && m_bars[1] != nullptr) {
        const int width = GetSystemMetrics(SM_CXVSCROLL);
        const bool left = ((m_exStyle & WS_EX_LEFTSCROLLBAR) != 0) != IsMirrored();
        area.adjust(left ? width : 0, 0, left ? 0 : -width, 0);
    }
    if ((m_style & WS_HSCROLL) != 0 && m_bars[0] != nullptr)
        area.adjust(0, 0, 0, -GetSystemMetrics(SM_CYHSCROLL));
    area.setSize(area.size().expandedTo(QSize(0, 0)));
    return area;
}

QPoint Window::ToWidget(POINT client) const {
    const QRect area = ClientArea();
    return {IsMirrored() ? area.x() + area.width() - 1 - client.x : area.x() + client.x,
            area.y() + client.y};
}

QRect Window::ToWidget(const RECT& client) const {
    const QRect area = ClientArea();
    const int x = IsMirrored() ? area.x() + area.width() - client.right : area.x() + client.left;
    return {x, area.y() + client.top, client.right - client.left, client.bottom - client.top};
}

CPoint Window::ToClient(QPoint widget) const {
    const QRect area = ClientArea();
    return {IsMirrored() ? area.x() + area.width() - 1 - widget.x() : widget.x() - area.x(),
            widget.y() - area.y()};
}

CRect Window::ToClient(const QRect& widget) const {
    const QRect area = ClientArea();
    const int left = IsMirrored() ? area.x() + area.width() - widget.x() - widget.width()
                                  : widget.x() - area.x();
    return {left, widget.y() - area.y(), left + widget.width(),
            widget.y() - area.y() + widget.height()};
}

CPoint Window::GlobalToClient(QPoint global) const {
    return ToClient(m_widget->mapFromGlobal(global));
}

QPoint Window::ClientToGlobal(POINT client) const {
    return m_widget->mapToGlobal(ToWidget(client));
}

bool Window::SetPos(HWND after, int x, int y, int cx, int cy, UINT flags) {
    HWND handle = Handle();
    WINDOWPOS place{handle, after, x, y, cx, cy, flags};
    Send(WM_WINDOWPOSCHANGING, 0, reinterpret_cast<LPARAM>(&place));
    if (Of(handle) == nullptr)
        return false;
    const Window* parent = (m_style & WS_CHILD) != 0 ? Parent() : nullptr;
    QRect now = m_widget->geometry();
    const CRect current =
        parent != nullptr ? parent->ToClient(now)
                          : CRect(now.x(), now.y(), now.x() + now.width(), now.y() + now.height());
    CRect next = current;
    if ((place.flags & SWP_NOMOVE) == 0)
        next.OffsetRect(place.x - next.left, place.y - next.top);
    if ((place.flags & SWP_NOSIZE) == 0)
        next = CRect(next.TopLeft(), CSize(std::max(place.cx, 0), std::max(place.cy, 0)));
    if (!(next == current) || (place.flags & (SWP_NOMOVE | SWP_NOSIZE)) == 0) {
        const QRect geometry = parent != nullptr
                                   ? parent->ToWidget(next)
                                   : QRect(next.left, next.top, next.Width(), next.Height());
        m_widget->m_placing = true;
        if (geometry != now)
            m_widget->setGeometry(geometry);
        if (Of(handle) == nullptr)
            return false;
        m_widget->m_placing = false;
    }
    if ((place.flags & SWP_NOZORDER) == 0) {
        if (place.hwndInsertAfter == nullptr) {
            m_widget->raise();
        } else if (Window* above = Of(place.hwndInsertAfter); above != nullptr) {
            if (above->m_widget->parentWidget() == m_widget->parentWidget())
                m_widget->stackUnder(above->m_widget);
        } else {
            m_widget->lower();
        }
    }
    if ((place.flags & SWP_SHOWWINDOW) != 0)
        m_widget->show();
    if ((place.flags & SWP_HIDEWINDOW) != 0)
        m_widget->hide();
    if (Of(handle) == nullptr)
        return false;
    Send(WM_WINDOWPOSCHANGED, 0, reinterpret_cast<LPARAM>(&place));
    if (Of(handle) != nullptr)
        UpdateLayout();
    return Of(handle) != nullptr;
}

void Window::Show(int command) {
    HWND handle = Handle();
    const bool show = command != SW_HIDE;
    if (show == !m_widget->isHidden() && command != SW_SHOWMAXIMIZED && command != SW_MINIMIZE &&
        command != SW_RESTORE)
        return;
    if (!show)
        PassFocusToParent();
    if (Of(handle) == nullptr)
        return;
    Send(WM_SHOWWINDOW, show ? 1 : 0, 0);
    if (Of(handle) == nullptr)
        return;
    WINDOWPOS place{handle,
                    nullptr,
                    0,
                    0,
                    0,
                    0,
                    SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER |
                        (show ? SWP_SHOWWINDOW : SWP_HIDEWINDOW)};
    Send(WM_WINDOWPOSCHANGING, 0, reinterpret_cast<LPARAM>(&place));
    if (Of(handle) == nullptr)
        return;
    m_style = show ? m_style | WS_VISIBLE : m_style & ~WS_VISIBLE;
    if (!show)
        m_widget->hide();
    else if (command == SW_SHOWMAXIMIZED)
        m_widget->showMaximized();
    else if (command == SW_SHOWMINIMIZED || command == SW_MINIMIZE)
        m_widget->showMinimized();
    else if (command == SW_RESTORE && m_widget->isWindow())
        m_widget->showNormal();
    else
        m_widget->show();
    if (Of(handle) == nullptr)
        return;
    if (show && m_widget->isWindow() && command != SW_SHOWNOACTIVATE && command != SW_SHOWNA &&
        (m_exStyle & WS_EX_NOACTIVATE) == 0)
        m_widget->activateWindow();
    Send(WM_WINDOWPOSCHANGED, 0, reinterpret_cast<LPARAM>(&place));
}

void Window::UpdateLayout() {
    const QRect inner = InnerArea();
    const QRect client = ClientArea();
    if (m_bars[1] != nullptr) {
        const int width = GetSystemMetrics(SM_CXVSCROLL);
        const bool left = client.x() > inner.x();
        m_bars[1]->setGeometry(left ? inner.x() : inner.x() + inner.width() - width, inner.y(),
                               width, client.height());
    }
    if (m_bars[0] != nullptr) {
        const int height = GetSystemMetrics(SM_CYHSCROLL);
        m_bars[0]->setGeometry(client.x(), inner.y() + inner.height() - height, client.width(),
                               height);
    }
    if (m_hosted)
        m_hosted->setGeometry(client);
    if (client.size() == m_sentSize)
        return;
    m_sentSize = client.size();
    const UINT type = m_widget->isMaximized() ? SIZE_MAXIMIZED : SIZE_RESTORED;
    Send(WM_SIZE, type, MAKELPARAM(client.width(), client.height()));
}

void Window::Invalidate(const RECT* rect) {
    const QRect area = rect != nullptr ? ToWidget(*rect) & ClientArea() : ClientArea();
    if (area.isEmpty())
        return;
    // Whatever was drawn here on the overlays of this window and its parents is out of date.
    for (Window* window = this; window != nullptr;) {
        if (window->m_overlay != nullptr && window->m_overlayWidget)
            window->m_overlay->Forget(area.translated(m_widget->mapTo(window->m_widget, QPoint())));
        window = (window->Style() & WS_CHILD) != 0 ? window->Parent() : nullptr;
    }
    m_widget->update(area);
    if (m_hosted)
        m_hosted->update();
}

bool Window::FocusNext(bool next) { return m_widget->FocusNext(next); }

Overlay& Window::GetOverlay() {
    if (!m_overlayWidget) {
        m_overlay = new Overlay(m_widget);
        m_overlayWidget = m_overlay;
    }
    return *m_overlay;
}

} // namespace vnbytstr::detail

#include "src/window/core/WindowWidget.h"

#include "src/window/draw/DeviceContext.h"
#include "src/window/draw/GdiInternal.h"
#include "src/window/draw/TextLayout.h"
#include "vnbytstr/window/WindowFunctions.h"
#include "vnbytstr/window/Wnd.h"

#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QScrollBar>
#include <QTimerEvent>

#include <utility>

namespace vnbytstr::detail {

int WindowWidget::s_depth = 0;
RoutedEvent* RoutedEvent::s_current = nullptr;

QEvent::Type PostedMessage::EventType() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

RoutedEvent::RoutedEvent(Window& window, QWidget* inner, QEvent* event)
    : m_window(&window), m_inner(inner), m_event(event), m_outer(s_current) {
    s_current = this;
}

RoutedEvent::~RoutedEvent() { s_current = m_outer; }

void RoutedEvent::Forget(const Window& window) {
    for (RoutedEvent* routed = s_current; routed != nullptr; routed = routed->m_outer)
        if (routed->m_window == &window)
            routed->m_window = nullptr;
}

void RoutedEvent::Deliver() {
    if (m_delivered || !m_inner)
        return;
    m_delivered = true;
    m_delivering = true;
    QCoreApplication::sendEvent(m_inner, m_event);
    m_delivering = false;
}

WindowWidget::WindowWidget(Window& window, QWidget* parent, Qt::WindowFlags flags)
    : QWidget(parent, flags), m_window(&window) {
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setWindowTitle(ToQString(window.Text()));
    if ((flags & Qt::WindowType_Mask) == Qt::ToolTip)
        setAttribute(Qt::WA_ShowWithoutActivating);
}

WindowWidget::~WindowWidget() {
    ++s_depth; // windows destroyed along with this widget must not delete widgets at once
    if (m_window != nullptr)
        m_window->OnWidgetEnds();
    --s_depth;
}

QSize WindowWidget::sizeHint() const {
    constexpr int kWidth = 240;
    constexpr int kHeight = 120;
    return {kWidth, kHeight};
}

bool WindowWidget::event(QEvent* event) {
    const Window::Busy busy;
    ++s_depth;
    const bool handled = (m_window != nullptr && HandleEvent(event)) || QWidget::event(event);
    --s_depth;
    return handled;
}

namespace {

bool IsMouse(QEvent::Type type) {
    return type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease ||
           type == QEvent::MouseButtonDblClick || type == QEvent::MouseMove;
}

bool SendContextMenu(Window& window, QContextMenuEvent* event) {
    const bool keyboard = event->reason() == QContextMenuEvent::Keyboard;
    const LPARAM place =
        keyboard ? MAKELPARAM(-1, -1) : MAKELPARAM(event->globalX(), event->globalY());
    Window::s_isMenuLeft = false;
    window.Send(WM_CONTEXTMENU, reinterpret_cast<WPARAM>(window.Handle()), place);
    return !std::exchange(Window::s_isMenuLeft, false);
}

void HandleDrop(DropSink& sink, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter:
        sink.DragEnter(static_cast<QDragEnterEvent*>(event));
        break;
    case QEvent::DragMove:
        sink.DragMove(static_cast<QDragMoveEvent*>(event));
        break;
    case QEvent::DragLeave:
        sink.DragLeave();
        break;
    default:
        sink.Drop(static_cast<QDropEvent*>(event));
        break;
    }
}

} // namespace

bool WindowWidget::HandleEvent(QEvent* event) {
    if (IsMouse(event->type())) {
        event->accept();
        SendMouseEvent(*m_window, this, static_cast<QMouseEvent*>(event));
        return true;
    }
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        if (SendKeyEvent(*m_window, static_cast<QKeyEvent*>(event)))
            event->accept();
        else
            event->ignore();
        return true;
    case QEvent::InputMethod:
        SendInputText(*m_window, static_cast<QInputMethodEvent*>(event)->commitString());
        event->accept();
        return true;
    case QEvent::Wheel:
        event->setAccepted(SendWheelEvent(*m_window, static_cast<QWheelEvent*>(event)));
        return true;
    case QEvent::Leave:
        SendMouseLeave(*m_window);
        return false;
    case QEvent::FocusIn:
        SendFocusIn(*m_window);
        return true;
    case QEvent::FocusOut:
        SendFocusOut(*m_window, static_cast<QFocusEvent*>(event)->reason());
        return true;
    case QEvent::ContextMenu:
        event->setAccepted(SendContextMenu(*m_window, static_cast<QContextMenuEvent*>(event)));
        return true;
    case QEvent::Close:
        event->ignore();
        m_window->Send(WM_CLOSE);
        return true;
    case QEvent::Timer:
        OnTimerEvent(static_cast<QTimerEvent*>(event)->timerId());
        return true;
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::DragLeave:
    case QEvent::Drop:
        if (m_window->Drop() == nullptr)
            return false;
        HandleDrop(*m_window->Drop(), event);
        return true;
    case QEvent::Move:
    case QEvent::Resize:
        if (!m_placing)
            OnMoved();
        return false;
    default:
        if (event->type() == PostedMessage::EventType()) {
            const auto* posted = static_cast<PostedMessage*>(event);
            m_window->Send(posted->m_message, posted->m_wParam, posted->m_lParam);
            return true;
        }
        OnChange(event);
        return false;
    }
}

/// A Qt host moved or sized the widget: WM_WINDOWPOSCHANGING may still change that.
void WindowWidget::OnMoved() {
    HWND handle = m_window->Handle();
    const Window* parent = (m_window->Style() & WS_CHILD) != 0 ? m_window->Parent() : nullptr;
    const CRect now = parent != nullptr ? parent->ToClient(geometry())
                                        : CRect(x(), y(), x() + width(), y() + height());
    WINDOWPOS place{handle,
                    nullptr,
                    now.left,
                    now.top,
                    now.Width(),
                    now.Height(),
                    SWP_NOZORDER | SWP_NOACTIVATE};
    m_placing = true;
    m_window->Send(WM_WINDOWPOSCHANGING, 0, reinterpret_cast<LPARAM>(&place));
    if (Window::Of(handle) == nullptr)
        return;
    const CRect wanted(place.x, place.y, place.x + place.cx, place.y + place.cy);
    if (!(wanted == now) && (m_window->Style() & WS_CHILD) != 0)
        setGeometry(parent != nullptr
                        ? parent->ToWidget(wanted)
                        : QRect(wanted.left, wanted.top, wanted.Width(), wanted.Height()));
    m_placing = false;
    m_window->Send(WM_WINDOWPOSCHANGED, 0, reinterpret_cast<LPARAM>(&place));
    if (Window::Of(handle) == nullptr)
        return;
    m_window->UpdateLayout();
    if (Window::Of(handle) != nullptr)
        m_window->Send(WM_MOVE, 0, MAKELPARAM(wanted.left, wanted.top));
}

void WindowWidget::OnTimerEvent(int qtId) {
    for (const auto& [id, timer] : m_window->m_timers)
        if (timer == qtId) {
            m_window->Send(WM_TIMER, id);
            return;
        }
}

void WindowWidget::OnChange(QEvent* event) {
    switch (event->type()) {
    case QEvent::PaletteChange:
    case QEvent::StyleChange:
        m_window->Send(WM_SYSCOLORCHANGE);
        break;
    case QEvent::FontChange:
    case QEvent::ApplicationFontChange:
        ForgetShapedText();
        break;
    case QEvent::EnabledChange: {
        // A Qt host may enable and disable the widget itself; a change of the parent's state is
        // ignored.
        const bool disabled = testAttribute(Qt::WA_ForceDisabled);
        const bool known = (m_window->Style() & WS_DISABLED) != 0;
        if (disabled != known) {
            m_window->m_style ^= WS_DISABLED;
            m_window->Send(WM_ENABLE, disabled ? 0 : 1);
        }
        break;
    }
    case QEvent::WindowActivate:
    case QEvent::WindowDeactivate:
        if (!isWindow())
            break;
        if (event->type() == QEvent::WindowDeactivate)
            CancelCapture();
        if (m_window != nullptr)
            m_window->Send(WM_ACTIVATE,
                           event->type() == QEvent::WindowActivate ? WA_ACTIVE : WA_INACTIVE);
        break;
    case QEvent::Hide:
        if (Window* capture = Window::Of(GetCapture());
            capture != nullptr && (capture->Widget() == this || isAncestorOf(capture->Widget())))
            CancelCapture();
        break;
    case QEvent::Show:
        m_window->UpdateLayout();
        break;
    default:
        break;
    }
}

bool WindowWidget::eventFilter(QObject* watched, QEvent* event) {
    auto* inner = qobject_cast<QWidget*>(watched);
    if (m_window == nullptr || inner == nullptr ||
        (RoutedEvent::Current() != nullptr && RoutedEvent::Current()->IsDelivering(event)))
        return false;
    const Window::Busy busy;
    ++s_depth;
    bool taken = false;
    if (IsMouse(event->type())) {
        RoutedEvent routed(*m_window, inner, event);
        SendMouseEvent(*m_window, inner, static_cast<QMouseEvent*>(event));
        taken = true;
    } else {
        switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease: {
            RoutedEvent routed(*m_window, inner, event);
            SendKeyEvent(*m_window, static_cast<QKeyEvent*>(event));
            event->accept(); // the ancestors were asked in PreTranslateMessage
            taken = true;
            break;
        }
        case QEvent::InputMethod: {
            const QString text = static_cast<QInputMethodEvent*>(event)->commitString();
            if (text.isEmpty())
                break;
            RoutedEvent routed(*m_window, inner, event);
            SendInputText(*m_window, text);
            taken = true;
            break;
        }
        case QEvent::Wheel: {
            RoutedEvent routed(*m_window, inner, event);
            SendWheelEvent(*m_window, static_cast<QWheelEvent*>(event));
            taken = true;
            break;
        }
        case QEvent::ContextMenu: {
            RoutedEvent routed(*m_window, inner, event);
            SendContextMenu(*m_window, static_cast<QContextMenuEvent*>(event));
            taken = true;
            break;
        }
        case QEvent::FocusIn:
            SendFocusIn(*m_window);
            break;
        case QEvent::FocusOut:
            SendFocusOut(*m_window, static_cast<QFocusEvent*>(event)->reason());
            break;
        default:
            break;
        }
    }
    --s_depth;
    return taken;
}

// --- painting --------------------------------------------------------------------------------

void WindowWidget::PaintFrame(QPainter& painter) {
    const QRect client = m_window->ClientArea();
    if (client == rect())
        return;
    const QRegion around = QRegion(rect()) - client;
    painter.setClipRegion(around);
    painter.fillRect(rect(), ToQColor(GetSysColor(COLOR_3DFACE)));
    const auto edge = [&](const QRect& r, COLORREF leftTop, COLORREF rightBottom) {
        painter.fillRect(r.x(), r.y(), r.width(), 1, ToQColor(leftTop));
        painter.fillRect(r.x(), r.y(), 1, r.height(), ToQColor(leftTop));
        painter.fillRect(r.x(), r.bottom(), r.width(), 1, ToQColor(rightBottom));
        painter.fillRect(r.right(), r.y(), 1, r.height(), ToQColor(rightBottom));
    };
    if ((m_window->ExStyle() & WS_EX_CLIENTEDGE) != 0) {
        edge(rect(), GetSysColor(COLOR_3DSHADOW), GetSysColor(COLOR_3DHIGHLIGHT));
        edge(rect().adjusted(1, 1, -1, -1), GetSysColor(COLOR_3DDKSHADOW),
             GetSysColor(COLOR_3DLIGHT));
    } else if ((m_window->ExStyle() & WS_EX_STATICEDGE) != 0) {
        edge(rect(), GetSysColor(COLOR_3DSHADOW), GetSysColor(COLOR_3DHIGHLIGHT));
    } else if ((m_window->Style() & WS_BORDER) != 0) {
        edge(rect(), GetSysColor(COLOR_WINDOWFRAME), GetSysColor(COLOR_WINDOWFRAME));
    }
}

void WindowWidget::paintEvent(QPaintEvent* event) {
    if (m_window == nullptr || m_session != nullptr)
        return;
    PaintSession session;
    session.painter = std::make_unique<QPainter>(this);
    PaintFrame(*session.painter);
    const QRect client = m_window->ClientArea();
    session.region = event->region() & client;
    session.painter->setClipRect(client);
    if (!session.region.isEmpty()) {
        m_session = &session;
        m_window->Send(WM_PAINT);
        m_session = nullptr;
    }
}

HDC BeginWindowPaint(Window& window, bool& erase, RECT& paint) {
    PaintSession* session = window.Widget()->Session();
    paint = RECT{};
    erase = false;
    if (session == nullptr) // outside a paint event
        return (new DeviceContext(DeviceContext::Kind::Measure, &window, nullptr))->Handle();
    auto* context = new DeviceContext(DeviceContext::Kind::Paint, &window, session->painter.get());
    paint = window.ToClient(session->region.boundingRect());
    if (!session->erased) {
        session->erased = true;
        HWND handle = window.Handle();
        const DeviceContext::State before = context->state;
        erase = window.Send(WM_ERASEBKGND, reinterpret_cast<WPARAM>(context->Handle())) == 0;
        context->state = before;
        if (erase && Window::Of(handle) != nullptr) {
            // Qt does not keep the old pixels: a window that erases nothing gets the surface's
            // background.
            CDC::FromHandle(context->Handle())->FillSolidRect(&paint, GetSysColor(COLOR_3DFACE));
        }
    }
    return context->Handle();
}

void EndWindowPaint(HDC dc) { const std::unique_ptr<DeviceContext> context(DeviceContext::Of(dc)); }

} // namespace vnbytstr::detail

// The Qt widget of a window: turns Qt's events into messages.
#pragma once

#include "src/window/core/WindowInternal.h"

#include <QEvent>
#include <QPainter>
#include <QPointer>
#include <QRegion>

#include <memory>

class QInputMethodEvent;
class QKeyEvent;
class QMouseEvent;
class QSinglePointEvent;
class QWheelEvent;

namespace vnbytstr::detail {

class DeviceContext;

/// What PostMessage puts into Qt's queue.
class PostedMessage : public QEvent {
public:
    PostedMessage(UINT message, WPARAM wParam, LPARAM lParam)
        : QEvent(EventType()), m_message(message), m_wParam(wParam), m_lParam(lParam) {}
    static QEvent::Type EventType();

    UINT m_message;
    WPARAM m_wParam;
    LPARAM m_lParam;
};

/// One paint event. Everything drawn in it shares one painter.
struct PaintSession {
    QRegion region; ///< of the client area, in widget coordinates
    std::unique_ptr<QPainter> painter;
    bool erased = false;
};

class WindowWidget : public QWidget {
public:
    WindowWidget(Window& window, QWidget* parent, Qt::WindowFlags flags);
    ~WindowWidget() override;

    Window* GetWindow() const { return m_window; }
    void Detach() { m_window = nullptr; }
    PaintSession* Session() { return m_session; }
    /// No event of a window's widget is being handled: a widget may be deleted at once.
    static bool IsQuiet() { return s_depth == 0; }
    /// Marks that an event of a hosted widget is being handled that does not come through here.
    struct EventScope {
        EventScope() { ++s_depth; }
        ~EventScope() { --s_depth; }
        EventScope(const EventScope&) = delete;
        EventScope& operator=(const EventScope&) = delete;
    };
    QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    friend class Window;
    bool FocusNext(bool next) { return focusNextPrevChild(next); }
    /// True: handled (or to be kept from Qt).
    bool HandleEvent(QEvent* event);
    void PaintFrame(QPainter& painter);
    void OnMoved();
    void OnTimerEvent(int qtId);
    void OnChange(QEvent* event);

    Window* m_window;
    PaintSession* m_session = nullptr;
    bool m_placing = false; ///< SetPos is moving it, not the Qt host
    static int s_depth;
};

/// A hosted widget's event while it is handled as messages: GenericProc passes it to the widget
/// with Deliver.
class RoutedEvent {
public:
    RoutedEvent(Window& window, QWidget* inner, QEvent* event);
    ~RoutedEvent();
    RoutedEvent(const RoutedEvent&) = delete;
    RoutedEvent& operator=(const RoutedEvent&) = delete;

    static RoutedEvent* Current() { return s_current; }
    bool IsFor(const Window* window) const { return m_window == window; }
    /// The window is being destroyed: the next one may stand at its address.
    static void Forget(const Window& window);
    bool IsDelivering(const QEvent* event) const { return m_delivering && m_event == event; }
    QEvent* Event() const { return m_event; }
    void Deliver();
    /// Keys: how many WM_CHAR must reach GenericProc before the widget gets the event.
    int m_charsToCome = 0;

private:
    const Window* m_window; ///< compared only; null when it has been destroyed
    QPointer<QWidget> m_inner;
    QEvent* m_event;
    RoutedEvent* m_outer;
    bool m_delivering = false;
    bool m_delivered = false;
    static RoutedEvent* s_current;
};

// --- input (Input.cpp) -----------------------------------------------------------------------
/// Sends the messages of a key event. True when it was handled.
bool SendKeyEvent(Window& window, QKeyEvent* event);
/// Sends WM_CHAR for every byte of a text that an input method made.
void SendInputText(Window& window, const QString& text);
/// Sends the messages of a mouse event to the window, or to the one that has the mouse.
bool SendMouseEvent(Window& window, QWidget* receiver, QMouseEvent* event);
bool SendWheelEvent(Window& window, QWheelEvent* event);
void SendFocusIn(Window& window);
void SendFocusOut(Window& window, Qt::FocusReason reason);
void SendMouseLeave(Window& window);
/// The window is being destroyed: it loses mouse and focus.
void ForgetWindow(Window& window);
/// A default treatment was reached while the key event was handled.
void MarkKeyUnused();

// --- the pointer (Cursor.cpp) ----------------------------------------------------------------
/// Which window SetCursor is about.
void SetCursorWindow(HWND window);
/// The nearest point inside what the pointer is confined to.
QPoint ConfineToClip(QPoint global);

} // namespace vnbytstr::detail

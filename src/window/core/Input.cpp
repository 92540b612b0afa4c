// Mouse, keyboard and focus: Qt's events as messages, and the state that goes with them.
#include "src/window/core/HandInput.h"
#include "src/window/core/KeyMap.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/WindowFunctions.h"
#include "vnbytstr/window/Wnd.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QStyleHints>
#include <QWheelEvent>

#include <algorithm>
#include <bitset>

namespace vnbytstr::detail {
namespace {

constexpr int kKeys = 256;

/// A key event while it is handled: Qt offers it to the ancestors of its receiver as well, a hosted
/// widget's within the handling. The event lives until then, so that its address tells it.
class KeyDispatch {
public:
    KeyDispatch(const QKeyEvent* event, const QWidget* receiver)
        : m_event(event), m_receiver(receiver), m_outer(s_current) {
        s_current = this;
    }
    ~KeyDispatch() { s_current = m_outer; }
    KeyDispatch(const KeyDispatch&) = delete;
    KeyDispatch& operator=(const KeyDispatch&) = delete;

    /// Whether the event is being handled for a widget within `around` already.
    static bool IsUnderWay(const QKeyEvent* event, const QWidget* around) {
        for (const KeyDispatch* at = s_current; at != nullptr; at = at->m_outer)
            if (at->m_event == event && at->m_receiver != around &&
                (!at->m_receiver || around->isAncestorOf(at->m_receiver)))
                return true;
        return false;
    }

private:
    const QKeyEvent* m_event;
    QPointer<const QWidget> m_receiver;
    KeyDispatch* m_outer;
    static KeyDispatch* s_current;
};
KeyDispatch* KeyDispatch::s_current = nullptr;

/// A key event that nobody has used so far, between two of the receivers that Qt offers it to. The
/// next event may stand at the same address: it is this one only if all of it is the same.
struct UnusedKey {
    const QKeyEvent* event = nullptr; ///< compared only
    QEvent::Type type = QEvent::None;
    int key = 0;
    quint64 time = 0;
    QPointer<const QWidget> receiver;

    bool IsOfferedTo(const QKeyEvent& now, const QWidget* around) const {
        return event == &now && type == now.type() && key == now.key() && time == now.timestamp() &&
               receiver && receiver != around && around->isAncestorOf(receiver);
    }
};

/// What has the mouse and the focus, and which keys are down.
struct InputState {
    HWND capture = nullptr;
    HWND focus = nullptr;
    HWND lastFocus = nullptr;
    Qt::KeyboardModifiers modifiers;
    std::bitset<kKeys> down;
    std::bitset<kKeys> toggled;
    bool keyUnused = false;
    UnusedKey unused;
};

InputState& State() {
    static InputState state;
    return state;
}

UINT MouseFlags(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers) {
    UINT flags = 0;
    flags |= (buttons & Qt::LeftButton) ? MK_LBUTTON : 0;
    flags |= (buttons & Qt::RightButton) ? MK_RBUTTON : 0;
    flags |= (buttons & Qt::MiddleButton) ? MK_MBUTTON : 0;
    flags |= (modifiers & Qt::ShiftModifier) ? MK_SHIFT : 0;
    flags |= (modifiers & Qt::ControlModifier) ? MK_CONTROL : 0;
    return flags;
}

/// The message of a button event; 0 for a button without messages.
UINT ButtonMessage(const QMouseEvent& event, bool doubleClicks) {
    UINT base = 0;
    switch (event.button()) {
    case Qt::LeftButton:
        base = WM_LBUTTONDOWN;
        break;
    case Qt::RightButton:
        base = WM_RBUTTONDOWN;
        break;
    case Qt::MiddleButton:
        base = WM_MBUTTONDOWN;
        break;
    default:
        return 0;
    }
    if (event.type() == QEvent::MouseButtonRelease)
        return base + 1;
    return event.type() == QEvent::MouseButtonDblClick && doubleClicks ? base + 2 : base;
}

LPARAM KeyFlags(const QKeyEvent& event, bool alt) {
    constexpr LPARAM kAltContext = 1 << 29;
    constexpr LPARAM kWasDown = 1 << 30;
    return 1 | (alt ? kAltContext : 0) |
           (event.isAutoRepeat() || event.type() == QEvent::KeyRelease ? kWasDown : 0);
}

MSG MakeMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const QPoint at = QCursor::pos();
    return {window, message, wParam, lParam, GetTickCount(), {at.x(), at.y()}};
}

/// PreTranslateMessage, then the window. True when somebody handled it.
bool SendKeyMessage(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    Window* window = Window::Of(handle);
    if (window == nullptr)
        return true;
    MSG msg = MakeMessage(handle, message, wParam, lParam);
    if (PreTranslate(msg, *window))
        return true;
    window = Window::Of(handle);
    if (window == nullptr)
        return true;
    State().keyUnused = false;
    window->Send(message, wParam, lParam);
    return !State().keyUnused;
}

/// Tab moves the focus to the next window, unless the one that has it wants the key.
bool TravelByTab(HWND handle, const QKeyEvent& event) {
    Window* window = Window::Of(handle);
    if (window == nullptr || (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) != 0)
        return false;
    const bool back = event.key() == Qt::Key_Backtab || (event.modifiers() & Qt::ShiftModifier);
    MSG msg = MakeMessage(handle, WM_KEYDOWN, VK_TAB, 1);
    const LRESULT code = window->Send(WM_GETDLGCODE, VK_TAB, reinterpret_cast<LPARAM>(&msg));
    if ((code & (DLGC_WANTTAB | DLGC_WANTALLKEYS)) != 0)
        return (code & DLGC_WANTALLKEYS) != 0 && Window::Of(handle) == nullptr;
    window = Window::Of(handle);
    return window == nullptr || window->FocusNext(!back);
}

void SendCursorMessage(Window& window, UINT mouseMessage) {
    window.Send(WM_SETCURSOR, reinterpret_cast<WPARAM>(window.Handle()),
                MAKELPARAM(HTCLIENT, static_cast<int>(mouseMessage)));
}

} // namespace

void MarkKeyUnused() { State().keyUnused = true; }

bool PreTranslate(MSG& message, Window& window) {
    HWND handle = window.Handle();
    while (Window* current = Window::Of(handle)) {
        const Window* parent = (current->Style() & WS_CHILD) != 0 ? current->Parent() : nullptr;
        HWND next = parent != nullptr ? const_cast<Window*>(parent)->Handle() : nullptr;
        if (current->Object() != nullptr && current->Object()->PreTranslateMessage(&message))
            return true;
        handle = next;
    }
    return AfxGetApp() != nullptr && AfxGetApp()->PreTranslateMessage(&message);
}

namespace {

/// The state of the keys after an event.
void NoteKey(const QKeyEvent& event, int vk) {
    InputState& state = State();
    const bool press = event.type() == QEvent::KeyPress;
    state.modifiers = event.modifiers();
    // For a modifier's own key Qt reports the state before the event.
    const Qt::KeyboardModifier own = vk == VK_SHIFT     ? Qt::ShiftModifier
                                     : vk == VK_CONTROL ? Qt::ControlModifier
                                     : vk == VK_MENU    ? Qt::AltModifier
                                                        : Qt::NoModifier;
    state.modifiers.setFlag(own, press && own != Qt::NoModifier);
    if (vk <= 0 || vk >= kKeys)
        return;
    if (press && !state.down[static_cast<std::size_t>(vk)])
        state.toggled.flip(static_cast<std::size_t>(vk));
    state.down[static_cast<std::size_t>(vk)] = press;
}

/// The messages of a key event. True when it was handled.
bool SendKeyMessages(Window& window, const QKeyEvent& event) {
    InputState& state = State();
    HWND handle = window.Handle();
    const int vk = VirtualKey(event);
    NoteKey(event, vk);
    // Alt alone makes a system key; with Ctrl it makes characters on many keyboards.
    const bool alt = (event.modifiers() & Qt::AltModifier) != 0 &&
                     (event.modifiers() & Qt::ControlModifier) == 0;
    const bool system = alt || vk == VK_F10;
    const LPARAM flags = KeyFlags(event, alt);
    if (event.type() != QEvent::KeyPress)
        return SendKeyMessage(handle, system ? WM_SYSKEYUP : WM_KEYUP, static_cast<WPARAM>(vk),
                              flags);
    const std::string text = KeyText(event, vk);
    RoutedEvent* const routed = RoutedEvent::Current();
    if (routed != nullptr && routed->IsFor(&window))
        routed->m_charsToCome = static_cast<int>(text.size());

    MSG msg =
        MakeMessage(handle, system ? WM_SYSKEYDOWN : WM_KEYDOWN, static_cast<WPARAM>(vk), flags);
    if (PreTranslate(msg, window))
        return true;
    if (vk == VK_TAB && TravelByTab(handle, event))
        return true;
    Window* still = Window::Of(handle);
    if (still == nullptr)
        return true;
    state.keyUnused = false;
    still->Send(msg.message, msg.wParam, msg.lParam);
    bool used = !state.keyUnused;
    for (const char ch : text)
        used =
            SendKeyMessage(handle, system ? WM_SYSCHAR : WM_CHAR, static_cast<BYTE>(ch), flags) ||
            used;
    return used || Window::Of(handle) == nullptr;
}

/// Whether Qt goes on to a window around this one with an event that was not used.
bool HasWindowAround(const Window& window) {
    const QWidget* const widget = window.Widget();
    return !widget->isWindow() && Window::Of(widget->parentWidget()) != nullptr;
}

} // namespace

bool SendKeyEvent(Window& window, QKeyEvent* event) {
    InputState& state = State();
    const RoutedEvent* const routed = RoutedEvent::Current();
    const bool forHosted = routed != nullptr && routed->Event() == event;
    const QWidget* const receiver = forHosted ? window.Hosted() : window.Widget();
    const bool isOffered = state.unused.IsOfferedTo(*event, window.Widget());
    if (isOffered && HasWindowAround(window))
        return false; // bubbled up unhandled from a nested window: not sent twice
    state.unused = {};
    if (isOffered || KeyDispatch::IsUnderWay(event, window.Widget()))
        return false;
    const HWND handle = window.Handle();
    const QPointer<const QWidget> sentTo(receiver);
    const KeyDispatch dispatch(event, receiver);
    const bool used = SendKeyMessages(window, *event);
    const Window* const still = Window::Of(handle);
    if (!used && !forHosted && still != nullptr && HasWindowAround(*still))
        state.unused = {event, event->type(), event->key(), event->timestamp(), sentTo};
    return used;
}

void SendInputText(Window& window, const QString& text) {
    const std::string bytes = FromQString(text);
    if (RoutedEvent* routed = RoutedEvent::Current(); routed != nullptr && routed->IsFor(&window))
        routed->m_charsToCome = static_cast<int>(bytes.size());
    HWND handle = window.Handle();
    for (const char ch : bytes)
        SendKeyMessage(handle, WM_CHAR, static_cast<BYTE>(ch), 1);
}

bool SendMouseEvent(Window& window, QWidget* receiver, QMouseEvent* event) {
    InputState& state = State();
    state.modifiers = event->modifiers();
    const QPoint global = ConfineToClip(receiver->mapToGlobal(event->position().toPoint()));
    Window* target = Window::Of(state.capture);
    const bool captured = target != nullptr;
    if (!captured)
        target = &window;
    HWND handle = target->Handle();
    SetCursorWindow(handle);
    UINT message = WM_MOUSEMOVE;
    if (event->type() != QEvent::MouseMove)
        message = ButtonMessage(*event, (target->Class().info.style & CS_DBLCLKS) != 0);
    if (message == 0)
        return true;
    if (!captured) {
        SendCursorMessage(*target, message);
        target = Window::Of(handle);
        if (target == nullptr)
            return true;
    }
    const CPoint at = target->GlobalToClient(global);
    target->Send(message, MouseFlags(event->buttons(), event->modifiers()), MAKELPARAM(at.x, at.y));
    return true;
}

bool SendWheelEvent(Window& window, QWheelEvent* event) {
    State().modifiers = event->modifiers();
    const QPoint at = event->globalPosition().toPoint();
    const QPoint turn = event->angleDelta();
    const bool horizontal = std::abs(turn.x()) > std::abs(turn.y());
    const int delta = horizontal ? -turn.x() : turn.y();
    if (delta == 0)
        return false;
    State().keyUnused = false;
    window.Send(
        horizontal ? WM_MOUSEHWHEEL : WM_MOUSEWHEEL,
        MAKEWPARAM(static_cast<int>(MouseFlags(event->buttons(), event->modifiers())), delta),
        MAKELPARAM(at.x(), at.y()));
    return !State().keyUnused;
}

void SendMouseLeave(Window& window) {
    if (State().capture == nullptr)
        window.Send(WM_MOUSELEAVE);
}

void SendFocusIn(Window& window) {
    InputState& state = State();
    if (state.focus == window.Handle())
        return;
    HWND handle = window.Handle();
    if (Window* borrower = Window::Of(std::exchange(state.focus, nullptr))) {
        // A popup of that window had the keyboard when the focus moved on.
        state.lastFocus = borrower->Handle();
        borrower->Send(WM_KILLFOCUS, reinterpret_cast<WPARAM>(handle));
        if (Window::Of(handle) == nullptr || state.focus != nullptr)
            return;
    }
    state.focus = handle;
    if (window.Hosted() == nullptr) {
        const LRESULT code = window.Send(WM_GETDLGCODE);
        if (Window::Of(handle) == nullptr)
            return;
        window.Widget()->setAttribute(Qt::WA_InputMethodEnabled,
                                      (code & (DLGC_WANTCHARS | DLGC_WANTALLKEYS)) != 0);
    }
    HWND old = Window::Of(state.lastFocus) != nullptr ? state.lastFocus : nullptr;
    window.Send(WM_SETFOCUS, reinterpret_cast<WPARAM>(old));
}

namespace {

/// Whether a widget lies in a popup that belongs to the window: the list of its combo box, say.
bool IsInPopupOf(const Window& window, const QWidget* widget) {
    while (widget != nullptr && widget != window.Widget()) {
        if (widget->isWindow() && widget->windowType() != Qt::Popup)
            return false;
        widget = widget->parentWidget();
    }
    return widget != nullptr;
}

} // namespace

void SendFocusOut(Window& window, Qt::FocusReason reason) {
    InputState& state = State();
    Window* next = Window::Of(QApplication::focusWidget());
    // A menu or drop-down list takes the keys while it is open; the window keeps the focus.
    if (reason == Qt::PopupFocusReason || next == &window || state.focus != window.Handle() ||
        IsInPopupOf(window, QApplication::focusWidget()))
        return;
    state.lastFocus = window.Handle();
    state.focus = nullptr;
    window.Send(WM_KILLFOCUS, reinterpret_cast<WPARAM>(next != nullptr ? next->Handle() : nullptr));
}

void ForgetWindow(Window& window) {
    InputState& state = State();
    RoutedEvent::Forget(window);
    HWND handle = window.Handle();
    if (state.capture == handle)
        ReleaseCapture();
    for (HWND* place : {&state.focus, &state.lastFocus})
        if (*place == handle)
            *place = nullptr;
}

void CancelCapture() {
    HWND capture = State().capture;
    if (Window* window = Window::Of(capture))
        window->Send(WM_CANCELMODE);
    if (State().capture == capture)
        ReleaseCapture();
}

} // namespace vnbytstr::detail

using vnbytstr::detail::State;
using vnbytstr::detail::Window;

HWND GetFocus() {
    Window* window = Window::Of(QApplication::focusWidget());
    return window != nullptr ? window->Handle() : nullptr;
}

HWND SetFocus(HWND handle) {
    HWND before = GetFocus();
    Window* window = Window::Of(handle);
    if (window != nullptr)
        window->Widget()->setFocus(Qt::OtherFocusReason);
    else if (QWidget* focus = QApplication::focusWidget(); focus != nullptr && handle == nullptr)
        focus->clearFocus();
    return before;
}

HWND GetActiveWindow() {
    Window* window = Window::Of(QApplication::activeWindow());
    return window != nullptr ? window->Handle() : nullptr;
}

HWND GetCapture() { return Window::Of(State().capture) != nullptr ? State().capture : nullptr; }

HWND SetCapture(HWND handle) {
    HWND before = GetCapture();
    Window* window = Window::Of(handle);
    if (window == nullptr || before == handle)
        return before;
    State().capture = handle;
    if (Window* old = Window::Of(before))
        old->Send(WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(handle));
    // While a button is down Qt grabs the mouse anyway.
    if (Window::Of(handle) != nullptr && vnbytstr::detail::ButtonsDown() == Qt::NoButton &&
        window->Widget()->isVisible())
        window->Widget()->grabMouse();
    return before;
}

BOOL ReleaseCapture() {
    HWND before = State().capture;
    State().capture = nullptr;
    if (QWidget* grabber = QWidget::mouseGrabber(); grabber != nullptr &&
                                                    Window::Of(grabber) != nullptr &&
                                                    Window::Of(grabber)->Handle() == before)
        grabber->releaseMouse();
    if (Window* old = Window::Of(before))
        old->Send(WM_CAPTURECHANGED);
    return TRUE;
}

short GetKeyState(int key) {
    const auto& state = State();
    bool down = false;
    switch (key) {
    case VK_SHIFT:
        down = (state.modifiers & Qt::ShiftModifier) != 0;
        break;
    case VK_CONTROL:
        down = (state.modifiers & Qt::ControlModifier) != 0;
        break;
    case VK_MENU:
        down = (state.modifiers & Qt::AltModifier) != 0;
        break;
    case VK_LBUTTON:
        down = (vnbytstr::detail::ButtonsDown() & Qt::LeftButton) != 0;
        break;
    case VK_RBUTTON:
        down = (vnbytstr::detail::ButtonsDown() & Qt::RightButton) != 0;
        break;
    case VK_MBUTTON:
        down = (vnbytstr::detail::ButtonsDown() & Qt::MiddleButton) != 0;
        break;
    default:
        if (key <= 0 || key >= vnbytstr::detail::kKeys)
            return 0;
        down = state.down[static_cast<std::size_t>(key)];
    }
    const bool toggled =
        key > 0 && key < vnbytstr::detail::kKeys && state.toggled[static_cast<std::size_t>(key)];
    return static_cast<short>((down ? -0x8000 : 0) | (toggled ? 1 : 0));
}

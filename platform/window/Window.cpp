// Window handles stay valid as long as their window lives:
// 1. A Window is in LiveWindows from its creation until after WM_NCDESTROY, and no longer.
// 2. A living window has a widget, and that widget knows it; a widget whose window has ended knows
//    none and sends no more messages.
// 3. An object that is attached to a living window has its handle in m_hWnd.
#include "WindowInternal.h"

#include "Application.h"
#include "OverlayInternal.h"
#include "WidgetDetailsInternal.h"
#include "WindowFunctions.h"
#include "WindowWidgetInternal.h"
#include "Wnd.h"

#include "../system/CodePage.h"

#include <QApplication>
#include <QScrollBar>

#include <algorithm>
#include <unordered_set>

namespace vnbytstr::detail {
namespace {

std::unordered_set<const Window*>& LiveWindows() {
    static auto* live = new std::unordered_set<const Window*>; // outlives every static CWnd
    return *live;
}
const Window* lastLooked = nullptr; // sends mostly go to the window of the last one

Qt::WindowFlags WidgetFlags(DWORD style, DWORD exStyle) {
    if ((style & WS_CHILD) != 0)
        return Qt::Widget;
    Qt::WindowFlags flags = Qt::Window;
    if ((style & WS_POPUP) != 0 && (style & WS_CAPTION) != WS_CAPTION) {
        flags = (exStyle & (WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE)) != 0
                    ? Qt::ToolTip
                    : Qt::Tool | Qt::FramelessWindowHint;
    } else if ((exStyle & WS_EX_DLGMODALFRAME) != 0 || (style & WS_POPUP) != 0) {
        flags = Qt::Dialog;
    }
    if ((exStyle & WS_EX_TOPMOST) != 0)
        flags |= Qt::WindowStaysOnTopHint;
    return flags;
}

int BorderWidth(const Window& window) {
    if ((window.m_style & WS_CHILD) == 0 && (window.m_style & WS_CAPTION) == WS_CAPTION)
        return 0;
    if ((window.m_exStyle & WS_EX_CLIENTEDGE) != 0)
        return 2;
    return (window.m_style & WS_BORDER) != 0 || (window.m_exStyle & WS_EX_STATICEDGE) != 0 ? 1 : 0;
}

} // namespace

QString ToQString(std::string_view text) {
    const CodePage& page = CodePage::Ansi();
    if (page.IsUtf8())
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    const std::u16string wide = page.ToWide(text);
    return QString::fromUtf16(wide.data(), static_cast<qsizetype>(wide.size()));
}

std::string FromQString(const QString& text) {
    return CodePage::Ansi().FromWide(std::u16string_view(
        reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())));
}

Window::Window(const WindowClass& windowClass) : m_class(&windowClass) {}
Window::~Window() = default;

Window* Window::Of(HWND handle) {
    auto* window = reinterpret_cast<Window*>(handle);
    if (window == lastLooked || window == nullptr)
        return window;
    if (LiveWindows().count(window) == 0)
        return nullptr;
    lastLooked = window;
    return window;
}

Window* Window::Of(const QWidget* widget) {
    for (; widget != nullptr; widget = widget->parentWidget()) {
        if (const auto* own = dynamic_cast<const WindowWidget*>(widget); own && own->GetWindow())
            return own->GetWindow();
        if (widget->isWindow())
            return nullptr;
    }
    return nullptr;
}

Window* Window::Of(const CWnd* object) { return object != nullptr ? Of(object->m_hWnd) : nullptr; }

Window* Window::Create(CREATESTRUCT& create, CWnd* object, QWidget* host) {
    AfxInitWindows();
    const WindowClass* windowClass =
        FindWindowClass(create.lpszClass != nullptr ? create.lpszClass : "");
    if (windowClass == nullptr)
        return nullptr;
    Window* parent = Of(create.hwndParent);
    if ((create.style & WS_CHILD) != 0 && parent == nullptr && host == nullptr)
        return nullptr;
    auto* window = new Window(*windowClass);
    window->m_style = create.style;
    window->m_exStyle = create.dwExStyle;
    if (parent != nullptr && (parent->m_exStyle & WS_EX_LAYOUTRTL) != 0 &&
        (parent->m_exStyle & WS_EX_NOINHERITLAYOUT) == 0)
        window->m_exStyle |= WS_EX_LAYOUTRTL;
    window->m_id = (create.style & WS_CHILD) != 0
                       ? static_cast<UINT>(reinterpret_cast<std::uintptr_t>(create.hMenu))
                       : 0;
    window->m_text = create.lpszName != nullptr ? create.lpszName : "";
    window->m_wantsVScroll = (create.style & WS_VSCROLL) != 0;
    window->m_wantsHScroll = (create.style & WS_HSCROLL) != 0;
    QWidget* around = parent != nullptr ? parent->m_widget : host;
    if ((create.style & WS_CHILD) == 0 && parent != nullptr) {
        window->m_topLevelOwner = parent->Handle();
        around = parent->m_widget->window();
    }
    LiveWindows().insert(window);
    window->m_widget =
        new WindowWidget(*window, around, WidgetFlags(window->m_style, window->m_exStyle));
    if (object != nullptr) {
        window->m_object = object;
        object->m_hWnd = window->Handle();
        object->PreSubclassWindow();
    }
    if (!window->FinishCreation(create)) {
        if (Of(reinterpret_cast<HWND>(window)) != nullptr)
            window->Destroy();
        return nullptr;
    }
    return window;
}

/// The first place, of which the window hears when it has been made.
void Window::PlaceFirst(const CREATESTRUCT& create) {
    if (create.x == CW_USEDEFAULT || create.cx == CW_USEDEFAULT)
        return;
    const Window* parent = (m_style & WS_CHILD) != 0 ? Parent() : nullptr;
    const CRect place(create.x, create.y, create.x + std::max(create.cx, 0),
                      create.y + std::max(create.cy, 0));
    m_widget->m_placing = true;
    m_widget->setGeometry(parent != nullptr
                              ? parent->ToWidget(place)
                              : QRect(place.left, place.top, place.Width(), place.Height()));
    m_widget->m_placing = false;
}

bool Window::FinishCreation(CREATESTRUCT& create) {
    HWND handle = Handle();
    if (m_class->makeControl != nullptr)
        m_control = m_class->makeControl(*this);
    PlaceFirst(create);
    SetStyles(m_style, m_exStyle);
    if (Send(WM_NCCREATE, 0, reinterpret_cast<LPARAM>(&create)) == 0 || Of(handle) == nullptr ||
        Send(WM_CREATE, 0, reinterpret_cast<LPARAM>(&create)) == -1 || Of(handle) == nullptr)
        return false;
    UpdateLayout();
    if (Of(handle) != nullptr && (m_style & WS_VISIBLE) != 0)
        Show((m_style & WS_MAXIMIZE) != 0 ? SW_SHOWMAXIMIZED : SW_SHOW);
    return Of(handle) != nullptr;
}

void Window::Destroy() {
    if (m_destroying)
        return;
    WindowWidget* widget = m_widget;
    Window* parent = Parent();
    const QWidget* focus = QApplication::focusWidget();
    if ((m_style & WS_CHILD) != 0 && parent != nullptr && focus != nullptr &&
        (focus == widget || widget->isAncestorOf(focus)) && (parent->m_style & WS_TABSTOP) != 0)
        SetFocus(parent->Handle());
    HWND handle = Handle();
    widget->hide(); // takes the focus away, while the window still hears of it
    if (Of(handle) == nullptr || m_destroying)
        return;
    DestroyRecords(false);
    if (WindowWidget::IsQuiet())
        delete widget;
    else
        widget->deleteLater();
}

void Window::DestroyRecords(bool widgetEnds) {
    if (m_destroying)
        return;
    m_destroying = true;
    ForgetWindow(*this);
    Send(WM_DESTROY);
    // Owned windows and children end with this one. Each end may end others.
    for (bool again = true; again;) {
        again = false;
        const auto living = LiveWindows();
        for (const Window* entry : living) {
            auto* other = const_cast<Window*>(entry);
            if (LiveWindows().count(other) == 0 || other->m_destroying || other == this)
                continue;
            if (other->m_topLevelOwner == Handle()) {
                other->Destroy();
                again = true;
            } else if (other->m_topLevelOwner == nullptr && other->Parent() == this) {
                other->DestroyRecords(widgetEnds);
                again = true;
            }
        }
    }
    Send(WM_NCDESTROY);
    m_control.reset();
    m_widget->Detach();
    LiveWindows().erase(this);
    lastLooked = nullptr;
    CWnd* object = m_object;
    if (m_temporary)
        m_temporary->m_hWnd = nullptr;
    const std::unique_ptr<Window> self(this);
    if (object != nullptr) {
        object->m_hWnd = nullptr;
        object->PostNcDestroy();
    }
}

void Window::OnWidgetEnds() { DestroyRecords(true); }

Window* Window::Parent() const {
    if ((m_style & WS_CHILD) == 0)
        return Of(m_topLevelOwner);
    return m_widget != nullptr ? Of(m_widget->parentWidget()) : nullptr;
}

Window* Window::ChildOf(int id) const {
    for (const QObject* child : m_widget->children()) {
        const auto* widget = dynamic_cast<const WindowWidget*>(child);
        if (widget != nullptr && widget->GetWindow() != nullptr &&
            static_cast<int>(widget->GetWindow()->m_id) == id &&
            (widget->GetWindow()->m_style & WS_CHILD) != 0)
            return widget->GetWindow();
    }
    return nullptr;
}

CWnd* Window::ObjectOrTemporary() {
    if (m_object != nullptr)
        return m_object;
    if (!m_temporary) {
        m_temporary = std::make_unique<CWnd>();
        m_temporary->m_hWnd = Handle();
    }
    return m_temporary.get();
}

LRESULT Window::NotifyParent(UINT message, WPARAM wParam, LPARAM lParam) {
    Window* to = Of(m_owner);
    if (to == nullptr)
        to = Parent();
    if (to != nullptr)
        return to->Send(message, wParam, lParam);
    LRESULT result = 0;
    CWnd::ReflectMessage(Handle(), message, wParam, lParam, &result);
    return result;
}

LRESULT Window::NotifyCommand(int code) {
    return NotifyParent(WM_COMMAND, MAKEWPARAM(static_cast<int>(m_id), code),
                        reinterpret_cast<LPARAM>(Handle()));
}

HBRUSH Window::AskCtlColor(UINT message, HDC dc) {
    auto* brush = reinterpret_cast<HBRUSH>(
        NotifyParent(message, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(Handle())));
    if (brush != nullptr)
        return brush;
    return GetSysColorBrush(
        message == WM_CTLCOLORLISTBOX || message == WM_CTLCOLOREDIT ? COLOR_WINDOW : COLOR_3DFACE);
}

// --- geometry --------------------------------------------------------------------------------

QRect Window::ClientArea() const {
    const int border = BorderWidth(*this);
    QRect area = m_widget->rect().adjusted(border, border, -border, -border);
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
    if (!show) {
        Window* parent = Parent();
        const QWidget* focus = QApplication::focusWidget();
        if ((m_style & WS_CHILD) != 0 && parent != nullptr && focus != nullptr &&
            (focus == m_widget || m_widget->isAncestorOf(focus)) &&
            (parent->m_style & WS_TABSTOP) != 0)
            SetFocus(parent->Handle());
    }
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
    const int border = BorderWidth(*this);
    const QRect inner = m_widget->rect().adjusted(border, border, -border, -border);
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
    // What was drawn over this place, and over the parents' layers there, is out of date.
    for (Window* window = this; window != nullptr;) {
        if (window->m_overlay != nullptr && window->m_overlayWidget)
            window->m_overlay->Forget(area.translated(m_widget->mapTo(window->m_widget, QPoint())));
        window = (window->m_style & WS_CHILD) != 0 ? window->Parent() : nullptr;
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

// --- scroll bars -----------------------------------------------------------------------------

void Window::ShowScrollBar(int bar, bool show) {
    const DWORD bit = bar == SB_VERT ? WS_VSCROLL : WS_HSCROLL;
    QScrollBar*& widget = m_bars[bar == SB_VERT ? 1 : 0];
    const bool made = show && widget == nullptr;
    if (made) {
        widget = new QScrollBar(bar == SB_VERT ? Qt::Vertical : Qt::Horizontal, m_widget);
        widget->setFocusPolicy(Qt::NoFocus);
        widget->setCursor(Qt::ArrowCursor);
        HWND handle = Handle();
        const UINT message = bar == SB_VERT ? WM_VSCROLL : WM_HSCROLL;
        const auto send = [handle, message](UINT code, int position) {
            if (Window* window = Of(handle))
                window->Send(message, MAKEWPARAM(static_cast<int>(code), position), 0);
        };
        QScrollBar* slider = widget;
        QObject::connect(slider, &QAbstractSlider::actionTriggered, m_widget,
                         [slider, send](int action) {
                             const int before = slider->value();
                             switch (action) {
                             case QAbstractSlider::SliderSingleStepAdd:
                                 send(SB_LINEDOWN, 0);
                                 break;
                             case QAbstractSlider::SliderSingleStepSub:
                                 send(SB_LINEUP, 0);
                                 break;
                             case QAbstractSlider::SliderPageStepAdd:
                                 send(SB_PAGEDOWN, 0);
                                 break;
                             case QAbstractSlider::SliderPageStepSub:
                                 send(SB_PAGEUP, 0);
                                 break;
                             case QAbstractSlider::SliderToMinimum:
                                 send(SB_TOP, 0);
                                 break;
                             case QAbstractSlider::SliderToMaximum:
                                 send(SB_BOTTOM, 0);
                                 break;
                             case QAbstractSlider::SliderMove:
                                 send(SB_THUMBTRACK, slider->sliderPosition());
                                 return;
                             default:
                                 return;
                             }
                             if (slider->value() == before)
                                 slider->setSliderPosition(before); // the window did not follow
                         });
        QObject::connect(slider, &QAbstractSlider::sliderReleased, m_widget, [slider, send] {
            send(SB_THUMBPOSITION, slider->sliderPosition());
            send(SB_ENDSCROLL, 0);
        });
    }
    if (widget != nullptr && show == widget->isHidden())
        widget->setVisible(show);
    if (!made && show == ((m_style & bit) != 0))
        return;
    m_style = show ? m_style | bit : m_style & ~bit;
    UpdateLayout();
    m_widget->update();
}

void Window::SetScroll(int bar, int minimum, int maximum, int page, int position, bool enabled) {
    QScrollBar* widget = ScrollBar(bar);
    if (widget == nullptr)
        return;
    widget->setEnabled(enabled);
    widget->setPageStep(std::max(page, 1));
    widget->setRange(minimum, std::max(minimum, maximum - std::max(page, 1) + 1));
    widget->setValue(position);
}

// --- state -----------------------------------------------------------------------------------

void Window::SetStyles(DWORD style, DWORD exStyle) {
    const bool mirrored = IsMirrored();
    m_style = style;
    m_exStyle = exStyle;
    m_widget->setAttribute(Qt::WA_ForceDisabled, false);
    m_widget->setEnabled((style & WS_DISABLED) == 0);
    m_widget->setAcceptDrops((exStyle & WS_EX_ACCEPTFILES) != 0 || m_drop != nullptr);
    m_widget->setLayoutDirection(
        (exStyle & (WS_EX_LAYOUTRTL | WS_EX_RTLREADING)) != 0 ? Qt::RightToLeft : Qt::LeftToRight);
    const bool tab = (style & WS_TABSTOP) != 0 && (style & WS_CHILD) != 0;
    if (m_hosted)
        m_hosted->setFocusPolicy(tab ? Qt::StrongFocus : Qt::ClickFocus);
    m_widget->setFocusPolicy(tab && !m_hosted ? Qt::TabFocus : Qt::NoFocus);
    if (m_hosted)
        m_hosted->setLayoutDirection(m_widget->layoutDirection());
    if (mirrored != IsMirrored())
        m_widget->update();
    if (m_sentSize.isValid())
        UpdateLayout();
}

void Window::SetEnabled(bool on) {
    HWND handle = Handle();
    if (on == ((m_style & WS_DISABLED) == 0))
        return;
    if (!on) {
        if (Of(GetCapture()) == this)
            CancelCapture();
        if (Of(handle) == nullptr)
            return;
    }
    m_style = on ? m_style & ~WS_DISABLED : m_style | WS_DISABLED;
    m_widget->setEnabled(on);
    if (Of(handle) == nullptr)
        return;
    Invalidate(nullptr);
    Send(WM_ENABLE, on ? 1 : 0, 0);
}

void Window::ApplyFont(HFONT font, bool redraw) {
    m_font = font;
    if (m_hosted)
        m_hosted->setFont(QtFont());
    if (redraw)
        Invalidate(nullptr);
}

void Window::Host(QWidget* inner) {
    m_hosted = inner;
    inner->setParent(m_widget);
    inner->setFont(QtFont());
    inner->setLayoutDirection(m_widget->layoutDirection());
    const bool tab = (m_style & WS_TABSTOP) != 0;
    inner->setFocusPolicy(tab ? Qt::StrongFocus : Qt::ClickFocus);
    m_widget->setFocusPolicy(Qt::NoFocus);
    m_widget->setFocusProxy(inner);
    inner->setGeometry(ClientArea());
    inner->show();
    RouteEvents(inner);
}

void Window::RouteEvents(QWidget* inner) { inner->installEventFilter(m_widget); }

// --- classes ---------------------------------------------------------------------------------

namespace {

std::string Folded(std::string_view name) {
    std::string folded(name);
    for (char& ch : folded)
        if (ch >= 'a' && ch <= 'z')
            ch = static_cast<char>(ch - 'a' + 'A');
    return folded;
}

std::map<std::string, WindowClass>& Classes() {
    static std::map<std::string, WindowClass> classes;
    return classes;
}

} // namespace

// One line per system class; each stands in the file of its control.
void RegisterControlClasses();
std::unique_ptr<SystemControl> MakeListBoxControl(Window& window);

namespace {

void RegisterSystemClasses() {
    static bool done = false;
    if (done)
        return;
    done = true;
    RegisterSystemClass("", CS_DBLCLKS, nullptr); // the class of windows that name none
    RegisterSystemClass("LISTBOX", CS_DBLCLKS, MakeListBoxControl);
    RegisterControlClasses();
}

} // namespace

void RegisterSystemClass(const char* name, UINT style,
                         std::unique_ptr<SystemControl> (*makeControl)(Window&)) {
    WindowClass& entry = Classes()[Folded(name)];
    entry.name = name;
    entry.info.style = style;
    entry.info.lpfnWndProc = ::DefWindowProc;
    entry.info.hCursor = LoadCursor(nullptr, IDC_ARROW);
    // Lists and fields are paper; labels and buttons stand on the ground around them.
    const std::string_view kind = name;
    const bool isPaper = kind == "LISTBOX" || kind == "EDIT" || kind == "COMBOBOX";
    entry.info.hbrBackground = reinterpret_cast<HBRUSH>(
        static_cast<std::uintptr_t>(isPaper ? COLOR_WINDOW + 1 : COLOR_3DFACE + 1));
    entry.info.lpszClassName = entry.name.c_str();
    entry.makeControl = makeControl;
}

const WindowClass* FindWindowClass(std::string_view name) {
    RegisterSystemClasses();
    const auto found = Classes().find(Folded(name));
    return found != Classes().end() ? &found->second : nullptr;
}

bool AddWindowClass(const WNDCLASS& info) {
    if (info.lpszClassName == nullptr || *info.lpszClassName == '\0' ||
        FindWindowClass(info.lpszClassName) != nullptr)
        return false;
    WindowClass& entry = Classes()[Folded(info.lpszClassName)];
    entry.name = info.lpszClassName;
    entry.info = info;
    entry.info.lpszClassName = entry.name.c_str();
    entry.info.lpszMenuName = nullptr;
    return true;
}

bool RemoveWindowClass(std::string_view name) {
    const WindowClass* known = FindWindowClass(name);
    if (known == nullptr || known->makeControl != nullptr || name.empty())
        return false;
    for (const Window* window : LiveWindows())
        if (&window->Class() == known)
            return false; // in use
    return Classes().erase(Folded(name)) != 0;
}

} // namespace vnbytstr::detail

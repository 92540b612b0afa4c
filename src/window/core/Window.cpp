// Window handles stay valid as long as their window lives:
// 1. A Window is in LiveWindows from its creation until after WM_NCDESTROY, and no longer.
// 2. A living window has a widget that points to it; once the window is destroyed its widget points
//    to nothing and sends no more messages.
// 3. A destroyed window's control and widget end when it handles no message any more (unless the
//    widget's host ends them), its record when nobody does: see Window::Busy.
// 4. An object that is attached to a living window has its handle in m_hWnd.
#include "src/window/core/WindowInternal.h"

#include "src/window/core/WidgetDetails.h"
#include "src/window/core/WindowWidget.h"
#include "src/window/draw/Overlay.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/WindowFunctions.h"
#include "vnbytstr/window/Wnd.h"

#include "src/charset/CodePage.h"

#include <QApplication>
#include <QScrollBar>

#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

namespace vnbytstr::detail {
namespace {

std::unordered_set<const Window*>& LiveWindows() {
    static auto* live = new std::unordered_set<const Window*>; // outlives every static CWnd
    return *live;
}
std::vector<std::unique_ptr<Window>>& Destroyed() {
    static auto* destroyed = new std::vector<std::unique_ptr<Window>>; // as LiveWindows
    return *destroyed;
}
const Window* lastLooked = nullptr; // most messages go to the same window as the last one

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
    const Busy busy;
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
    if ((create.style & (WS_CHILD | WS_VISIBLE)) == WS_CHILD)
        window->m_widget->hide(); // else it would appear with its parent
    if (!window->FinishCreation(create)) {
        if (Of(reinterpret_cast<HWND>(window)) != nullptr)
            window->Destroy();
        return nullptr;
    }
    return window;
}

/// Initial geometry; WM_SIZE and WM_MOVE follow after creation.
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
    const Busy busy;
    HWND handle = Handle();
    WindowWidget* widget = m_widget;
    PassFocusToParent(); // what gets it may destroy this window
    if (Of(handle) == nullptr || m_destroying)
        return;
    widget->hide(); // takes the focus away while the window still gets messages
    if (Of(handle) == nullptr || m_destroying)
        return;
    DestroyRecords({widget, [](WindowWidget* ends) {
                        if (WindowWidget::IsQuiet() && s_busy <= 1)
                            delete ends;
                        else
                            ends->deleteLater();
                    }});
}

/// A child that has the focus and ends, or is hidden, gives it to its parent.
void Window::PassFocusToParent() {
    Window* parent = (m_style & WS_CHILD) != 0 ? Parent() : nullptr;
    const QWidget* focus = QApplication::focusWidget();
    if (parent != nullptr && focus != nullptr &&
        (focus == m_widget || m_widget->isAncestorOf(focus)) && (parent->m_style & WS_TABSTOP) != 0)
        SetFocus(parent->Handle());
}

/// `root` deletes the widget around this window's when the last one lets go of it; null: the widget
/// is ending.
void Window::DestroyRecords(const std::shared_ptr<WindowWidget>& root) {
    if (m_destroying)
        return;
    m_destroying = true;
    const Busy busy;
    ForgetWindow(*this);
    Send(WM_DESTROY);
    // Owned windows and children are destroyed with this one, and may destroy others on their way.
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
                other->DestroyRecords(root);
                again = true;
            }
        }
    }
    Send(WM_NCDESTROY);
    if (m_busy > 0 && root != nullptr)
        m_root = root;
    else
        m_control.reset();
    m_widget->Detach();
    LiveWindows().erase(this);
    lastLooked = nullptr;
    CWnd* object = m_object;
    if (m_temporary)
        m_temporary->m_hWnd = nullptr;
    m_drop.reset(); // tells the target, which may end with the object
    Destroyed().emplace_back(this);
    if (object != nullptr) {
        object->m_hWnd = nullptr;
        object->PostNcDestroy();
    }
}

int Window::s_busy = 0;

Window::Busy::Busy(Window* window) : m_window(window) {
    ++s_busy;
    if (m_window != nullptr)
        ++m_window->m_busy;
}

Window::Busy::~Busy() {
    if (m_window != nullptr && --m_window->m_busy == 0 && m_window->m_root != nullptr) {
        m_window->m_control.reset();
        m_window->m_root.reset();
    }
    if (--s_busy == 0)
        FreeDestroyed();
}

void Window::FreeDestroyed() {
    if (!Destroyed().empty())
        std::exchange(Destroyed(), {}).clear();
}

void Window::OnWidgetEnds() { DestroyRecords(nullptr); }

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
    if (Of(Handle()) == nullptr)
        return 0; // destroyed while its control was at work
    if (Window* const to = Parent())
        return to->Send(message, wParam, lParam);
    LRESULT result = 0;
    CWnd::ReflectMessage(Handle(), message, wParam, lParam, &result);
    return result;
}

LRESULT Window::NotifyCommand(int code) {
    return NotifyParent(WM_COMMAND, MAKEWPARAM(static_cast<int>(m_id), code),
                        reinterpret_cast<LPARAM>(Handle()));
}

void Window::StartTimer(std::uintptr_t id, UINT milliseconds) {
    StopTimer(id);
    const int interval = std::max(static_cast<int>(std::min<UINT>(milliseconds, 0x7FFFFFFF)), 1);
    m_timers[id] = m_widget->startTimer(interval);
}

bool Window::StopTimer(std::uintptr_t id) {
    const auto found = m_timers.find(id);
    if (found == m_timers.end())
        return false;
    m_widget->killTimer(found->second);
    m_timers.erase(found);
    return true;
}

HBRUSH Window::AskCtlColor(UINT message, HDC dc) {
    auto* brush = reinterpret_cast<HBRUSH>(
        NotifyParent(message, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(Handle())));
    if (brush != nullptr)
        return brush;
    return GetSysColorBrush(
        message == WM_CTLCOLORLISTBOX || message == WM_CTLCOLOREDIT ? COLOR_WINDOW : COLOR_3DFACE);
}

// --- state -----------------------------------------------------------------------------------

void Window::SetStyles(DWORD style, DWORD exStyle) {
    const bool mirrored = IsMirrored();
    m_style = style;
    m_exStyle = exStyle;
    m_widget->setAttribute(Qt::WA_ForceDisabled, false);
    m_widget->setEnabled((style & WS_DISABLED) == 0);
    m_widget->setAcceptDrops(m_drop != nullptr);
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

// One line per system class; each is defined in its control's file.
void RegisterControlClasses();
std::unique_ptr<SystemControl> MakeListBoxControl(Window& window);

namespace {

void RegisterSystemClasses() {
    static bool done = false;
    if (done)
        return;
    done = true;
    RegisterSystemClass("", CS_DBLCLKS,
                        nullptr); // the class of windows created without a class name
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
    // Lists and edit fields use COLOR_WINDOW, other controls COLOR_3DFACE.
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

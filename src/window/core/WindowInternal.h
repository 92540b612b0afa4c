// The window an HWND points to: its record, its Qt widget, and the seam through which a system
// class (LISTBOX, EDIT, ...) gives its windows their behaviour.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Messages.h"

#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

class CWnd;
class CAccessibleTable;
class QDropEvent;
class QDragEnterEvent;
class QDragMoveEvent;
class QScrollBar;

namespace vnbytstr::detail {

class Overlay;
class Window;
class WindowWidget;

/// Text of the ANSI code page to Qt's and back.
QString ToQString(std::string_view text);
std::string FromQString(const QString& text);
/// WM_GETTEXT and its like: copies a text and a NUL into a buffer of `size` bytes, cut off where it
/// ends. Returns the bytes copied without the NUL; 0 for a null or empty buffer.
LRESULT CopyOut(std::string_view text, char* buffer, std::size_t size);

/// The behaviour of a system class. One object per window, created before WM_NCCREATE and destroyed
/// after WM_NCDESTROY, but not while it handles a message: notifying the parent may destroy the
/// window, but not this object.
class SystemControl {
public:
    explicit SystemControl(Window& window) : m_window(window) {}
    virtual ~SystemControl() = default;
    SystemControl(const SystemControl&) = delete;
    SystemControl& operator=(const SystemControl&) = delete;

    /// The class's treatment of a message that the window's object passed on. Messages without a
    /// special treatment go to Window::GenericProc. The hosted widget is made on WM_CREATE
    /// (Window::Host).
    virtual LRESULT Proc(UINT message, WPARAM wParam, LPARAM lParam) = 0;

protected:
    Window& m_window;
};

/// A class of windows.
struct WindowClass {
    std::string name; ///< as registered
    WNDCLASS info{};
    std::unique_ptr<SystemControl> (*makeControl)(Window&) = nullptr; ///< null: no system class
};

/// Registers a system class. The first window (or GetClassInfo) registers them all: see
/// RegisterSystemClasses in Window.cpp.
void RegisterSystemClass(const char* name, UINT style,
                         std::unique_ptr<SystemControl> (*makeControl)(Window&));
/// As RegisterClass and UnregisterClass.
bool AddWindowClass(const WNDCLASS& info);
bool RemoveWindowClass(std::string_view name);
/// Null when there is none.
const WindowClass* FindWindowClass(std::string_view name);

/// What takes drops onto a window (COleDropTarget).
class DropSink {
public:
    virtual ~DropSink() = default;
    virtual void DragEnter(QDragEnterEvent* event) = 0;
    virtual void DragMove(QDragMoveEvent* event) = 0;
    virtual void DragLeave() = 0;
    virtual void Drop(QDropEvent* event) = 0;
};

/// One window. The pointer is its HWND. DestroyWindow, or the end of its widget, destroys it.
class Window {
public:
    /// Something is being sent. While one exists, no new window stands at the address of a
    /// destroyed one: a handle that was valid before tells afterwards whether its window still
    /// lives. While one for a window exists, its control and widget outlive its destruction.
    class Busy {
    public:
        explicit Busy(Window* window = nullptr);
        ~Busy();
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

    private:
        Window* m_window;
    };
    /// Null when the handle names no living window.
    static Window* Of(HWND window);
    static Window* Of(const QWidget* widget); ///< the nearest one around the widget
    static Window* Of(const CWnd* object);
    /// The whole of CreateWindowEx: `object` gets the messages from the first one on. Null when the
    /// class is unknown or WM_NCCREATE or WM_CREATE refuse. `host` is null or a Qt parent that is
    /// not the widget of a Window.
    static Window* Create(CREATESTRUCT& create, CWnd* object, QWidget* host);
    void Destroy();
    ~Window(); ///< FreeDestroyed alone does it

    HWND Handle() { return reinterpret_cast<HWND>(this); }
    WindowWidget* Widget() const { return m_widget; }
    Window* Parent() const;        ///< parent, of a top-level window its owner; may be null
    Window* ChildOf(int id) const; ///< direct child by id
    CWnd* Object() const { return m_object; } ///< null when none is attached
    CWnd* ObjectOrTemporary();
    void Attach(CWnd* object) { m_object = object; }
    const WindowClass& Class() const { return *m_class; }
    SystemControl* Control() const { return m_control.get(); }

    /// Handles a message: the object, else the class.
    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    /// The class's treatment: system control, class procedure, or GenericProc.
    LRESULT DefaultProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// The treatment common to all windows.
    LRESULT GenericProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// Sends a notification (WM_COMMAND, WM_NOTIFY, WM_DRAWITEM, WM_CTLCOLOR..., WM_HSCROLL ...) to
    /// the parent. The parent's CWnd offers it to this window's object first; without such
    /// a parent this function does.
    LRESULT NotifyParent(UINT message, WPARAM wParam, LPARAM lParam);
    /// WM_COMMAND with this control's id and a notification code.
    LRESULT NotifyCommand(int code);
    /// The brush for WM_CTLCOLOR...; never null. The answer may set colours of the context.
    HBRUSH AskCtlColor(UINT message, HDC dc);

    /// Makes a Qt widget fill the client area and take the focus, and routes its key, mouse, focus
    /// and input method events through messages: a message that reaches GenericProc passes its
    /// event on to the widget. Inner widgets (the line edit of a combo box) are routed with
    /// RouteEvents.
    void Host(QWidget* inner);
    void RouteEvents(QWidget* inner);
    QWidget* Hosted() const { return m_hosted; }

    // Geometry: the client area in widget coordinates, and x mirrored where the window is.
    bool IsMirrored() const { return (m_exStyle & WS_EX_LAYOUTRTL) != 0; }
    QRect ClientArea() const; ///< in widget coordinates
    QRect InnerArea() const;  ///< the same and the scroll bars
    QPoint ToWidget(POINT client) const;
    QRect ToWidget(const RECT& client) const;
    CPoint ToClient(QPoint widget) const;
    CRect ToClient(const QRect& widget) const;
    CPoint GlobalToClient(QPoint global) const;
    QPoint ClientToGlobal(POINT client) const;
    /// Applies WM_WINDOWPOSCHANGING and moves the widget; coordinates as for SetWindowPos.
    bool SetPos(HWND after, int x, int y, int cx, int cy, UINT flags);
    void Show(int command);
    /// Lays out scroll bars and hosted widget, and sends WM_SIZE when the client area changed.
    void UpdateLayout();
    void Invalidate(const RECT* rect); ///< null: all
    /// Gives the focus to the next (previous) window that Tab goes to; false when there is none.
    bool FocusNext(bool next);

    // Scroll bars: WS_VSCROLL and WS_HSCROLL in the style tell whether they are shown.
    void ShowScrollBar(int bar, bool show);
    void SetScroll(int bar, int minimum, int maximum, int page, int position, bool enabled = true);
    QScrollBar* ScrollBar(int bar) const { return m_bars[bar == SB_VERT ? 1 : 0]; }
    int ScrolledTo(bool vertical) const { return m_scrolledTo[vertical ? 1 : 0]; } ///< by SetScroll

    void SetStyles(DWORD style, DWORD exStyle);
    void SetEnabled(bool on);
    void ApplyFont(HFONT font, bool redraw);
    HFONT Font() const { return m_font; }
    QFont QtFont() const;  ///< the font set, else the application's
    Overlay& GetOverlay(); ///< the layer for drawing outside WM_PAINT
    Overlay* ExistingOverlay() const { return m_overlay; }

    DWORD Style() const { return m_style; }
    DWORD ExStyle() const { return m_exStyle; }
    /// Changes style bits that only the window's class reads (BS_*, ES_*).
    void ChangeClassStyle(DWORD remove, DWORD add) { m_style = (m_style & ~remove) | add; }
    UINT Id() const { return m_id; }
    /// The window's text as WM_SETTEXT set it; a class may keep its text elsewhere.
    const std::string& Text() const { return m_text; }
    Window* TopLevelOwner() const { return Of(m_topLevelOwner); } ///< null when there is none
    /// Whether the creator's style had WS_VSCROLL (SB_VERT) or WS_HSCROLL (SB_HORZ).
    bool WantsScrollBar(int bar) const { return bar == SB_VERT ? m_wantsVScroll : m_wantsHScroll; }

    /// Sends WM_TIMER every `milliseconds` (at least 1), in place of a timer with the same id.
    void StartTimer(std::uintptr_t id, UINT milliseconds);
    bool StopTimer(std::uintptr_t id); ///< false when there is none
    bool HasTimer(std::uintptr_t id) const { return m_timers.count(id) != 0; }

    CAccessibleTable* Accessible() const { return m_accessible; } ///< null when there is none
    void SetAccessible(CAccessibleTable* table) { m_accessible = table; } ///< not owned
    DropSink* Drop() const { return m_drop.get(); } ///< null when there is none
    void SetDrop(std::unique_ptr<DropSink> sink) { m_drop = std::move(sink); }

    /// WM_CONTEXTMENU has reached the last window without being handled: it is the host's then.
    static inline bool s_isMenuLeft = false;

private:
    friend class WindowWidget;
    explicit Window(const WindowClass& windowClass);
    void DestroyRecords(const std::shared_ptr<WindowWidget>& root);
    void OnWidgetEnds();
    void PassFocusToParent();
    static void FreeDestroyed();
    void PlaceFirst(const CREATESTRUCT& create);
    bool FinishCreation(CREATESTRUCT& create);
    LRESULT DefaultWheel(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT DefaultSetCursor(LPARAM lParam);

    const WindowClass* m_class;
    DWORD m_style = 0;
    DWORD m_exStyle = 0;
    UINT m_id = 0;
    std::string m_text;
    HWND m_topLevelOwner = nullptr;
    CAccessibleTable* m_accessible = nullptr;
    std::unique_ptr<DropSink> m_drop;
    std::map<std::uintptr_t, int> m_timers; ///< id -> Qt's timer id
    bool m_wantsVScroll = false;
    bool m_wantsHScroll = false;
    WindowWidget* m_widget = nullptr;
    CWnd* m_object = nullptr;
    std::unique_ptr<CWnd> m_temporary;
    std::unique_ptr<SystemControl> m_control;
    QPointer<QWidget> m_hosted;
    QScrollBar* m_bars[2] = {nullptr, nullptr};
    int m_scrolledTo[2] = {0, 0};
    QPointer<QWidget> m_overlayWidget;
    Overlay* m_overlay = nullptr;
    HFONT m_font = nullptr;
    QSize m_sentSize{-1, -1};
    bool m_destroying = false;
    int m_busy = 0;                       ///< how many Busy there are for this window
    std::shared_ptr<WindowWidget> m_root; ///< after its destruction while it is busy
    int m_wheelRest = 0;
    static int s_busy;
};

/// Offers a keyboard message to PreTranslateMessage of `window` and its parents, then of the
/// program. True: handled.
bool PreTranslate(MSG& message, Window& window);
/// Sends WM_CANCELMODE to the window that has captured the mouse, if one has (when a dialog or
/// another window opens).
void CancelCapture();

} // namespace vnbytstr::detail

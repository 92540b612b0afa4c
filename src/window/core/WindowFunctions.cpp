#include "vnbytstr/window/WindowFunctions.h"

#include "src/charset/SystemText.h"
#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/Wnd.h"

#include "src/os/System.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPalette>
#include <QScreen>
#include <QStyle>

#include <cstring>
#include <limits>

using vnbytstr::detail::Window;

WORD RegisterClass(const WNDCLASS* windowClass) {
    static WORD last = 0xC000;
    if (windowClass == nullptr || !vnbytstr::detail::AddWindowClass(*windowClass))
        return 0;
    return ++last;
}

BOOL GetClassInfo(HINSTANCE /*instance*/, LPCSTR name, WNDCLASS* windowClass) {
    if (name == nullptr || *name == '\0' || windowClass == nullptr)
        return FALSE;
    const auto* found = vnbytstr::detail::FindWindowClass(name);
    if (found == nullptr)
        return FALSE;
    *windowClass = found->info;
    return TRUE;
}

BOOL UnregisterClass(LPCSTR name, HINSTANCE /*instance*/) {
    return name != nullptr && vnbytstr::detail::RemoveWindowClass(name);
}

BOOL IsWindow(HWND window) { return Window::Of(window) != nullptr; }

LRESULT SendMessage(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    Window* window = Window::Of(handle);
    return window != nullptr ? window->Send(message, wParam, lParam) : 0;
}

BOOL PostMessage(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    Window* window = Window::Of(handle);
    if (window == nullptr)
        return FALSE;
    QCoreApplication::postEvent(window->Widget(),
                                new vnbytstr::detail::PostedMessage(message, wParam, lParam));
    return TRUE;
}

LRESULT DefWindowProc(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    Window* window = Window::Of(handle);
    return window != nullptr ? window->GenericProc(message, wParam, lParam) : 0;
}

BOOL DestroyWindow(HWND handle) {
    Window* window = Window::Of(handle);
    if (window == nullptr)
        return FALSE;
    window->Destroy();
    return TRUE;
}

HWND GetParent(HWND handle) {
    Window* window = Window::Of(handle);
    Window* parent = window != nullptr ? window->Parent() : nullptr;
    return parent != nullptr ? parent->Handle() : nullptr;
}

HWND GetDlgItem(HWND handle, int id) {
    Window* window = Window::Of(handle);
    Window* child = window != nullptr ? window->ChildOf(id) : nullptr;
    return child != nullptr ? child->Handle() : nullptr;
}

int GetDlgCtrlID(HWND handle) {
    Window* window = Window::Of(handle);
    return window != nullptr ? static_cast<int>(window->Id()) : 0;
}

int GetClassName(HWND handle, LPSTR buffer, int size) {
    Window* window = Window::Of(handle);
    if (window == nullptr || buffer == nullptr || size <= 0)
        return 0;
    const std::string& name = window->Class().name;
    const std::size_t copied = name.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[copied] = '\0';
    return static_cast<int>(copied);
}

BOOL EnableWindow(HWND handle, BOOL on) {
    Window* window = Window::Of(handle);
    if (window == nullptr)
        return FALSE;
    const bool wasDisabled = (window->Style() & WS_DISABLED) != 0;
    window->SetEnabled(on != 0);
    return wasDisabled;
}

BOOL ShowWindow(HWND handle, int command) {
    Window* window = Window::Of(handle);
    if (window == nullptr)
        return FALSE;
    const bool wasVisible = window->Widget()->isVisible();
    window->Show(command);
    return wasVisible;
}

BOOL InvalidateRect(HWND handle, LPCRECT rect, BOOL /*erase*/) {
    Window* window = Window::Of(handle);
    if (window == nullptr)
        return FALSE;
    window->Invalidate(rect);
    return TRUE;
}

BOOL GetClientRect(HWND handle, LPRECT rect) {
    Window* window = Window::Of(handle);
    if (window == nullptr || rect == nullptr)
        return FALSE;
    const QSize size = window->ClientArea().size();
    *rect = CRect(0, 0, size.width(), size.height());
    return TRUE;
}

BOOL GetWindowRect(HWND handle, LPRECT rect) {
    Window* window = Window::Of(handle);
    if (window == nullptr || rect == nullptr)
        return FALSE;
    const QWidget* widget = window->Widget();
    const QRect area = widget->isWindow() ? widget->frameGeometry()
                                          : QRect(widget->mapToGlobal(QPoint()), widget->size());
    *rect = CRect(CPoint(area.x(), area.y()), CSize(area.width(), area.height()));
    return TRUE;
}

LONG GetWindowLong(HWND handle, int index) {
    Window* window = Window::Of(handle);
    if (window == nullptr)
        return 0;
    return index == GWL_STYLE     ? static_cast<LONG>(window->Style())
           : index == GWL_EXSTYLE ? static_cast<LONG>(window->ExStyle())
                                  : 0;
}

LONG SetWindowLong(HWND handle, int index, LONG value) {
    Window* window = Window::Of(handle);
    if (window == nullptr || (index != GWL_STYLE && index != GWL_EXSTYLE))
        return 0;
    const LONG before = GetWindowLong(handle, index);
    if (index == GWL_STYLE)
        window->SetStyles(static_cast<DWORD>(value), window->ExStyle());
    else
        window->SetStyles(window->Style(), static_cast<DWORD>(value));
    window->Send(WM_STYLECHANGED, static_cast<WPARAM>(static_cast<std::intptr_t>(index)), before);
    if (Window::Of(handle) != nullptr)
        window->Invalidate(nullptr);
    return before;
}

BOOL MessageBeep(UINT /*type*/) {
    AfxInitWindows();
    QApplication::beep();
    return TRUE;
}

DWORD GetTickCount() { return vnbytstr::System::Current().GetTickCount(); }

int GetSystemMetrics(int index) {
    AfxInitWindows();
    const QStyle* style = QApplication::style();
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QSize size = screen != nullptr ? screen->geometry().size() : QSize();
    switch (index) {
    case SM_CXSCREEN:
        return size.width();
    case SM_CYSCREEN:
        return size.height();
    case SM_CXVSCROLL:
    case SM_CYHSCROLL:
    case SM_CYVSCROLL:
    case SM_CXHSCROLL:
        return style->pixelMetric(QStyle::PM_ScrollBarExtent);
    case SM_CYCAPTION:
        return style->pixelMetric(QStyle::PM_TitleBarHeight);
    case SM_CXBORDER:
    case SM_CYBORDER:
        return 1;
    case SM_CXEDGE:
    case SM_CYEDGE:
        return 2;
    case SM_CXFRAME:
    case SM_CYFRAME:
        return style->pixelMetric(QStyle::PM_DefaultFrameWidth);
    case SM_CXICON:
    case SM_CYICON:
        return style->pixelMetric(QStyle::PM_LargeIconSize);
    case SM_CXSMICON:
    case SM_CYSMICON:
        return style->pixelMetric(QStyle::PM_SmallIconSize);
    case SM_CXDOUBLECLK:
    case SM_CYDOUBLECLK:
    case SM_CXDRAG:
    case SM_CYDRAG:
        return 4;
    case SM_DBCSENABLED:
        return vnbytstr::IsDbcsEnabled() ? 1 : 0;
    case SM_MIDEASTENABLED:
        return vnbytstr::IsMiddleEastEnabled() ? 1 : 0;
    default:
        return 0;
    }
}

namespace {

/// In a dark palette the darker colours are not seen beside the windows'.
bool IsDark(const QPalette& palette) {
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

QPalette::ColorRole RoleOf(int index, const QPalette& palette) {
    switch (index) {
    case COLOR_WINDOW:
        return QPalette::Base;
    case COLOR_WINDOWTEXT:
        return QPalette::Text;
    case COLOR_HIGHLIGHT:
        return QPalette::Highlight;
    case COLOR_HIGHLIGHTTEXT:
        return QPalette::HighlightedText;
    case COLOR_BTNTEXT:
        return QPalette::ButtonText;
    case COLOR_BTNSHADOW:
    case COLOR_APPWORKSPACE:
        return QPalette::Dark;
    case COLOR_BTNHIGHLIGHT:
        return QPalette::Light;
    case COLOR_3DDKSHADOW:
        return QPalette::Shadow;
    case COLOR_3DLIGHT:
        return QPalette::Midlight;
    case COLOR_WINDOWFRAME:
        return IsDark(palette) ? QPalette::Light : QPalette::Dark;
    case COLOR_MENUTEXT:
    case COLOR_CAPTIONTEXT:
        return QPalette::WindowText;
    case COLOR_INFOBK:
        return QPalette::ToolTipBase;
    case COLOR_INFOTEXT:
        return QPalette::ToolTipText;
    default:
        return QPalette::Window;
    }
}

} // namespace

COLORREF GetSysColor(int index) {
    if (index < 0 || index > COLOR_INFOBK)
        return 0;
    AfxInitWindows();
    const QPalette palette = QApplication::palette();
    const QColor color = index == COLOR_GRAYTEXT
                             ? palette.color(QPalette::Disabled, QPalette::Text)
                             : palette.color(QPalette::Active, RoleOf(index, palette));
    return RGB(color.red(), color.green(), color.blue());
}

LONG GetDialogBaseUnits() {
    AfxInitWindows();
    const QFontMetrics metrics(QApplication::font());
    return MAKELONG(static_cast<WORD>(metrics.averageCharWidth()),
                    static_cast<WORD>(metrics.height()));
}

int MulDiv(int number, int numerator, int denominator) {
    if (denominator == 0)
        return -1;
    const std::int64_t product = static_cast<std::int64_t>(number) * numerator;
    const std::int64_t half = std::abs(static_cast<std::int64_t>(denominator)) / 2;
    const std::int64_t rounded = (product >= 0 ? product + half : product - half) / denominator;
    return rounded > std::numeric_limits<int>::max() || rounded < std::numeric_limits<int>::min()
               ? -1
               : static_cast<int>(rounded);
}

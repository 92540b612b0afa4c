// CWnd: parents, children and siblings, and the items of dialogs.
#include "vnbytstr/window/Wnd.h"

#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

using vnbytstr::detail::Window;
using vnbytstr::detail::WindowWidget;

namespace {

Window* Of(const CWnd* object) { return Window::Of(object); }
CWnd* ObjectOf(Window* window) { return window != nullptr ? window->ObjectOrTemporary() : nullptr; }

} // namespace

CWnd* CWnd::GetParent() const {
    Window* window = Of(this);
    return window != nullptr ? ObjectOf(window->Parent()) : nullptr;
}

CWnd* CWnd::GetTopLevelParent() const {
    Window* window = Of(this);
    while (window != nullptr && (window->Style() & WS_CHILD) != 0 && window->Parent() != nullptr)
        window = window->Parent();
    return ObjectOf(window);
}

CWnd* CWnd::GetDlgItem(int id) const { return FromHandle(::GetDlgItem(m_hWnd, id)); }

void CWnd::GetDlgItem(int id, HWND* window) const {
    if (window != nullptr)
        *window = ::GetDlgItem(m_hWnd, id);
}

namespace {

/// The child windows of a widget, topmost first.
std::vector<Window*> ChildWindows(const QWidget* widget) {
    std::vector<Window*> windows;
    if (widget != nullptr)
        for (const QObject* child : widget->children()) {
            const auto* own = dynamic_cast<const WindowWidget*>(child);
            if (own != nullptr && own->GetWindow() != nullptr && !own->isWindow())
                windows.push_back(own->GetWindow());
        }
    std::reverse(windows.begin(), windows.end());
    return windows;
}

} // namespace

CWnd* CWnd::GetWindow(UINT which) const {
    Window* window = Of(this);
    if (window == nullptr)
        return nullptr;
    if (which == GW_OWNER)
        return ObjectOf(window->TopLevelOwner());
    if (which == GW_CHILD) {
        const auto children = ChildWindows(window->Widget());
        return children.empty() ? nullptr : ObjectOf(children.front());
    }
    const auto siblings = ChildWindows(window->Widget()->parentWidget());
    const auto self = std::find(siblings.begin(), siblings.end(), window);
    if (self == siblings.end())
        return nullptr;
    switch (which) {
    case GW_HWNDFIRST:
        return ObjectOf(siblings.front());
    case GW_HWNDLAST:
        return ObjectOf(siblings.back());
    case GW_HWNDNEXT:
        return self + 1 != siblings.end() ? ObjectOf(*(self + 1)) : nullptr;
    case GW_HWNDPREV:
        return self != siblings.begin() ? ObjectOf(*(self - 1)) : nullptr;
    default:
        return nullptr;
    }
}

BOOL CWnd::IsChild(const CWnd* other) const {
    const QWidget* widget = GetWidget();
    const QWidget* inner = other != nullptr ? other->GetWidget() : nullptr;
    return widget != nullptr && inner != nullptr && widget->isAncestorOf(inner);
}

void CWnd::SetDlgItemText(int id, LPCTSTR text) {
    if (CWnd* item = GetDlgItem(id))
        item->SetWindowText(text);
}

int CWnd::GetDlgItemText(int id, CString& text) const {
    const CWnd* item = GetDlgItem(id);
    text.Empty();
    if (item != nullptr)
        item->GetWindowText(text);
    return text.GetLength();
}

CWnd* CWnd::GetNextDlgTabItem(CWnd* from, BOOL previous) const {
    auto children = ChildWindows(GetWidget());
    if (!previous)
        std::reverse(children.begin(), children.end());
    const auto usable = [](Window* window) {
        return (window->Style() & (WS_TABSTOP | WS_DISABLED)) == WS_TABSTOP &&
               window->Widget()->isVisible();
    };
    Window* start = Of(from);
    const auto place = std::find(children.begin(), children.end(), start);
    if (place != children.end())
        std::rotate(children.begin(), place + 1, children.end());
    const auto found = std::find_if(children.begin(), children.end(), usable);
    return found != children.end() ? ObjectOf(*found) : nullptr;
}

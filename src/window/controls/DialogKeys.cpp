#include "src/window/controls/DialogKeys.h"

#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/Dialog.h"
#include "vnbytstr/window/WindowFunctions.h"
#include "vnbytstr/window/Wnd.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/framework/MessageBoxTypes.h"
#include "vnbytstr/window/Button.h"
#include "vnbytstr/window/Edit.h"

#include <algorithm>
#include <string>
#include <utility>

namespace vnbytstr::detail {

namespace {

std::vector<Window*> WindowsIn(const QWidget* parent) {
    std::vector<Window*> windows;
    if (parent == nullptr)
        return windows;
    for (QObject* const child : parent->children()) {
        const auto* const widget = dynamic_cast<const WindowWidget*>(child);
        if (widget != nullptr && widget->GetWindow() != nullptr &&
            (widget->GetWindow()->Style() & WS_CHILD) != 0)
            windows.push_back(widget->GetWindow());
    }
    return windows;
}

LRESULT CodeOf(Window& window) { return window.Send(WM_GETDLGCODE); }

bool CanHaveFocus(const Window& window) {
    return (window.Style() & WS_DISABLED) == 0 && !window.Widget()->isHidden();
}

/// The dialog's direct child that is the window or contains it; null when there is none.
Window* ControlOf(const Window& dialog, Window* window) {
    while (window != nullptr && window->Parent() != &dialog)
        window = (window->Style() & WS_CHILD) != 0 ? window->Parent() : nullptr;
    return window;
}

/// A radio button that Tab skips, because another one of its group is checked.
bool IsPassedBy(Window& control) {
    if ((CodeOf(control) & DLGC_RADIOBUTTON) == 0 || control.Send(BM_GETCHECK) == BST_CHECKED)
        return false;
    const auto group = ControlsOfGroup(control);
    return std::any_of(group.begin(), group.end(), [](Window* other) {
        return (CodeOf(*other) & DLGC_RADIOBUTTON) != 0 &&
               other->Send(BM_GETCHECK) == BST_CHECKED && CanHaveFocus(*other);
    });
}

void GoInGroup(Window& from, bool back) {
    const auto group = ControlsOfGroup(from);
    const auto size = static_cast<std::ptrdiff_t>(group.size());
    const auto at = std::find(group.begin(), group.end(), &from) - group.begin();
    for (std::ptrdiff_t i = 1; i < size; ++i) {
        Window* const next = group[static_cast<std::size_t>((at + (back ? size - i : i)) % size)];
        const LRESULT code = CodeOf(*next);
        if (!CanHaveFocus(*next) || (code & DLGC_STATIC) != 0)
            continue;
        const HWND handle = next->Handle();
        FocusControl(*next);
        if ((code & DLGC_RADIOBUTTON) != 0 && Window::Of(handle) != nullptr)
            ::SendMessage(handle, BM_CLICK, 0, 0);
        return;
    }
}

void PressEnter(Window& dialog, Window* focus) {
    if (focus != nullptr && (CodeOf(*focus) & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0) {
        focus->Send(BM_CLICK);
        return;
    }
    const auto answer = static_cast<DWORD>(dialog.Send(DM_GETDEFID));
    const int id = HIWORD(answer) == DC_HASDEFID ? LOWORD(answer) : static_cast<int>(IDOK);
    if (Window* const button = dialog.ChildOf(id))
        button->Send(BM_CLICK);
    else
        dialog.Send(WM_COMMAND, MAKEWPARAM(id, BN_CLICKED));
}

void PressEscape(Window& dialog) {
    Window* const button = dialog.ChildOf(IDCANCEL);
    if (button == nullptr || (button->Style() & WS_DISABLED) == 0)
        dialog.Send(WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                    reinterpret_cast<LPARAM>(button != nullptr ? button->Handle() : nullptr));
}

bool HasLetter(const Window& control, QChar letter) {
    const QString text = ToQString(control.Text());
    for (qsizetype at = text.indexOf(u'&'); at >= 0 && at + 1 < text.size();
         at = text.indexOf(u'&', at + 2))
        if (text[at + 1] != u'&')
            return text[at + 1].toCaseFolded() == letter.toCaseFolded();
    return false;
}

bool GoToLetter(Window& dialog, char byte) {
    static std::string bytes; // of a character whose bytes come one by one
    bytes.push_back(byte);
    if (CodePage::Ansi().IsCutShort(bytes.data(), bytes.data() + bytes.size()))
        return false;
    const QString typed = ToQString(std::exchange(bytes, {}));
    if (typed.isEmpty() || !typed.front().isLetterOrNumber())
        return false;
    for (Window* const control : ChildrenOf(dialog)) {
        const LRESULT code = CodeOf(*control);
        if ((code & (DLGC_STATIC | DLGC_BUTTON)) == 0 || control->Widget()->isHidden() ||
            !HasLetter(*control, typed.front()))
            continue;
        Window* const target = (code & DLGC_STATIC) != 0 ? NextFocusable(*control) : control;
        if (target == nullptr || !CanHaveFocus(*target))
            continue;
        const HWND handle = target->Handle();
        FocusControl(*target);
        if (target == control && Window::Of(handle) != nullptr)
            ::SendMessage(handle, BM_CLICK, 0, 0);
        return true;
    }
    return false;
}

} // namespace

std::vector<Window*> ChildrenOf(const Window& parent) { return WindowsIn(parent.Widget()); }

std::vector<Window*> SiblingsOf(const Window& window) {
    return WindowsIn(window.Widget()->parentWidget());
}

std::vector<Window*> ControlsOfGroup(const Window& window) {
    const auto all = SiblingsOf(window);
    const auto startsGroup = [](const Window* control) {
        return (control->Style() & WS_GROUP) != 0;
    };
    const auto self = std::find(all.begin(), all.end(), &window);
    if (self == all.end())
        return {};
    auto first = self;
    while (first != all.begin() && !startsGroup(*first))
        --first;
    return {first, std::find_if(self + 1, all.end(), startsGroup)};
}

Window* NextFocusable(const Window& window) {
    const auto all = SiblingsOf(window);
    auto at = std::find(all.begin(), all.end(), &window);
    if (at == all.end())
        return nullptr;
    for (++at; at != all.end(); ++at)
        if ((CodeOf(**at) & DLGC_STATIC) == 0)
            return *at;
    return nullptr;
}

Window* NextTabStop(const Window& dialog, const Window* from, bool back) {
    auto all = ChildrenOf(dialog);
    if (back)
        std::reverse(all.begin(), all.end());
    const auto start = std::find(all.begin(), all.end(), from);
    if (start != all.end())
        std::rotate(all.begin(), start + 1, all.end());
    const auto found = std::find_if(all.begin(), all.end(), [](Window* control) {
        return (control->Style() & WS_TABSTOP) != 0 && CanHaveFocus(*control) &&
               !IsPassedBy(*control);
    });
    return found != all.end() ? *found : nullptr;
}

void FocusControl(Window& control) {
    const HWND handle = control.Handle();
    const bool select = (CodeOf(control) & DLGC_HASSETSEL) != 0;
    ::SetFocus(handle);
    if (select && Window::Of(handle) != nullptr)
        ::SendMessage(handle, EM_SETSEL, 0, -1);
}

} // namespace vnbytstr::detail

using namespace vnbytstr::detail;

BOOL IsDialogMessage(HWND dialogHandle, MSG* message) {
    Window* const dialog = Window::Of(dialogHandle);
    Window* const receiver = message != nullptr ? Window::Of(message->hwnd) : nullptr;
    if (dialog == nullptr || receiver == nullptr)
        return FALSE;
    Window* const focus = ControlOf(*dialog, receiver);
    if (focus == nullptr && receiver != dialog)
        return FALSE;
    const bool key = message->message == WM_KEYDOWN;
    if (!key && message->message != WM_CHAR && message->message != WM_SYSCHAR)
        return FALSE;
    LRESULT code = 0;
    if (message->message != WM_SYSCHAR) {
        code = receiver->Send(WM_GETDLGCODE, message->wParam, reinterpret_cast<LPARAM>(message));
        if (Window::Of(dialogHandle) == nullptr)
            return TRUE;
        if ((code & DLGC_WANTALLKEYS) != 0)
            return FALSE;
    }
    if (!key)
        return (code & DLGC_WANTCHARS) == 0 &&
                       GoToLetter(*dialog, static_cast<char>(message->wParam))
                   ? TRUE
                   : FALSE;
    const bool shift = GetKeyState(VK_SHIFT) < 0;
    const bool control = GetKeyState(VK_CONTROL) < 0;
    switch (message->wParam) {
    case VK_TAB:
        if (control || (code & DLGC_WANTTAB) != 0)
            return FALSE;
        if (Window* const next = NextTabStop(*dialog, focus, shift))
            FocusControl(*next);
        return TRUE;
    case VK_LEFT:
    case VK_UP:
    case VK_RIGHT:
    case VK_DOWN:
        if (focus == nullptr || (code & DLGC_WANTARROWS) != 0)
            return FALSE;
        GoInGroup(*focus, message->wParam == VK_LEFT || message->wParam == VK_UP);
        return TRUE;
    case VK_RETURN:
        if (control)
            return FALSE;
        PressEnter(*dialog, focus);
        return TRUE;
    case VK_ESCAPE:
        PressEscape(*dialog);
        return TRUE;
    default:
        return FALSE;
    }
}

// The list box: mouse and keyboard.
//
// Mouse. Single selection: the row under the pointer is selected, also while it is dragged.
// Multiple selection: a click toggles a row's selection. Extended selection: a click selects one
// row, dragging and Shift the rows from the anchor on, Ctrl adds to (takes from) the selection.
// Dragging above or below scrolls. LBN_SELCHANGE comes when the button goes up.
//
// Keys. Arrows, Page, Home and End move the current row and, in single and extended selection,
// select it; Shift extends, Ctrl moves without selecting. Space toggles the current row. A
// letter goes to the next row that begins with it.
#include "src/window/controls/ListBoxControl.h"

#include "vnbytstr/window/ListBox.h"
#include "vnbytstr/window/WindowFunctions.h"
#include "vnbytstr/window/Wnd.h"

#include "src/charset/CodePage.h"

#include <algorithm>
#include <cstdint>

namespace vnbytstr::detail {
namespace {

constexpr std::uintptr_t kScrollTimer = 0xFFFFFE01;
constexpr UINT kScrollEvery = 50; // milliseconds

constexpr std::int64_t kNoTarget = INT64_MIN;

/// Where a key takes the current row; kNoTarget for a key that does not move it.
std::int64_t Target(int key, std::int64_t from, int page, int count) {
    switch (key) {
    case VK_UP:
    case VK_LEFT:
        return from - 1;
    case VK_DOWN:
    case VK_RIGHT:
        return from + 1;
    case VK_PRIOR:
        return from - page;
    case VK_NEXT:
        return from + page;
    case VK_HOME:
        return 0;
    case VK_END:
        return count - 1;
    default:
        return kNoTarget;
    }
}

bool IsDown(int key) { return GetKeyState(key) < 0; }

} // namespace

void ListBoxControl::Notify(int code) {
    if (Has(LBS_NOTIFY))
        m_window.NotifyCommand(code);
}

void ListBoxControl::OnButtonDown(CPoint point, UINT flags) {
    HWND handle = m_window.Handle();
    const MSG* message = CWnd::GetCurrentMessage();
    const bool doubleClick = message != nullptr && message->message == WM_LBUTTONDBLCLK;
    const bool wasDown = IsDown(VK_LBUTTON);
    SetFocus(handle);
    if (Window::Of(handle) == nullptr || m_tracking || (wasDown && !IsDown(VK_LBUTTON)))
        return; // a message box may have got the release
    bool outside = false;
    const int row = RowFromPoint(point, outside);
    m_changed = false;
    if (row < 0 || outside || Has(LBS_NOSEL))
        return;
    if (doubleClick) {
        Notify(LBN_DBLCLK);
        return;
    }
    const bool shift = (flags & MK_SHIFT) != 0;
    const bool control = (flags & MK_CONTROL) != 0;
    m_trackSelects = true;
    m_adding = false;
    if (IsSingle()) {
        m_changed = SetCurrent(row);
    } else if (!IsExtended()) {
        SetSelected(row, !m_rows.IsSelected(row));
        m_changed = true;
    } else if (shift && m_anchor >= 0) {
        if (control)
            m_rows.SelectRange(std::min(m_anchor, row), std::max(m_anchor, row), true);
        else
            SelectOnly(m_anchor, row);
        m_changed = true;
        InvalidateFrom(m_top);
    } else if (control) {
        m_trackSelects = !m_rows.IsSelected(row);
        m_adding = true;
        SetSelected(row, m_trackSelects);
        m_anchor = row;
        m_changed = true;
    } else {
        SelectOnly(row, row);
        m_anchor = row;
    }
    SetCaret(row, true);
    m_tracking = true;
    m_trackTo = row;
    m_trackPoint = point;
    SetCapture(handle);
}

void ListBoxControl::OnTrack(CPoint point) {
    m_trackPoint = point;
    const bool beyond = point.y < 0 || point.y >= m_client.cy;
    CWnd* self = m_window.ObjectOrTemporary();
    if (beyond && !m_window.HasTimer(kScrollTimer))
        self->SetTimer(kScrollTimer, kScrollEvery);
    else if (!beyond)
        self->KillTimer(kScrollTimer);
    bool outside = false;
    const int row = RowFromPoint(point, outside);
    if (row >= 0 && row != m_trackTo && !beyond)
        SelectTo(row);
}

void ListBoxControl::OnAutoScroll() {
    if (!m_tracking)
        return;
    const int row = m_trackPoint.y < 0 ? std::max(m_top - 1, 0)
                                       : std::min(m_top + FullyVisible(), m_rows.Count() - 1);
    if (m_rows.Has(row))
        SelectTo(row);
}

/// The pointer was dragged to another row.
void ListBoxControl::SelectTo(int row) {
    m_trackTo = row;
    if (IsSingle()) {
        m_changed = SetCurrent(row) || m_changed;
    } else if (IsExtended()) {
        const int anchor = m_anchor >= 0 ? m_anchor : row;
        if (m_adding) {
            m_rows.SelectRange(std::min(anchor, row), std::max(anchor, row), m_trackSelects);
            InvalidateFrom(m_top);
        } else {
            SelectOnly(anchor, row);
        }
    }
    SetCaret(row, true);
}

void ListBoxControl::EndTracking(bool notify) {
    if (!m_tracking)
        return;
    HWND handle = m_window.Handle();
    m_tracking = false;
    m_window.ObjectOrTemporary()->KillTimer(kScrollTimer);
    const bool released = GetCapture() == handle;
    if (released)
        ReleaseCapture();
    // On release the owner is notified even when the same row was clicked again.
    if (notify && Window::Of(handle) != nullptr && (m_changed || released))
        Notify(LBN_SELCHANGE);
}

bool ListBoxControl::OnKey(int key) {
    HWND handle = m_window.Handle();
    if (Has(LBS_WANTKEYBOARDINPUT)) {
        const LRESULT answer = m_window.NotifyParent(WM_VKEYTOITEM, MAKEWPARAM(key, m_caret),
                                                     reinterpret_cast<LPARAM>(handle));
        constexpr LRESULT kDone = -2;
        if (answer == kDone || Window::Of(handle) == nullptr)
            return true;
    }
    const int count = m_rows.Count();
    const int from = std::max(m_caret, IsSingle() ? -1 : 0);
    const int page = std::max(FullyVisible() - 1, 1);
    if (key == VK_SPACE) {
        if (IsSingle() || !m_rows.Has(m_caret))
            return false;
        if (IsExtended() && !IsDown(VK_CONTROL))
            SelectOnly(m_caret, m_caret);
        else
            SetSelected(m_caret, !m_rows.IsSelected(m_caret));
        m_anchor = m_caret;
        Notify(LBN_SELCHANGE);
        return true;
    }
    const std::int64_t to = Target(key, from, page, count);
    if (to == kNoTarget)
        return false;
    if (count > 0 && !Has(LBS_NOSEL))
        MoveCaret(static_cast<int>(std::clamp<std::int64_t>(to, 0, count - 1)));
    return true;
}

void ListBoxControl::MoveCaret(int row) {
    const int caret = m_caret;
    m_changed = false;
    if (IsSingle()) {
        m_changed = SetCurrent(row);
    } else if (IsExtended() && IsDown(VK_SHIFT)) {
        if (m_anchor < 0)
            m_anchor = std::max(caret, 0);
        SelectOnly(m_anchor, row);
    } else if (IsExtended() && !IsDown(VK_CONTROL)) {
        SelectOnly(row, row);
        m_anchor = row;
    }
    HWND handle = m_window.Handle();
    SetCaret(row, true);
    if (m_changed && Window::Of(handle) != nullptr)
        Notify(LBN_SELCHANGE);
}

bool ListBoxControl::OnCharacter(char ch) {
    constexpr char kSelectAll = '/';
    constexpr char kSelectNone = 0x1C; // Ctrl+backslash
    if (IsExtended() && IsDown(VK_CONTROL) && (ch == kSelectAll || ch == kSelectNone)) {
        m_rows.SelectRange(0, m_rows.Count() - 1, ch == kSelectAll);
        InvalidateFrom(m_top);
        Notify(LBN_SELCHANGE);
        return true;
    }
    if (Has(LBS_WANTKEYBOARDINPUT) && !HasStrings()) {
        const LRESULT row =
            m_window.NotifyParent(WM_CHARTOITEM, MAKEWPARAM(static_cast<BYTE>(ch), m_caret),
                                  reinterpret_cast<LPARAM>(m_window.Handle()));
        if (row >= 0 && m_rows.Has(static_cast<int>(row)))
            MoveCaret(static_cast<int>(row));
        return row != -1;
    }
    const bool printable = static_cast<BYTE>(ch) > 0x20 && ch != 0x7F;
    if (!printable || !HasStrings() || Has(LBS_NOSEL))
        return false;
    // A character's bytes come one by one.
    m_typed += ch;
    if (CodePage::Ansi().IsCutShort(m_typed.data(), m_typed.data() + m_typed.size()))
        return true;
    const std::string typed = std::exchange(m_typed, {});
    const int found = m_rows.FindBeginning(m_caret, typed);
    if (found >= 0)
        MoveCaret(found);
    return true;
}

} // namespace vnbytstr::detail

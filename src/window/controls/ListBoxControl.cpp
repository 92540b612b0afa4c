// The list box: its messages and rows.
#include "src/window/controls/ListBoxControl.h"

#include "src/window/draw/GdiInternal.h"
#include "vnbytstr/window/AccessibleTable.h"
#include "vnbytstr/window/ListBox.h"
#include "vnbytstr/window/WindowFunctions.h"

#include "src/charset/Collation.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <numeric>

namespace vnbytstr::detail {
namespace {

constexpr UINT kUpdateBars = WM_USER + 0x3A1; // posted to itself

std::string_view ViewOf(LPARAM text) {
    const auto* chars = reinterpret_cast<const char*>(text);
    return chars != nullptr ? std::string_view(chars) : std::string_view();
}

} // namespace

std::unique_ptr<SystemControl> MakeListBoxControl(Window& window) {
    return std::make_unique<ListBoxControl>(window);
}

ListBoxControl* ListBoxControl::Of(HWND handle) {
    Window* window = Window::Of(handle);
    return window != nullptr ? dynamic_cast<ListBoxControl*>(window->Control()) : nullptr;
}

LRESULT ListBoxControl::Proc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message >= LB_ADDSTRING && message <= LB_ITEMFROMPOINT) {
        switch (message) {
        case LB_SETSEL:
        case LB_SETCURSEL:
        case LB_GETSEL:
        case LB_GETCURSEL:
        case LB_SELECTSTRING:
        case LB_GETSELCOUNT:
        case LB_GETSELITEMS:
        case LB_SELITEMRANGE:
        case LB_SELITEMRANGEEX:
        case LB_SETANCHORINDEX:
        case LB_GETANCHORINDEX:
        case LB_SETCARETINDEX:
        case LB_GETCARETINDEX:
            return SelectionProc(message, wParam, lParam);
        case LB_GETTOPINDEX:
        case LB_SETTOPINDEX:
        case LB_GETITEMRECT:
        case LB_SETITEMHEIGHT:
        case LB_GETITEMHEIGHT:
        case LB_GETHORIZONTALEXTENT:
        case LB_SETHORIZONTALEXTENT:
        case LB_ITEMFROMPOINT:
            return PlaceProc(message, wParam, lParam);
        default:
            return RowsProc(message, wParam, lParam);
        }
    }
    return InputProc(message, wParam, lParam);
}

// --- rows ------------------------------------------------------------------------------------

LRESULT ListBoxControl::RowsProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const int row = static_cast<int>(wParam);
    try {
        switch (message) {
        case LB_ADDSTRING:
            return Add(lParam);
        case LB_INSERTSTRING:
            return Insert(row, lParam);
        case LB_DELETESTRING:
            return Delete(row);
        case LB_RESETCONTENT:
            Reset();
            return LB_OKAY;
        case LB_GETCOUNT:
            return m_rows.Count();
        case LB_GETTEXT:
            return CopyText(row, lParam);
        case LB_GETTEXTLEN:
            if (!m_rows.Has(row))
                return LB_ERR;
            return HasStrings() ? static_cast<LRESULT>(m_rows.Text(row).size())
                                : static_cast<LRESULT>(sizeof(std::uintptr_t));
        case LB_FINDSTRING:
            return Find(row, lParam, false);
        case LB_FINDSTRINGEXACT:
            return Find(row, lParam, true);
        case LB_GETITEMDATA:
            return m_rows.Has(row) ? static_cast<LRESULT>(m_rows.Data(row)) : LB_ERR;
        case LB_SETCOUNT:
            return SetCount(wParam);
        case LB_SETITEMDATA:
            if (m_rows.IsNoData())
                return LB_ERR;
            if (row == -1) {
                for (int i = 0; i < m_rows.Count(); ++i)
                    m_rows.SetData(i, static_cast<std::uintptr_t>(lParam));
                return LB_OKAY;
            }
            if (!m_rows.Has(row))
                return LB_ERR;
            m_rows.SetData(row, static_cast<std::uintptr_t>(lParam));
            return LB_OKAY;
        case LB_INITSTORAGE:
            m_rows.Reserve(row);
            return static_cast<LRESULT>(m_rows.Count()) + std::max(row, 0);
        case LB_SETTABSTOPS:
        case LB_GETLOCALE:
        case LB_SETLOCALE:
            return 0;
        default:
            return LB_ERR;
        }
    } catch (const std::bad_alloc&) {
        if (Has(LBS_NOTIFY))
            m_window.NotifyCommand(LBN_ERRSPACE);
        return LB_ERRSPACE;
    }
}

int ListBoxControl::Add(LPARAM text) {
    if (!Has(LBS_SORT))
        return Insert(m_rows.Count(), text);
    const auto data = static_cast<std::uintptr_t>(text);
    return Insert(HasStrings() ? SortedPlace(ViewOf(text), 0) : SortedPlace({}, data), text);
}

int ListBoxControl::Insert(int row, LPARAM text) {
    if (row == -1)
        row = m_rows.Count();
    if (row < 0 || row > m_rows.Count())
        return LB_ERR;
    if (HasStrings())
        m_rows.Insert(row, ViewOf(text));
    else if (m_rows.IsNoData())
        m_rows.Insert(row, {});
    else
        m_rows.Insert(row, {}, static_cast<std::uintptr_t>(text));
    RowInserted(row);
    return row;
}

void ListBoxControl::RowInserted(int row) {
    for (int* place : {&m_current, &m_caret, &m_anchor})
        if (*place >= row && m_rows.Count() > 1)
            ++*place;
    if (!IsSingle() && m_caret < 0)
        m_caret = 0;
    if (HasOwnHeights())
        MeasureRow(row);
    else if (m_rows.Count() == 1)
        MeasureCommon();
    if (row < m_top)
        ++m_top; // the rows in view stay in view
    RowsChanged();
    InvalidateFrom(row);
}

int ListBoxControl::CompareRow(int row, std::string_view text, std::uintptr_t data) {
    if (HasStrings())
        return CompareIgnoringCaseKanaWidth(m_rows.Text(row), text);
    COMPAREITEMSTRUCT compare{};
    compare.CtlType = ODT_LISTBOX;
    compare.CtlID = m_window.Id();
    compare.hwndItem = m_window.Handle();
    compare.itemID1 = static_cast<UINT>(row);
    compare.itemData1 = m_rows.Data(row);
    compare.itemID2 = static_cast<UINT>(-1);
    compare.itemData2 = data;
    return static_cast<int>(
        m_window.NotifyParent(WM_COMPAREITEM, m_window.Id(), reinterpret_cast<LPARAM>(&compare)));
}

/// Upper bound: the index after the last row that is not greater.
int ListBoxControl::SortedPlace(std::string_view text, std::uintptr_t data) {
    int from = 0;
    int to = m_rows.Count();
    while (from < to) {
        const int middle = from + (to - from) / 2;
        if (CompareRow(middle, text, data) <= 0)
            from = middle + 1;
        else
            to = middle;
    }
    return from;
}

int ListBoxControl::AddMany(std::string_view texts, int count) {
    const int first = m_rows.Count();
    if (!HasStrings())
        return LB_ERR;
    try {
        if (!m_rows.AddMany(texts, count))
            return LB_ERR;
        if (Has(LBS_SORT)) {
            CollationKeys keys;
            for (int row = 0; row < m_rows.Count(); ++row)
                keys.Add(m_rows.Text(row));
            std::vector<DWORD> order(static_cast<std::size_t>(m_rows.Count()));
            std::iota(order.begin(), order.end(), 0U);
            std::stable_sort(order.begin(), order.end(), [&](DWORD left, DWORD right) {
                return keys[left].compare(keys[right]) < 0;
            });
            Reorder(order);
        }
    } catch (const std::bad_alloc&) {
        return LB_ERRSPACE;
    }
    if (!IsSingle() && m_caret < 0 && m_rows.Count() > 0)
        m_caret = 0;
    if (HasOwnHeights())
        for (int row = first; row < m_rows.Count(); ++row)
            MeasureRow(row);
    RowsChanged();
    InvalidateFrom(Has(LBS_SORT) ? 0 : first);
    return first;
}

bool ListBoxControl::Reorder(std::span<const DWORD> order) {
    if (!m_rows.Reorder(order))
        return false;
    for (int* place : {&m_current, &m_caret, &m_anchor}) {
        if (*place < 0)
            continue;
        const auto moved = std::find(order.begin(), order.end(), static_cast<DWORD>(*place));
        *place = static_cast<int>(moved - order.begin());
    }
    InvalidateFrom(0);
    NotifyAccessibility(m_window.Handle(), AccessibleChange::Rows);
    return true;
}

bool ListBoxControl::SetRowText(int row, std::string_view text) {
    if (!m_rows.Has(row) || !HasStrings())
        return false;
    m_rows.SetText(row, text);
    InvalidateRow(row);
    NotifyAccessibility(m_window.Handle(), AccessibleChange::CellText, row);
    return true;
}

LRESULT ListBoxControl::Delete(int row) {
    if (!m_rows.Has(row))
        return LB_ERR;
    SendDeleteItem(row);
    if (!m_rows.Has(row))
        return LB_ERR;
    m_rows.Remove(row);
    if (m_current == row)
        m_current = -1;
    for (int* place : {&m_current, &m_caret, &m_anchor})
        if (*place > row || *place >= m_rows.Count())
            --*place;
    if (m_top > row || m_top >= m_rows.Count())
        m_top = std::max(m_top - 1, 0);
    RowsChanged();
    m_top = std::min(m_top, LastTop());
    InvalidateFrom(m_top);
    return m_rows.Count();
}

/// The rows up to the lower of the numbers before and after stay what they are: selected or not,
/// current, at the top.
LRESULT ListBoxControl::SetCount(WPARAM wanted) {
    if (!m_rows.IsNoData() || wanted > INT_MAX)
        return LB_ERR;
    const int before = m_rows.Count();
    const int count = static_cast<int>(wanted);
    if (count == before)
        return LB_OKAY;
    m_rows.SetCount(count);
    const int caret = m_caret;
    if (m_current >= count)
        m_current = -1;
    for (int* place : {&m_caret, &m_anchor})
        *place = std::min(*place, count - 1);
    if (!IsSingle() && m_caret < 0 && count > 0)
        m_caret = 0;
    if (before == 0)
        MeasureCommon();
    const int top = m_top;
    m_top = std::min(m_top, LastTop());
    RowsChanged();
    m_top = std::min(m_top, LastTop()); // the scroll bar may have come or gone
    InvalidateFrom(m_top == top ? std::min(before, count) : m_top);
    if (m_caret != caret)
        InvalidateRow(std::max(m_caret, 0));
    return LB_OKAY;
}

/// Empties the list; its rows have (no) texts from now on.
bool ListBoxControl::SetNoData(bool on) {
    if (!IsOwnerDrawn() || Has(LBS_SORT))
        return false;
    Reset();
    m_window.ChangeClassStyle(on ? LBS_HASSTRINGS : LBS_NODATA, on ? LBS_NODATA : LBS_HASSTRINGS);
    m_rows.SetNoData(on);
    if (!on && !Has(LBS_OWNERDRAWFIXED))
        MeasureAll(); // rows are measured one by one again
    return true;
}

void ListBoxControl::Reset() {
    if (m_rows.AsideCount() > 0)
        ShowAll();
    if (IsOwnerDrawn() && !m_rows.IsNoData())
        for (int row = m_rows.Count() - 1; row >= 0; --row)
            if (m_rows.Has(row))
                SendDeleteItem(row);
    m_rows.Clear();
    m_top = 0;
    m_shift = 0;
    m_caret = m_anchor = m_current = -1;
    RowsChanged();
    InvalidateFrom(0);
}

void ListBoxControl::SendDeleteItem(int row) {
    if (!IsOwnerDrawn() || m_rows.Data(row) == 0)
        return;
    DELETEITEMSTRUCT item{ODT_LISTBOX, m_window.Id(), static_cast<UINT>(row), m_window.Handle(),
                          m_rows.Data(row)};
    m_window.NotifyParent(WM_DELETEITEM, m_window.Id(), reinterpret_cast<LPARAM>(&item));
}

LRESULT ListBoxControl::CopyText(int row, LPARAM buffer) const {
    auto* target = reinterpret_cast<char*>(buffer);
    if (!m_rows.Has(row) || target == nullptr)
        return LB_ERR;
    if (!HasStrings()) {
        const std::uintptr_t data = m_rows.Data(row);
        std::memcpy(target, &data, sizeof data);
        return sizeof data;
    }
    const std::string_view text = m_rows.Text(row);
    std::memcpy(target, text.data(), text.size() + 1);
    return static_cast<LRESULT>(text.size());
}

int ListBoxControl::Find(int after, LPARAM text, bool exact) const {
    if (m_rows.IsNoData())
        return LB_ERR;
    if (!HasStrings()) {
        for (int row = 0; row < m_rows.Count(); ++row)
            if (m_rows.Data(row) == static_cast<std::uintptr_t>(text))
                return row;
        return LB_ERR;
    }
    return exact ? m_rows.FindExact(after, ViewOf(text))
                 : m_rows.FindBeginning(after, ViewOf(text));
}

// --- the rest --------------------------------------------------------------------------------

LRESULT ListBoxControl::InputProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        OnCreate();
        return 0;
    case WM_DESTROY:
        if (IsOwnerDrawn())
            Reset();
        return 0;
    case WM_PAINT:
        Paint();
        return 0;
    case WM_ERASEBKGND:
        return 1; // Paint fills what no row covers
    case WM_SIZE:
        m_client = CSize(LOWORD(lParam), HIWORD(lParam));
        m_barsStale = true;
        UpdateScrollBars();
        m_top = std::min(m_top, LastTop());
        ShiftTo(m_shift);
        m_window.Invalidate(nullptr);
        return 0;
    case WM_SETREDRAW:
        m_redraw = wParam != 0;
        m_window.GenericProc(message, wParam, lParam);
        if (m_redraw) {
            UpdateScrollBars();
            m_window.Invalidate(nullptr);
        }
        return 0;
    case WM_SETFONT:
        m_window.GenericProc(message, wParam, lParam);
        if (!IsOwnerDrawn())
            MeasureAll();
        RowsChanged();
        return 0;
    case WM_ENABLE:
        m_window.Invalidate(nullptr);
        return 0;
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        m_hasFocus = message == WM_SETFOCUS;
        if (!m_hasFocus)
            EndTracking(true);
        InvalidateRow(std::max(m_caret, 0));
        Notify(m_hasFocus ? LBN_SETFOCUS : LBN_KILLFOCUS);
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        OnButtonDown(CPoint(lParam), static_cast<UINT>(wParam));
        return 0;
    case WM_MOUSEMOVE:
        if (m_tracking)
            OnTrack(CPoint(lParam));
        return 0;
    case WM_LBUTTONUP:
        if (m_tracking)
            EndTracking(true);
        return 0;
    case WM_CANCELMODE:
    case WM_CAPTURECHANGED:
        if (m_tracking)
            EndTracking(message == WM_CAPTURECHANGED);
        return m_window.GenericProc(message, wParam, lParam);
    case WM_TIMER:
        OnAutoScroll();
        return 0;
    case WM_VSCROLL:
        OnScroll(SB_VERT, LOWORD(wParam));
        return 0;
    case WM_HSCROLL:
        OnScroll(SB_HORZ, LOWORD(wParam));
        return 0;
    case WM_KEYDOWN:
        return OnKey(static_cast<int>(wParam)) ? 0 : m_window.GenericProc(message, wParam, lParam);
    case WM_CHAR:
        return OnCharacter(static_cast<char>(wParam))
                   ? 0
                   : m_window.GenericProc(message, wParam, lParam);
    case kUpdateBars:
        UpdateScrollBars();
        return 0;
    default:
        return m_window.GenericProc(message, wParam, lParam);
    }
}

void ListBoxControl::RowsChanged() {
    // While many rows come and go, the scroll bars are updated later; but showing or hiding one is
    // done at once, because it changes the client area.
    if (!m_redraw) {
        m_barsStale = true;
        return;
    }
    const bool needs = NeededBars().vertical;
    const bool shown = (m_window.Style() & WS_VSCROLL) != 0;
    const bool follows =
        !m_window.WantsScrollBar(SB_VERT) || Has(LBS_DISABLENOSCROLL) || needs == shown;
    if (!follows) {
        UpdateScrollBars();
    } else if (!m_barsStale) {
        m_barsStale = true;
        ::PostMessage(m_window.Handle(), kUpdateBars, 0, 0);
        NotifyAccessibility(m_window.Handle(), AccessibleChange::Rows);
    }
}

} // namespace vnbytstr::detail

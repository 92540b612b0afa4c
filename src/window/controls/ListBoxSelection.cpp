// The list box's selection and caret.
#include "src/window/controls/ListBoxControl.h"

#include "vnbytstr/window/AccessibleTable.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>

namespace vnbytstr::detail {

LRESULT ListBoxControl::SelectionProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const int row = static_cast<int>(wParam);
    switch (message) {
    case LB_GETCURSEL:
        return IsSingle() ? m_current : m_caret;
    case LB_SETCURSEL:
        if (!IsSingle())
            return LB_ERR;
        if (row != -1 && !m_rows.Has(row))
            return LB_ERR;
        SetCurrent(row);
        if (row >= 0)
            SetCaret(row, true);
        return row == -1 ? LB_ERR : row;
    case LB_GETSEL:
        return m_rows.Has(row) ? (m_rows.IsSelected(row) ? 1 : 0) : LB_ERR;
    case LB_SETSEL: {
        const int which = static_cast<int>(lParam);
        if (IsSingle() || (which != -1 && !m_rows.Has(which)))
            return LB_ERR;
        if (which == -1) {
            m_rows.SelectRange(0, m_rows.Count() - 1, row != 0);
            InvalidateFrom(0);
        } else {
            SetSelected(which, row != 0);
            m_anchor = which;
            if (row != 0)
                SetCaret(which, true);
        }
        NotifyAccessibility(m_window.Handle(), AccessibleChange::Selection);
        return LB_OKAY;
    }
    case LB_GETSELCOUNT:
        return IsSingle() ? LB_ERR : m_rows.SelectedCount();
    case LB_GETSELITEMS:
        return SelectedItems(row, reinterpret_cast<int*>(lParam));
    case LB_SELECTSTRING: {
        const int found = Find(row, lParam, false);
        if (found < 0)
            return LB_ERR;
        if (IsSingle())
            SetCurrent(found);
        else
            SetSelected(found, true);
        SetCaret(found, true);
        return found;
    }
    case LB_SELITEMRANGE:
    case LB_SELITEMRANGEEX: {
        if (IsSingle())
            return LB_ERR;
        int first = message == LB_SELITEMRANGE ? LOWORD(lParam) : row;
        int last = message == LB_SELITEMRANGE ? HIWORD(lParam) : static_cast<int>(lParam);
        bool on = row != 0;
        if (message == LB_SELITEMRANGEEX) {
            on = first <= last;
            if (!on)
                std::swap(first, last);
        }
        m_rows.SelectRange(first, last, on);
        InvalidateFrom(0);
        NotifyAccessibility(m_window.Handle(), AccessibleChange::Selection);
        return LB_OKAY;
    }
    case LB_SETANCHORINDEX:
        m_anchor = m_rows.Has(row) ? row : -1;
        return LB_OKAY;
    case LB_GETANCHORINDEX:
        return m_anchor;
    case LB_SETCARETINDEX:
        if (row != -1 && !m_rows.Has(row))
            return LB_ERR;
        SetCaret(row, true);
        return LB_OKAY;
    case LB_GETCARETINDEX:
        return m_caret;
    default:
        return LB_ERR;
    }
}

LRESULT ListBoxControl::SelectedItems(int size, int* rows) const {
    if (IsSingle() || rows == nullptr)
        return LB_ERR;
    int count = 0;
    for (int row = m_rows.NextSelected(0); row >= 0 && count < size;
         row = row + 1 < m_rows.Count() ? m_rows.NextSelected(row + 1) : -1)
        rows[count++] = row;
    return count;
}

/// Single selection; `row` -1 deselects. Returns whether that changed anything.
bool ListBoxControl::SetCurrent(int row) {
    if (row == m_current)
        return false;
    if (m_current >= 0) {
        m_rows.Select(m_current, false);
        InvalidateRow(m_current);
    }
    m_current = row;
    m_anchor = row;
    if (row >= 0) {
        m_rows.Select(row, true);
        InvalidateRow(row);
    }
    NotifyAccessibility(m_window.Handle(), AccessibleChange::Selection, row);
    return true;
}

void ListBoxControl::SetSelected(int row, bool on) {
    if (m_rows.Select(row, on))
        InvalidateRow(row);
}

/// Selects the rows between two and no others.
void ListBoxControl::SelectOnly(int first, int last) {
    if (first > last)
        std::swap(first, last);
    if (!m_rows.SelectOnly(first, last))
        return;
    m_changed = true;
    InvalidateFrom(m_top);
    NotifyAccessibility(m_window.Handle(), AccessibleChange::Selection, last);
}

void ListBoxControl::SetCaret(int row, bool scroll) {
    if (m_caret != row) {
        InvalidateRow(m_caret);
        m_caret = row;
        InvalidateRow(row);
        if (m_hasFocus)
            NotifyAccessibility(m_window.Handle(), AccessibleChange::Focus, row);
    }
    if (scroll && row >= 0)
        ScrollIntoView(row);
}

bool ListBoxControl::SelectByAccess(int row, bool on) {
    if (!m_rows.Has(row) || Has(LBS_NOSEL))
        return false;
    if (IsSingle())
        SetCurrent(on ? row : -1);
    else
        SetSelected(row, on);
    SetCaret(row, true);
    Notify(LBN_SELCHANGE);
    return true;
}

} // namespace vnbytstr::detail

// The list box: the heights and places of its rows.
#include "src/window/controls/ListBoxControl.h"
#include "vnbytstr/window/ListBox.h"

#include <QFontMetrics>

#include <algorithm>

namespace vnbytstr::detail {

void ListBoxControl::OnCreate() {
    m_rows.SetNoData(Has(LBS_NODATA) && IsOwnerDrawn() && !Has(LBS_SORT | LBS_HASSTRINGS));
    m_window.ShowScrollBar(SB_VERT, Has(LBS_DISABLENOSCROLL) && m_window.WantsScrollBar(SB_VERT));
    m_window.ShowScrollBar(SB_HORZ, false);
    MeasureAll();
}

/// The common height of rows: the owner's answer, else the font's.
void ListBoxControl::MeasureAll() {
    if (m_heightSet)
        return;
    int height = QFontMetrics(m_window.QtFont()).height();
    if (Has(LBS_OWNERDRAWFIXED)) {
        MEASUREITEMSTRUCT item{ODT_LISTBOX, m_window.Id(), 0, 0, static_cast<UINT>(height), 0};
        m_window.NotifyParent(WM_MEASUREITEM, m_window.Id(), reinterpret_cast<LPARAM>(&item));
        height = static_cast<int>(item.itemHeight);
    }
    m_rows.SetHeight(height);
}

/// Without data all rows of an LBS_OWNERDRAWVARIABLE list are as high as the first. It is asked
/// for when the first row comes, as in other lists of that style.
void ListBoxControl::MeasureCommon() {
    if (m_heightSet || !m_rows.IsNoData() || !Has(LBS_OWNERDRAWVARIABLE))
        return;
    MEASUREITEMSTRUCT item{};
    item.CtlType = ODT_LISTBOX;
    item.CtlID = m_window.Id();
    item.itemHeight = static_cast<UINT>(m_rows.Height());
    m_window.NotifyParent(WM_MEASUREITEM, m_window.Id(), reinterpret_cast<LPARAM>(&item));
    m_rows.SetHeight(static_cast<int>(std::min<UINT>(item.itemHeight, 0xFFFF)));
}

void ListBoxControl::MeasureRow(int row) {
    MEASUREITEMSTRUCT item{};
    item.CtlType = ODT_LISTBOX;
    item.CtlID = m_window.Id();
    item.itemID = static_cast<UINT>(row);
    item.itemHeight = static_cast<UINT>(m_rows.Height());
    item.itemData = m_rows.Data(row);
    m_window.NotifyParent(WM_MEASUREITEM, m_window.Id(), reinterpret_cast<LPARAM>(&item));
    if (m_rows.Has(row) && static_cast<int>(item.itemHeight) != m_rows.HeightOf(row))
        m_rows.SetHeightOf(row, static_cast<int>(item.itemHeight));
}

LRESULT ListBoxControl::PlaceProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const int row = static_cast<int>(wParam);
    switch (message) {
    case LB_GETTOPINDEX:
        return m_top;
    case LB_SETTOPINDEX:
        if (!m_rows.Has(row))
            return LB_ERR;
        ScrollTo(row);
        return LB_OKAY;
    case LB_GETITEMRECT:
        // The index after the last row has a rectangle, too: where that row would be.
        if (lParam == 0 || row < 0 || row > m_rows.Count())
            return LB_ERR;
        *reinterpret_cast<RECT*>(lParam) = RowRect(row);
        return m_rows.Has(row) ? LB_OKAY : LB_ERR;
    case LB_GETITEMHEIGHT:
        if (!HasOwnHeights())
            return m_rows.Height();
        return m_rows.Has(row)       ? m_rows.HeightOf(row)
               : m_rows.Count() == 0 ? m_rows.Height()
                                     : LB_ERR;
    case LB_SETITEMHEIGHT: {
        constexpr LPARAM kMaxHeight = 255;
        if (lParam < 1 || lParam > kMaxHeight || (HasOwnHeights() && !m_rows.Has(row)))
            return LB_ERR;
        if (HasOwnHeights()) {
            m_rows.SetHeightOf(row, static_cast<int>(lParam));
        } else {
            m_rows.SetHeight(static_cast<int>(lParam));
            m_heightSet = true;
        }
        RowsChanged();
        InvalidateFrom(HasOwnHeights() ? row : 0);
        return LB_OKAY;
    }
    case LB_GETHORIZONTALEXTENT:
        return m_extent;
    case LB_SETHORIZONTALEXTENT:
        m_extent = std::max(row, 0);
        ShiftTo(m_shift);
        RowsChanged();
        InvalidateFrom(0);
        return LB_OKAY;
    case LB_ITEMFROMPOINT: {
        bool outside = false;
        const int nearest = RowFromPoint(CPoint(lParam), outside);
        return nearest < 0
                   ? MAKELONG(0xFFFF, 1)
                   : static_cast<LRESULT>(nearest) | (outside ? static_cast<LRESULT>(1) << 32 : 0);
    }
    default:
        return LB_ERR;
    }
}

} // namespace vnbytstr::detail

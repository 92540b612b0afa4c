// CVNListBox: a CListBoxEx with a tooltip for each row.
#pragma once

#include "vnbytstr/DataTip.h"
#include "vnbytstr/ListBoxEx.h"
#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/window/Export.h"

/// Shows the tooltip of the row under the pointer. Tooltips appear only while every row has one.
class VNBYTSTR_CONTROLS_API CVNListBox : public CListBoxEx {
    DECLARE_DYNAMIC(CVNListBox)
public:
    CVNListBox();

    /// Inserts a row's tooltip; to be called once for each row, right after the row was inserted at
    /// that index: later rows' tooltips move down with their rows, also after a sort. To replace
    /// one, call RemoveItemTip first: a second call for the same row leaves more tooltips than
    /// rows, and none is shown. Rows out of range, and those of a source, are ignored. In a
    /// filtered list RemoveItemTip and GetItemIndex take row numbers without the filter.
    void SetItemTip(int row, LPCTSTR text);
    /// Removes all tooltips; to be called with ResetContent.
    void ResetTips();
    /// Removes a row's tooltip; to be called when the row is deleted.
    void RemoveItemTip(int row);
    /// The index of a row's tooltip text, or -1.
    int GetItemIndex(int row) const;
    /// The text at that index; empty if out of range.
    CString GetItemTip(int index) const;
    /// Shows the tooltip of the row at a point of the client area, or hides it if there is none.
    void SetDataTip(CPoint point);
    /// FALSE as well while the row under the pointer has an empty one.
    BOOL IsTipShown() const { return m_bTipShown; }

    /// The tooltips move with their rows.
    BOOL Sort(int column) override;

protected:
    /// Shows or hides the tooltip for the pointer's place.
    void DoMouseMove(CPoint point);
    void OnMouseMove(UINT flags, CPoint point);
    void OnMouseLeave();
    DECLARE_MESSAGE_MAP()

    /// The tooltip, where the pointer was last, and the tooltips' texts.
    CDataTip m_DataTip;
    BOOL m_bTipShown = FALSE;
    int m_nLastX = -1;
    int m_nLastY = -1;
    CStringArray m_Tips;
    CUIntArray m_RowMap; ///< per row, the index of its text in m_Tips
};

// CVNListBox: a CListBoxEx with a tip for each row.
#pragma once

#include "vnbytstr/DataTip.h"
#include "vnbytstr/ListBoxEx.h"
#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/framework/Export.h"

/// Shows the text of the row under the pointer. Tips appear only while every row has one.
class VNBYTSTR_API CVNListBox : public CListBoxEx {
    DECLARE_DYNAMIC(CVNListBox)
public:
    CVNListBox();

    /// Gives a row its tip; to be called right after the row was inserted there. All other rows
    /// keep theirs, also after a sort. A row that is not there is ignored.
    void SetItemTip(int row, LPCTSTR text);
    /// Forgets all tips; goes with ResetContent.
    void ResetTips();
    /// Takes the tip of a row away; to be called when the row is deleted.
    void RemoveItemTip(int row);
    /// The index of a row's text among the tips; -1 for none.
    int GetItemIndex(int row) const;
    /// The text at an index; empty for none.
    CString GetItemTip(int index) const;
    /// Shows the tip of the row at a point of the client area, if any.
    void SetDataTip(CPoint point);
    BOOL IsTipShown() const { return m_bTipShown; }

    /// The tips go along with their rows.
    BOOL Sort(int column) override;

protected:
    void DoMouseMove(CPoint point);
    void OnMouseMove(UINT flags, CPoint point);
    void OnMouseLeave();
    DECLARE_MESSAGE_MAP()

    CDataTip m_DataTip;
    BOOL m_bTipShown = FALSE;
    int m_nLastX = -1;
    int m_nLastY = -1;
    CStringArray m_Tips;
    CUIntArray m_RowMap; ///< per row, the index of its text in m_Tips
};

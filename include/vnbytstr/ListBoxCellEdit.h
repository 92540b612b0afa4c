// The editors that CListBoxEx opens in a cell: short-lived children of the list that delete
// themselves when their window ends.
#pragma once

#include "vnbytstr/EditEx.h"
#include "vnbytstr/ListParts.h"
#include "vnbytstr/framework/Export.h"
#include "vnbytstr/window/Wnd.h"

class CListBoxEx;

/// Editor types 1 to 4.
class VNBYTSTR_API CListBoxCellEdit : public CEditEx {
    DECLARE_DYNAMIC(CListBoxCellEdit)
public:
    explicit CListBoxCellEdit(int browseType = CBrowser::kFile) : m_browser(browseType) {}

    CBrowser& GetBrowser() { return m_browser; }
    /// Makes the window; from then on the object deletes itself with it.
    BOOL CreateCell(DWORD style, const RECT& rect, CListBoxEx* list, UINT id);

protected:
    void OnClose();
    void PostNcDestroy() override;
    DECLARE_MESSAGE_MAP()

private:
    CBrowser m_browser;
    vnbytstr::detail::CellEditorOwner* m_pOwner = nullptr;
    BOOL m_bOwnsItself = FALSE;
};

/// Editor types 5 to 8: a combo box.
class VNBYTSTR_API CListBoxCellComboBox : public CWnd {
    DECLARE_DYNAMIC(CListBoxCellComboBox)
public:
    CListBoxCellComboBox() = default;

    /// Makes the window; from then on the object deletes itself with it. The rectangle's height
    /// includes the dropped list.
    BOOL CreateCell(DWORD style, const RECT& rect, CListBoxEx* list, UINT id);

protected:
    void OnClose();
    void PostNcDestroy() override;
    DECLARE_MESSAGE_MAP()

private:
    vnbytstr::detail::CellEditorOwner* m_pOwner = nullptr;
    BOOL m_bOwnsItself = FALSE;
};

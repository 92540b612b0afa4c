// The editors that CListBoxEx opens in a cell: short-lived child windows of the list, whose objects
// delete themselves when the window is destroyed.
#pragma once

#include "vnbytstr/EditEx.h"
#include "vnbytstr/ListParts.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

class CListBoxEx;

/// The edit control of kEditorText, kEditorFile, kEditorFolder and kEditorNumber.
class VNBYTSTR_CONTROLS_API CListBoxCellEdit : public CEditEx {
    DECLARE_DYNAMIC(CListBoxCellEdit)
public:
    /// A CBrowser::EBrowseType.
    explicit CListBoxCellEdit(int browseType = CBrowser::kFile) : m_browser(browseType) {}

    /// What the browse button opens.
    CBrowser& GetBrowser() { return m_browser; }
    /// Creates the window. On success the object deletes itself when the window is destroyed.
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

/// The combo box of kEditorCombo, kEditorPick and their sorted variants.
class VNBYTSTR_CONTROLS_API CListBoxCellComboBox : public CWnd {
    DECLARE_DYNAMIC(CListBoxCellComboBox)
public:
    CListBoxCellComboBox() = default;

    /// Creates the window. On success the object deletes itself when the window is destroyed. The
    /// rectangle's height includes the drop-down list.
    BOOL CreateCell(DWORD style, const RECT& rect, CListBoxEx* list, UINT id, DWORD exStyle = 0);

protected:
    void OnClose();
    void PostNcDestroy() override;
    DECLARE_MESSAGE_MAP()

private:
    vnbytstr::detail::CellEditorOwner* m_pOwner = nullptr;
    BOOL m_bOwnsItself = FALSE;
};

#include "vnbytstr/ListBoxCellEdit.h"

#include "vnbytstr/ListBoxEx.h"

IMPLEMENT_DYNAMIC(CListBoxCellEdit, CEditEx)
IMPLEMENT_DYNAMIC(CListBoxCellComboBox, CWnd)

BEGIN_MESSAGE_MAP(CListBoxCellEdit, CEditEx)
ON_WM_CLOSE()
END_MESSAGE_MAP()

BEGIN_MESSAGE_MAP(CListBoxCellComboBox, CWnd)
ON_WM_CLOSE()
END_MESSAGE_MAP()

BOOL CListBoxCellEdit::CreateCell(DWORD style, const RECT& rect, CListBoxEx* list, UINT id) {
    m_bOwnsItself = Create(style, rect, list, id);
    m_pOwner = list;
    return m_bOwnsItself;
}

void CListBoxCellEdit::OnClose() { DestroyWindow(); }

void CListBoxCellEdit::PostNcDestroy() {
    if (!m_bOwnsItself)
        return;
    m_pOwner->EditorDestroyed(this);
    delete this;
}

BOOL CListBoxCellComboBox::CreateCell(DWORD style, const RECT& rect, CListBoxEx* list, UINT id,
                                      DWORD exStyle) {
    m_bOwnsItself = CreateEx(exStyle, "COMBOBOX", "", style | WS_CHILD, rect, list, id);
    m_pOwner = list;
    return m_bOwnsItself;
}

void CListBoxCellComboBox::OnClose() { DestroyWindow(); }

void CListBoxCellComboBox::PostNcDestroy() {
    if (!m_bOwnsItself)
        return;
    m_pOwner->EditorDestroyed(this);
    delete this;
}

#include "vnbytstr/window/Button.h"

IMPLEMENT_DYNAMIC(CButton, CWnd)

BOOL CButton::Create(LPCTSTR caption, DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create("BUTTON", caption, style | WS_CHILD, rect, parent, id);
}

int CButton::GetCheck() const { return static_cast<int>(SendMessage(BM_GETCHECK)); }
UINT CButton::GetState() const { return static_cast<UINT>(SendMessage(BM_GETSTATE)); }
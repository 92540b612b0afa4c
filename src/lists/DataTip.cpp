#include "vnbytstr/DataTip.h"

#include "vnbytstr/window/ToolTip.h"

CDataTip::~CDataTip() { Hide(); }

void CDataTip::Set(CPoint point, LPCTSTR text) {
    const CString tip(text);
    if (m_pOwner == nullptr || m_pOwner->GetSafeHwnd() == nullptr || tip.IsEmpty()) {
        Hide();
        return;
    }
    ShowTip(m_pOwner->m_hWnd, point, tip);
    m_strShown = tip;
}

void CDataTip::Hide() {
    // The tooltip on the screen may be another window's.
    if (!m_strShown.IsEmpty() && GetShownTip() == m_strShown)
        HideTip();
    m_strShown.Empty();
}

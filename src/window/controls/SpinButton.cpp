#include "vnbytstr/window/SpinButton.h"

IMPLEMENT_DYNAMIC(CSpinButtonCtrl, CWnd)

BOOL CSpinButtonCtrl::Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create("msctls_updown32", nullptr, style | WS_CHILD, rect, parent, id);
}

CWnd* CSpinButtonCtrl::SetBuddy(CWnd* buddy) {
    return FromHandle(reinterpret_cast<HWND>(SendMessage(
        UDM_SETBUDDY, reinterpret_cast<WPARAM>(buddy != nullptr ? buddy->m_hWnd : nullptr))));
}

CWnd* CSpinButtonCtrl::GetBuddy() const {
    return FromHandle(reinterpret_cast<HWND>(SendMessage(UDM_GETBUDDY)));
}

void CSpinButtonCtrl::SetRange(short lower, short upper) {
    SendMessage(UDM_SETRANGE, 0, MAKELPARAM(upper, lower));
}

void CSpinButtonCtrl::SetRange32(int lower, int upper) {
    SendMessage(UDM_SETRANGE32, static_cast<WPARAM>(lower), upper);
}

void CSpinButtonCtrl::GetRange(int& lower, int& upper) const {
    SendMessage(UDM_GETRANGE32, reinterpret_cast<WPARAM>(&lower), reinterpret_cast<LPARAM>(&upper));
}

int CSpinButtonCtrl::SetPos(int position) {
    return static_cast<int>(SendMessage(UDM_SETPOS32, 0, position));
}

int CSpinButtonCtrl::GetPos(BOOL* error) const {
    return static_cast<int>(SendMessage(UDM_GETPOS32, 0, reinterpret_cast<LPARAM>(error)));
}

#include "vnbytstr/window/ProgressBar.h"

IMPLEMENT_DYNAMIC(CProgressCtrl, CWnd)

BOOL CProgressCtrl::Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create("msctls_progress32", nullptr, style | WS_CHILD, rect, parent, id);
}

void CProgressCtrl::SetRange32(int lower, int upper) {
    SendMessage(PBM_SETRANGE32, static_cast<WPARAM>(lower), upper);
}

void CProgressCtrl::GetRange(int& lower, int& upper) const {
    int range[2] = {0, 0};
    SendMessage(PBM_GETRANGE, FALSE, reinterpret_cast<LPARAM>(range));
    lower = range[0];
    upper = range[1];
}

int CProgressCtrl::SetPos(int position) {
    return static_cast<int>(SendMessage(PBM_SETPOS, static_cast<WPARAM>(position)));
}

int CProgressCtrl::GetPos() const { return static_cast<int>(SendMessage(PBM_GETPOS)); }

int CProgressCtrl::OffsetPos(int by) {
    return static_cast<int>(SendMessage(PBM_DELTAPOS, static_cast<WPARAM>(by)));
}

int CProgressCtrl::SetStep(int step) {
    return static_cast<int>(SendMessage(PBM_SETSTEP, static_cast<WPARAM>(step)));
}

int CProgressCtrl::StepIt() { return static_cast<int>(SendMessage(PBM_STEPIT)); }

BOOL CProgressCtrl::SetMarquee(BOOL on, int interval) {
    return static_cast<BOOL>(SendMessage(PBM_SETMARQUEE, static_cast<WPARAM>(on), interval));
}

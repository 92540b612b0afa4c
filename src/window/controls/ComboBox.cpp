#include "vnbytstr/window/ComboBox.h"

#include <algorithm>

IMPLEMENT_DYNAMIC(CComboBox, CWnd)

BOOL CComboBox::Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create("COMBOBOX", nullptr, style | WS_CHILD, rect, parent, id);
}

int CComboBox::GetCount() const { return static_cast<int>(SendMessage(CB_GETCOUNT)); }

int CComboBox::AddString(LPCTSTR text) {
    return static_cast<int>(SendMessage(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text)));
}

int CComboBox::InsertString(int index, LPCTSTR text) {
    return static_cast<int>(
        SendMessage(CB_INSERTSTRING, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text)));
}

int CComboBox::DeleteString(UINT index) {
    return static_cast<int>(SendMessage(CB_DELETESTRING, index));
}

void CComboBox::ResetContent() { SendMessage(CB_RESETCONTENT); }

int CComboBox::GetLBText(int index, LPTSTR buffer) const {
    return static_cast<int>(
        SendMessage(CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(buffer)));
}

void CComboBox::GetLBText(int index, CString& text) const {
    const int length = GetLBTextLen(index);
    if (length < 0) {
        text.Empty();
        return;
    }
    GetLBText(index, text.GetBuffer(length));
    text.ReleaseBuffer(length);
}

int CComboBox::GetLBTextLen(int index) const {
    return static_cast<int>(SendMessage(CB_GETLBTEXTLEN, static_cast<WPARAM>(index)));
}

int CComboBox::FindString(int after, LPCTSTR beginning) const {
    return static_cast<int>(SendMessage(CB_FINDSTRING, static_cast<WPARAM>(after),
                                        reinterpret_cast<LPARAM>(beginning)));
}

int CComboBox::FindStringExact(int after, LPCTSTR text) const {
    return static_cast<int>(SendMessage(CB_FINDSTRINGEXACT, static_cast<WPARAM>(after),
                                        reinterpret_cast<LPARAM>(text)));
}

int CComboBox::SelectString(int after, LPCTSTR beginning) {
    return static_cast<int>(SendMessage(CB_SELECTSTRING, static_cast<WPARAM>(after),
                                        reinterpret_cast<LPARAM>(beginning)));
}

int CComboBox::GetCurSel() const { return static_cast<int>(SendMessage(CB_GETCURSEL)); }

int CComboBox::SetCurSel(int index) {
    return static_cast<int>(SendMessage(CB_SETCURSEL, static_cast<WPARAM>(index)));
}

std::uintptr_t CComboBox::GetItemData(int index) const {
    return static_cast<std::uintptr_t>(SendMessage(CB_GETITEMDATA, static_cast<WPARAM>(index)));
}

int CComboBox::SetItemData(int index, std::uintptr_t data) {
    return static_cast<int>(
        SendMessage(CB_SETITEMDATA, static_cast<WPARAM>(index), static_cast<LPARAM>(data)));
}

int CComboBox::InitStorage(int items, UINT bytes) {
    return static_cast<int>(
        SendMessage(CB_INITSTORAGE, static_cast<WPARAM>(std::max(items, 0)), bytes));
}

BOOL CComboBox::LimitText(int bytes) {
    return static_cast<BOOL>(SendMessage(CB_LIMITTEXT, static_cast<WPARAM>(std::max(bytes, 0))));
}

DWORD CComboBox::GetEditSel() const { return static_cast<DWORD>(SendMessage(CB_GETEDITSEL)); }

void CComboBox::Clear() { SendMessage(WM_CLEAR); }
void CComboBox::Copy() { SendMessage(WM_COPY); }
void CComboBox::Cut() { SendMessage(WM_CUT); }
void CComboBox::Paste() { SendMessage(WM_PASTE); }

void CComboBox::ShowDropDown(BOOL show) { SendMessage(CB_SHOWDROPDOWN, static_cast<WPARAM>(show)); }

BOOL CComboBox::GetDroppedState() const {
    return static_cast<BOOL>(SendMessage(CB_GETDROPPEDSTATE));
}

void CComboBox::GetDroppedControlRect(LPRECT rect) const {
    SendMessage(CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(rect));
}

int CComboBox::SetItemHeight(int index, UINT height) {
    return static_cast<int>(
        SendMessage(CB_SETITEMHEIGHT, static_cast<WPARAM>(index), static_cast<LPARAM>(height)));
}

int CComboBox::GetItemHeight(int index) const {
    return static_cast<int>(SendMessage(CB_GETITEMHEIGHT, static_cast<WPARAM>(index)));
}

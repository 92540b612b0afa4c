#include "vnbytstr/window/ListBox.h"

#include "src/window/controls/ListBoxControl.h"

#include <algorithm>

using vnbytstr::detail::ListBoxControl;

IMPLEMENT_DYNAMIC(CListBox, CWnd)

BOOL CListBox::Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create("LISTBOX", nullptr, style, rect, parent, id);
}

int CListBox::GetCount() const { return static_cast<int>(SendMessage(LB_GETCOUNT)); }
int CListBox::GetTopIndex() const { return static_cast<int>(SendMessage(LB_GETTOPINDEX)); }
int CListBox::SetTopIndex(int row) {
    return static_cast<int>(SendMessage(LB_SETTOPINDEX, static_cast<WPARAM>(row)));
}
std::uintptr_t CListBox::GetItemData(int row) const {
    return static_cast<std::uintptr_t>(SendMessage(LB_GETITEMDATA, static_cast<WPARAM>(row)));
}
int CListBox::SetItemData(int row, std::uintptr_t data) {
    return static_cast<int>(
        SendMessage(LB_SETITEMDATA, static_cast<WPARAM>(row), static_cast<LPARAM>(data)));
}
int CListBox::GetItemRect(int row, LPRECT rect) const {
    return static_cast<int>(
        SendMessage(LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(rect)));
}
int CListBox::SetItemHeight(int row, UINT height) {
    return static_cast<int>(
        SendMessage(LB_SETITEMHEIGHT, static_cast<WPARAM>(row), static_cast<LPARAM>(height)));
}
int CListBox::GetItemHeight(int row) const {
    return static_cast<int>(SendMessage(LB_GETITEMHEIGHT, static_cast<WPARAM>(row)));
}
int CListBox::GetSel(int row) const {
    return static_cast<int>(SendMessage(LB_GETSEL, static_cast<WPARAM>(row)));
}
int CListBox::GetText(int row, LPTSTR buffer) const {
    return static_cast<int>(
        SendMessage(LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(buffer)));
}
void CListBox::GetText(int row, CString& text) const {
    const int length = GetTextLen(row);
    if (length < 0) {
        text.Empty();
        return;
    }
    GetText(row, text.GetBuffer(length));
    text.ReleaseBuffer(length);
}
int CListBox::GetTextLen(int row) const {
    return static_cast<int>(SendMessage(LB_GETTEXTLEN, static_cast<WPARAM>(row)));
}
UINT CListBox::ItemFromPoint(CPoint point, BOOL& outside) const {
    const LRESULT answer = SendMessage(LB_ITEMFROMPOINT, 0, MAKELPARAM(point.x, point.y));
    outside = (answer >> 32) != 0;
    return static_cast<UINT>(answer);
}

int CListBox::GetCurSel() const { return static_cast<int>(SendMessage(LB_GETCURSEL)); }
int CListBox::SetCurSel(int row) {
    return static_cast<int>(SendMessage(LB_SETCURSEL, static_cast<WPARAM>(row)));
}
int CListBox::SetSel(int row, BOOL select) {
    return static_cast<int>(SendMessage(LB_SETSEL, select != 0 ? 1 : 0, row));
}
int CListBox::GetSelCount() const { return static_cast<int>(SendMessage(LB_GETSELCOUNT)); }
int CListBox::GetSelItems(int count, int* rows) const {
    return static_cast<int>(SendMessage(LB_GETSELITEMS, static_cast<WPARAM>(std::max(count, 0)),
                                        reinterpret_cast<LPARAM>(rows)));
}
int CListBox::SelItemRange(BOOL select, int first, int last) {
    if ((GetStyle() & (LBS_MULTIPLESEL | LBS_EXTENDEDSEL)) == 0)
        return LB_ERR;
    if (first > last)
        std::swap(first, last);
    return static_cast<int>(select
                                ? SendMessage(LB_SELITEMRANGEEX, static_cast<WPARAM>(first), last)
                                : SendMessage(LB_SELITEMRANGEEX, static_cast<WPARAM>(last), first));
}
int CListBox::GetCaretIndex() const { return static_cast<int>(SendMessage(LB_GETCARETINDEX)); }
int CListBox::AddString(LPCTSTR text) {
    return static_cast<int>(SendMessage(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text)));
}
int CListBox::InsertString(int row, LPCTSTR text) {
    return static_cast<int>(
        SendMessage(LB_INSERTSTRING, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text)));
}
int CListBox::DeleteString(UINT row) { return static_cast<int>(SendMessage(LB_DELETESTRING, row)); }
void CListBox::ResetContent() { SendMessage(LB_RESETCONTENT); }
int CListBox::FindString(int after, LPCTSTR beginning) const {
    return static_cast<int>(SendMessage(LB_FINDSTRING, static_cast<WPARAM>(after),
                                        reinterpret_cast<LPARAM>(beginning)));
}
int CListBox::FindStringExact(int after, LPCTSTR text) const {
    return static_cast<int>(SendMessage(LB_FINDSTRINGEXACT, static_cast<WPARAM>(after),
                                        reinterpret_cast<LPARAM>(text)));
}
int CListBox::SelectString(int after, LPCTSTR beginning) {
    return static_cast<int>(SendMessage(LB_SELECTSTRING, static_cast<WPARAM>(after),
                                        reinterpret_cast<LPARAM>(beginning)));
}
int CListBox::SetCount(int rows) {
    return static_cast<int>(SendMessage(LB_SETCOUNT, static_cast<WPARAM>(rows)));
}
int CListBox::InitStorage(int rows, UINT bytes) {
    return static_cast<int>(SendMessage(LB_INITSTORAGE, static_cast<WPARAM>(std::max(rows, 0)),
                                        static_cast<LPARAM>(bytes)));
}

void CListBox::DrawItem(LPDRAWITEMSTRUCT /*item*/) {}
void CListBox::MeasureItem(LPMEASUREITEMSTRUCT /*item*/) {}

BOOL CListBox::OnChildNotify(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
    if (message == WM_DRAWITEM) {
        DrawItem(reinterpret_cast<LPDRAWITEMSTRUCT>(lParam));
        return TRUE;
    }
    if (message == WM_MEASUREITEM) {
        MeasureItem(reinterpret_cast<LPMEASUREITEMSTRUCT>(lParam));
        return TRUE;
    }
    return CWnd::OnChildNotify(message, wParam, lParam, result);
}

LPCSTR ListBoxRowText(HWND list, int row, int* length) {
    ListBoxControl* control = ListBoxControl::Of(list);
    if (control == nullptr || !control->Rows().Has(row))
        return nullptr;
    const std::string_view text = control->Rows().Text(row);
    if (length != nullptr)
        *length = static_cast<int>(text.size());
    return text.data();
}

int ListBoxAddRows(HWND list, LPCSTR texts, std::size_t bytes, int count) {
    ListBoxControl* control = ListBoxControl::Of(list);
    if (control == nullptr || (texts == nullptr && bytes != 0))
        return LB_ERR;
    return control->AddMany({texts, bytes}, count);
}

BOOL ListBoxSetNoData(HWND list, BOOL on) {
    ListBoxControl* control = ListBoxControl::Of(list);
    return control != nullptr && control->SetNoData(on != FALSE);
}

int ListBoxNextSelected(HWND list, int from) {
    ListBoxControl* control = ListBoxControl::Of(list);
    return control != nullptr ? control->Rows().NextSelected(from) : -1;
}

BOOL ListBoxReorder(HWND list, std::span<const DWORD> order) {
    ListBoxControl* control = ListBoxControl::Of(list);
    return control != nullptr && control->Reorder(order);
}

BOOL ListBoxShowOnly(HWND list, std::span<const DWORD> rows) {
    ListBoxControl* control = ListBoxControl::Of(list);
    return control != nullptr && control->ShowOnly(rows);
}

BOOL ListBoxRowTexts(HWND list, std::span<const DWORD> rows, std::span<std::string_view> texts) {
    ListBoxControl* control = ListBoxControl::Of(list);
    if (control == nullptr || rows.size() != texts.size())
        return FALSE;
    const auto& all = control->Rows();
    const auto shown = static_cast<DWORD>(all.Count());
    const auto total = shown + static_cast<DWORD>(all.AsideCount());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i] >= total)
            return FALSE;
        texts[i] = rows[i] < shown ? all.Text(static_cast<int>(rows[i]))
                                   : all.AsideText(static_cast<int>(rows[i] - shown));
    }
    return TRUE;
}

int ListBoxSideShift(HWND list) {
    const ListBoxControl* control = ListBoxControl::Of(list);
    return control != nullptr ? control->Shift() : 0;
}

void ListBoxSetSideShift(HWND list, int pixels) {
    if (ListBoxControl* control = ListBoxControl::Of(list))
        control->ShiftTo(pixels);
}

BOOL ListBoxSetRowText(HWND list, int row, LPCSTR text) {
    ListBoxControl* control = ListBoxControl::Of(list);
    return control != nullptr && text != nullptr && control->SetRowText(row, text);
}

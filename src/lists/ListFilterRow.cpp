#include "vnbytstr/ListFilterRow.h"

#include "messages/ResourceIds.h"
#include "src/lists/HeadingGeometry.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/ListBoxEx.h"

#include <algorithm>

using namespace vnbytstr::detail;

namespace {

/// A field's control id is its column's number and this.
constexpr UINT kFirstField = 1;
/// Above and below a field's text, with its border.
constexpr int kFieldMargin = 3;
/// Posted by the row to itself when the user has changed a field.
constexpr UINT kApplyChanges = WM_USER + 0x100;

} // namespace

/// An edit control, and what was last set as its column's condition.
class CListFilterRow::Field : public CEdit {
public:
    CString m_strApplied;
    CString m_strName; ///< for screen readers
};

IMPLEMENT_DYNAMIC(CListFilterRow, CWnd)

BEGIN_MESSAGE_MAP(CListFilterRow, CWnd)
ON_WM_SIZE()
ON_WM_PAINT()
ON_WM_CTLCOLOR()
END_MESSAGE_MAP()

CListFilterRow::CListFilterRow() = default;

CListFilterRow::~CListFilterRow() {
    m_pList = nullptr; // the fields' last messages find no list
    if (GetSafeHwnd() != nullptr)
        DestroyWindow();
}

BOOL CListFilterRow::Create(CListBoxEx* list, CWnd* parent) {
    if (list == nullptr || parent == nullptr)
        return FALSE;
    m_pList = list;
    return CWnd::Create(nullptr, "", WS_CHILD | WS_VISIBLE, CRect(), parent, 0);
}

CFont* CListFilterRow::ListFont() const {
    return m_pList != nullptr && m_pList->GetSafeHwnd() != nullptr ? m_pList->GetFont() : nullptr;
}

int CListFilterRow::GetDesiredHeight() {
    CClientDC dc(nullptr);
    CFont* font = ListFont();
    CFont* old = font != nullptr ? dc.SelectObject(font) : nullptr;
    TEXTMETRIC metrics{};
    dc.GetTextMetrics(&metrics);
    if (old != nullptr)
        dc.SelectObject(old);
    return metrics.tmHeight + 2 * kFieldMargin;
}

CEdit* CListFilterRow::GetField(int column) const {
    return column >= 0 && static_cast<std::size_t>(column) < m_fields.size()
               ? m_fields[static_cast<std::size_t>(column)].get()
               : nullptr;
}

// --- fields --------------------------------------------------------------------------------------

CListFilterRow::Field* CListFilterRow::MakeField(int column) {
    const auto at = static_cast<std::size_t>(column);
    if (m_fields.size() <= at)
        m_fields.resize(at + 1);
    if (m_fields[at] != nullptr)
        return m_fields[at].get();
    auto field = std::make_unique<Field>();
    const DWORD style = WS_CHILD | WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL;
    if (!field->Create(style, CRect(), this, kFirstField + static_cast<UINT>(column)))
        return nullptr;
    CString cue;
    if (LoadStringA(cue, IDS_FILTER_CUE, nullptr) > 0)
        field->SetCueBanner(cue);
    if (CFont* font = ListFont(); font != nullptr)
        field->SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(font->GetSafeHandle()), FALSE);
    m_bUpdating = true;
    field->m_strApplied = m_pList->GetColumnFilter(column);
    field->SetWindowText(field->m_strApplied);
    m_bUpdating = false;
    m_fields[at] = std::move(field);
    return m_fields[at].get();
}

/// A list may have thousands of columns: fields are made for those in view.
void CListFilterRow::PlaceFields() {
    if (m_pList == nullptr || GetSafeHwnd() == nullptr)
        return;
    const ColumnView view = static_cast<const HeadingsOwner*>(m_pList)->GetColumnView();
    CRect client;
    GetClientRect(client);
    const std::vector<PixelSpan> places = view.VisiblePlaces();
    const int begin =
        HeadingGeometry::kFirstLeft + static_cast<const HeadingsOwner*>(m_pList)->GetRowsLeft();
    const int last = view.Last();
    CString cue;
    if (LoadStringA(cue, IDS_FILTER_CUE, nullptr) == 0)
        cue = "Filter";
    for (int column = 0; column < static_cast<int>(places.size()); ++column) {
        const PixelSpan place = places[static_cast<std::size_t>(column)];
        const int left = place.left + begin;
        // Under the last header up to the edge, as that one.
        const int right = column == last ? std::max(client.right, left) : place.right + begin;
        const bool isSeen = !place.IsEmpty() && right > 0 && left < client.right;
        Field* field = isSeen ? MakeField(column) : static_cast<Field*>(GetField(column));
        if (field == nullptr)
            continue;
        const CString name = cue + ": " + m_pList->GetColumnName(column);
        if (name != field->m_strName) {
            field->m_strName = name;
            field->SetAccessibleName(name);
        }
        if (isSeen)
            field->MoveWindow(left, 0, right - left, client.Height());
        field->ShowWindow(isSeen ? SW_SHOWNA : SW_HIDE);
    }
    Invalidate();
}

void CListFilterRow::UpdateFields() {
    if (m_pList == nullptr)
        return;
    m_bUpdating = true;
    for (std::size_t column = 0; column < m_fields.size(); ++column) {
        Field* field = m_fields[column].get();
        if (field == nullptr)
            continue;
        const CString condition = m_pList->GetColumnFilter(static_cast<int>(column));
        if (condition != field->m_strApplied) {
            field->m_strApplied = condition;
            field->SetWindowText(condition);
        }
        field->Invalidate(); // its colour
    }
    m_bUpdating = false;
}

void CListFilterRow::ColumnsReplaced() {
    m_fields.clear();
    PlaceFields();
}

void CListFilterRow::FocusField(int column) {
    if (m_pList == nullptr)
        return;
    m_pList->ShowColumn(column);
    PlaceFields();
    if (CEdit* field = GetField(column); field != nullptr) {
        field->SetFocus();
        field->SetSel(0, -1);
    }
}

// --- messages ------------------------------------------------------------------------------------

BOOL CListFilterRow::OnCommand(WPARAM wParam, LPARAM lParam) {
    if (HIWORD(wParam) != EN_CHANGE)
        return CWnd::OnCommand(wParam, lParam);
    // Not at once: to filter may ask the list's parent, which may end everything, this field too.
    if (!m_bUpdating && !m_bPosted) {
        m_bPosted = true;
        PostMessage(kApplyChanges);
    }
    return TRUE;
}

LRESULT CListFilterRow::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kApplyChanges)
        return CWnd::WindowProc(message, wParam, lParam);
    ApplyChanges();
    return 0;
}

/// One field at a time, since this object may end while the list takes its condition.
void CListFilterRow::ApplyChanges() {
    m_bPosted = false;
    for (std::size_t column = 0; m_pList != nullptr && column < m_fields.size(); ++column) {
        Field* field = m_fields[column].get();
        if (field == nullptr)
            continue;
        CString condition;
        field->GetWindowText(condition);
        if (condition == field->m_strApplied)
            continue;
        field->m_strApplied = condition;
        m_bPosted = true;
        PostMessage(kApplyChanges);
        m_pList->SetColumnFilter(static_cast<int>(column), condition);
        return;
    }
}

BOOL CListFilterRow::PreTranslateMessage(MSG* message) {
    if (message->message == WM_KEYDOWN) {
        const CWnd* focus = GetFocus();
        for (std::size_t column = 0; column < m_fields.size(); ++column)
            if (focus != nullptr && m_fields[column].get() == focus)
                if (FieldKey(static_cast<int>(column), static_cast<UINT>(message->wParam)))
                    return TRUE;
    }
    return CWnd::PreTranslateMessage(message);
}

/// A key in a column's field; true when it was used.
bool CListFilterRow::FieldKey(int column, UINT key) {
    if (m_pList == nullptr)
        return false;
    const ColumnView view = static_cast<const HeadingsOwner*>(m_pList)->GetColumnView();
    Field* field = m_fields[static_cast<std::size_t>(column)].get();
    switch (key) {
    case VK_TAB: {
        const int position = view.PositionOf(column) + (GetKeyState(VK_SHIFT) < 0 ? -1 : 1);
        if (position < 0 || position >= view.Count())
            return false; // to the next control
        FocusField(view.ColumnOf(position));
        return true;
    }
    case VK_RETURN:
    case VK_DOWN:
        m_pList->SetFocus();
        return true;
    case VK_ESCAPE: {
        CString text;
        field->GetWindowText(text);
        if (text.IsEmpty())
            m_pList->SetFocus();
        else
            field->SetWindowText("");
        return true;
    }
    default:
        return false;
    }
}

void CListFilterRow::OnSize(UINT type, int cx, int cy) {
    CWnd::OnSize(type, cx, cy);
    PlaceFields();
}

HBRUSH CListFilterRow::OnCtlColor(CDC* dc, CWnd* control, UINT type) {
    HBRUSH brush = CWnd::OnCtlColor(dc, control, type);
    if (dc != nullptr && control != nullptr && m_pList != nullptr) {
        const int column = control->GetDlgCtrlID() - static_cast<int>(kFirstField);
        if (!m_pList->IsColumnFilterValid(column))
            dc->SetTextColor(GetSysColor(COLOR_GRAYTEXT));
    }
    return brush;
}

void CListFilterRow::OnPaint() {
    CPaintDC dc(this);
    CRect client;
    GetClientRect(client);
    dc.FillSolidRect(client, GetSysColor(COLOR_3DFACE));
}

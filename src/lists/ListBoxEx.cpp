// Invariants of CListBoxEx, checked by CheckInvariants in debug builds:
// 1. m_pColumns holds m_nColumns records, or is null and m_nColumns is 0. m_pFractionalWidths, when
//    it is not null, has as many elements.
// 2. The separator is not empty.
// 3. m_nSortState is an EListSortState, kNotSorted exactly when m_nSortColumn is -1.
// 4. While m_pActiveEditor is set it is an editor created by this list that is not closing, and
//    m_nCurRow, m_nCurColumn are its cell.
// 5. Entry i of the per-row arrays belongs to row i; rows beyond an array's end have the default.
//    The arrays are empty while a source supplies the rows.
// 6. The list box is without data exactly while m_pRows has a source, apart from the time in which
//    SetRowSource changes from one to the other; that source knows this list.
#include "vnbytstr/ListBoxEx.h"

#include "src/lists/ListColumns.h"
#include "src/lists/ListFinder.h"
#include "src/lists/ListRows.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/ListFilterRow.h"
#include "vnbytstr/window/Button.h"
#include "vnbytstr/window/ComboBox.h"
#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <cassert>
#include <span>

using namespace vnbytstr::detail;

IMPLEMENT_DYNAMIC(CListBoxEx, CWnd)

BEGIN_MESSAGE_MAP(CListBoxEx, CWnd)
ON_WM_CREATE()
ON_WM_DESTROY()
ON_WM_ENABLE()
ON_WM_PAINT()
ON_WM_SIZE()
ON_WM_WINDOWPOSCHANGING()
ON_WM_VSCROLL()
ON_WM_HSCROLL()
ON_WM_CHAR()
ON_WM_GETDLGCODE()
ON_WM_LBUTTONDOWN()
ON_WM_LBUTTONDBLCLK()
ON_WM_RBUTTONDOWN()
ON_WM_MOUSEWHEEL()
ON_EN_KILLFOCUS(kCellEditorId, OnKillFocusOfEdit)
ON_CONTROL(CBN_KILLFOCUS, kCellEditorId, OnKillFocusOfEdit)
ON_BN_CLICKED(kBrowseButtonId, OnBrowserButtonClicked)
ON_WM_DRAWITEM_REFLECT()
ON_WM_MEASUREITEM_REFLECT()
END_MESSAGE_MAP()

CListBoxEx::CListBoxEx() : m_pRows(std::make_unique<TextRows>(*this)) { Init(); }

CListBoxEx::~CListBoxEx() {
    for (Lifeline* line = m_pLifeline; line != nullptr; line = line->m_pOuter)
        line->m_pList = nullptr;
    m_pLifeline = nullptr;
    m_DropTarget.SetListBox(nullptr);
    m_pFilterRow.reset();
    // Destroying the windows sends messages, which need a complete object.
    if (m_Headings.GetSafeHwnd() != nullptr)
        m_Headings.DestroyWindow();
    m_Headings.SetListBox(nullptr);
    if (GetSafeHwnd() != nullptr)
        DestroyWindow();
    UseRowsOf(nullptr);
    UseHeadings(nullptr);
    while (!m_Serving.empty())
        m_Serving.back()->CListBoxExHeadings::SetListBox(nullptr);
}

void CListBoxEx::Init() {
    m_strSeparator = "\t";
    m_strNull = "-";
    m_strDefault = "+";
    const CGlobalVars& globals = GetGlobals();
    if (globals.GetSize() > 0) {
        globals.GetGlobalVarValue(CGlobalVars::TLXCP_TENULL, m_strNull);
        globals.GetGlobalVarValue(CGlobalVars::TLXCP_TEDFLT, m_strDefault);
    }
}

void CListBoxEx::CheckInvariants() const {
    assert((m_pColumns == nullptr) == (m_nColumns == 0));
    assert(!m_strSeparator.IsEmpty());
    assert(m_nSortState >= kNotSorted && m_nSortState <= kSortedDescending);
    assert((m_nSortState == kNotSorted) == (m_nSortColumn == -1));
    assert(m_pActiveEditor == nullptr || IsColumn(m_nCurColumn));
    assert(GetRowSource() == nullptr || (GetStyle() & LBS_NODATA) != 0);
    assert(GetRowSource() == nullptr || (m_DragDrop.IsEmpty() && m_FileNames.IsEmpty() &&
                                         m_EditSubTypes.IsEmpty() && m_EditDataTypes.IsEmpty()));
}

// --- set-up --------------------------------------------------------------------------------------

void CListBoxEx::SetHeadingsControl(CListBoxExHeadings* headings) {
    UseHeadings(headings);
    KeepLastColumnAtEdge();
}

/// List and header control know each other, so that either may end first.
void CListBoxEx::UseHeadings(CListBoxExHeadings* headings) {
    HeadingsOwner* const self = this;
    if (m_pHeadings != nullptr)
        std::erase(m_pHeadings->m_users, self);
    m_pHeadings = headings;
    if (headings != nullptr)
        headings->m_users.push_back(self);
}

void CListBoxEx::HeadingsServe(CListBoxExHeadings* headings, bool on) {
    std::erase(m_Serving, headings);
    if (on)
        m_Serving.push_back(headings);
}

void CListBoxEx::HeadingsEnd(const CListBoxExHeadings* headings) {
    if (m_pHeadings == headings)
        m_pHeadings = nullptr;
}

void CListBoxEx::KeepLastColumnAtEdge() {
    if (m_bWidthsComputed && m_pHeadings != nullptr)
        m_pHeadings->FixLastColWidth();
}

int CListBoxEx::GetRowsLeft() const {
    const bool isLeft = (GetStyle() & WS_VSCROLL) != 0 && (GetExStyle() & WS_EX_LEFTSCROLLBAR) != 0;
    return isLeft ? GetSystemMetrics(SM_CXVSCROLL) : 0;
}

BOOL CListBoxEx::CreateHeadingsControl(UINT id) {
    CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr;
    if (m_Headings.GetSafeHwnd() != nullptr)
        m_Headings.DestroyWindow();
    UseHeadings(&m_Headings);
    m_pHeadings->SetListBox(this);
    if (parent == nullptr || !m_pHeadings->Create(CRect(), parent, id)) {
        UseHeadings(nullptr);
        return FALSE;
    }
    PositionHeadings();
    KeepLastColumnAtEdge();
    if (m_DropTarget.m_hWnd == nullptr)
        m_DropTarget.Register(this);
    m_DropTarget.SetListBox(this);
    return TRUE;
}

int CListBoxEx::GetHeadersHeight() const {
    const bool hasHeadings = m_pHeadings != nullptr && m_pHeadings->GetSafeHwnd() != nullptr;
    return (hasHeadings ? m_pHeadings->GetDesiredHeight() : 0) +
           (m_pFilterRow != nullptr && m_pFilterRow->GetSafeHwnd() != nullptr
                ? m_pFilterRow->GetDesiredHeight()
                : 0);
}

void CListBoxEx::PositionHeadings() {
    CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr;
    const int height = parent != nullptr ? GetHeadersHeight() : 0;
    if (height == 0)
        return;
    CRect rect;
    GetWindowRect(rect);
    parent->ScreenToClient(rect);
    if (rect.top < height) { // OnWindowPosChanging moves the top down
        SetWindowPos(nullptr, rect.left, rect.top, rect.Width(), rect.Height(),
                     SWP_NOZORDER | SWP_NOACTIVATE);
        GetWindowRect(rect);
        parent->ScreenToClient(rect);
    }
    PlaceHeaders(rect);
}

/// Puts header control and filter row above the list, which is at `rect` in its parent.
void CListBoxEx::PlaceHeaders(const CRect& rect) {
    int bottom = rect.top;
    if (m_pFilterRow != nullptr && m_pFilterRow->GetSafeHwnd() != nullptr) {
        const int height = m_pFilterRow->GetDesiredHeight();
        m_pFilterRow->MoveWindow(rect.left, bottom - height, rect.Width(), height);
        bottom -= height;
    }
    if (m_pHeadings != nullptr && m_pHeadings->GetSafeHwnd() != nullptr) {
        const int height = m_pHeadings->GetDesiredHeight();
        m_pHeadings->MoveWindow(rect.left, bottom - height, rect.Width(), height);
    }
}

void CListBoxEx::SetNumColumns(int count) {
    const int columns = std::max(count, 0);
    const Lifeline life(this);
    CloseEditorForGood();
    if (!life.Exists())
        return;
    ClearFilter();
    if (!life.Exists())
        return;
    m_pColumns =
        columns > 0 ? std::make_unique<SListColumn[]>(static_cast<std::size_t>(columns)) : nullptr;
    m_pFractionalWidths.reset();
    m_nColumns = columns;
    m_order.clear();
    m_shown.clear();
    m_bWidthsComputed = FALSE;
    m_nSortColumn = -1;
    m_nSortState = kNotSorted;
    m_nCurColumn = -1;
    m_nLastOwnWidth = 0;
    UpdateExtent();
    RedrawAll();
    if (m_pFilterRow != nullptr)
        m_pFilterRow->ColumnsReplaced();
    if (GetSafeHwnd() != nullptr)
        NotifyAccessibility(m_hWnd, AccessibleChange::Columns);
    CheckInvariants();
}

BOOL CListBoxEx::LoadColumnInfo(UINT id, HINSTANCE instance) {
    CString text;
    if (LoadStringA(text, id, instance) == 0)
        return FALSE;
    return ReadColumnInformation(
        ViewOf(text), m_nColumns,
        [this](int column, std::string_view heading) { SetColumnName(column, StringOf(heading)); },
        [this](int column, int width) { SetColumnWidth(column, width); });
}

void CListBoxEx::SetColumnWidth(int column, int width) {
    if (!IsColumn(column))
        return;
    m_pColumns[static_cast<std::size_t>(column)].m_nWidth = std::max(width, 0);
    if (column == LastColumn())
        m_nLastOwnWidth = std::max(width, 0);
    UpdateExtent();
    KeepLastColumnAtEdge();
    RedrawAll();
}

void CListBoxEx::ResizeColumn(int column, int width) {
    if (IsColumn(column))
        m_pColumns[static_cast<std::size_t>(column)].m_nWidth = width;
}

void CListBoxEx::ColumnsMoved(int left, BOOL erase) {
    if (GetSafeHwnd() == nullptr)
        return;
    CRect rows;
    GetClientRect(rows);
    rows.left = left;
    InvalidateRect(rows, erase);
    PlaceFilterFields();
    FollowEditedRow();
}

void CListBoxEx::SetFractionalColumnWidth(int column, int percent) {
    if (!IsColumn(column))
        return;
    if (m_pFractionalWidths == nullptr)
        m_pFractionalWidths = std::make_unique<int[]>(static_cast<std::size_t>(m_nColumns));
    m_pFractionalWidths[static_cast<std::size_t>(column)] = std::max(percent, 0);
}

void CListBoxEx::SetColumnSpacing(int column, int spacing) {
    for (int i = 0; i < m_nColumns; ++i)
        if (i == column || column == -1)
            m_pColumns[static_cast<std::size_t>(i)].m_nSpacing = spacing;
    RedrawAll();
}

void CListBoxEx::SetColumnName(int column, UINT id, HINSTANCE instance) {
    CString name;
    LoadStringA(name, id, instance);
    SetColumnName(column, name);
}

void CListBoxEx::SetColumnName(int column, LPCTSTR name) {
    if (!IsColumn(column))
        return;
    m_pColumns[static_cast<std::size_t>(column)].m_strHeading = name;
    if (m_pHeadings != nullptr && m_pHeadings->GetSafeHwnd() != nullptr)
        m_pHeadings->Invalidate();
    PlaceFilterFields(); // which are called by it
}

void CListBoxEx::SetColumnType(int column, int type) {
    if (IsColumn(column))
        m_pColumns[static_cast<std::size_t>(column)].m_nSortType = type;
}

void CListBoxEx::EnableEditing(BOOL on) { m_bEditing = on; }

void CListBoxEx::SetEditorType(int column, int type) {
    if (IsColumn(column))
        m_pColumns[static_cast<std::size_t>(column)].m_nEditorType =
            type >= kEditorNone && type <= kEditorSortedPick ? type : kEditorNone;
}

int CListBoxEx::GetEditorType(int column) {
    return IsColumn(column) ? m_pColumns[static_cast<std::size_t>(column)].m_nEditorType
                            : kEditorNone;
}

void CListBoxEx::SetEditorMaxLength(int column, int length) {
    if (IsColumn(column))
        m_pColumns[static_cast<std::size_t>(column)].m_nEditorMaxLength = std::max(length, 0);
}

void CListBoxEx::SetEditorRange(int column, LONG minimum, LONG maximum) {
    if (!IsColumn(column))
        return;
    SListColumn& record = m_pColumns[static_cast<std::size_t>(column)];
    record.m_lEditorMin = minimum;
    record.m_lEditorMax = maximum;
}

void CListBoxEx::SetEditorStrings(int column, const CStringArray& strings) {
    if (!IsColumn(column))
        return;
    const int count = strings.GetSize();
    auto copies = std::make_unique<CString[]>(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        copies[static_cast<std::size_t>(i)] = strings[i];
    SListColumn& record = m_pColumns[static_cast<std::size_t>(column)];
    record.m_pEditorStrings = std::move(copies);
    record.m_nEditorStrings = count;
}

void CListBoxEx::ResetEditorStrings(int column) {
    if (!IsColumn(column))
        return;
    SListColumn& record = m_pColumns[static_cast<std::size_t>(column)];
    record.m_pEditorStrings.reset();
    record.m_nEditorStrings = 0;
}

void CListBoxEx::SetOffset(int offset) {
    m_nOffset = offset;
    RedrawAll();
}

void CListBoxEx::EnableSort(BOOL on) { m_bSortEnabled = on; }

void CListBoxEx::SetWidths() {
    if (m_bWidthsComputed || m_nColumns == 0 || GetSafeHwnd() == nullptr)
        return;
    CRect client;
    GetClientRect(client);
    if (client.Width() <= 0)
        return;
    m_bWidthsComputed = TRUE;
    int usable = client.Width();
    if ((GetStyle() & WS_VSCROLL) != 0) // columns do not move when the bar appears and disappears
        usable += GetSystemMetrics(SM_CXVSCROLL) - 1;
    const auto count = static_cast<std::size_t>(m_nColumns);
    ComputeWidths({m_pColumns.get(), count},
                  m_pFractionalWidths != nullptr
                      ? std::span<const int>(m_pFractionalWidths.get(), count)
                      : std::span<const int>(),
                  usable);
    if (m_nLastOwnWidth == 0)
        m_nLastOwnWidth = GetColumnWidth(LastColumn());
    UpdateExtent();
    if (m_pHeadings != nullptr)
        m_pHeadings->FixLastColWidth();
}

BOOL CListBoxEx::EnableWindow(BOOL on) {
    if (GetSafeHwnd() == nullptr)
        return FALSE;
    const BOOL wanted = on != FALSE;
    const Lifeline life(this);
    BOOL headingsDone = TRUE;
    if (m_pHeadings != nullptr && m_pHeadings->GetSafeHwnd() != nullptr) {
        m_pHeadings->EnableWindow(on);
        headingsDone = (m_pHeadings->IsWindowEnabled() != FALSE) == wanted;
    }
    if (m_pFilterRow != nullptr && m_pFilterRow->GetSafeHwnd() != nullptr)
        m_pFilterRow->EnableWindow(on);
    CWnd::EnableWindow(on);
    if (!life.Holds())
        return FALSE;
    return headingsDone && (IsWindowEnabled() != FALSE) == wanted;
}

void CListBoxEx::SetRightAligned(BOOL on) {
    constexpr DWORD kRightToLeft = WS_EX_RIGHT | WS_EX_RTLREADING | WS_EX_LEFTSCROLLBAR;
    m_bRightAligned = on;
    if (GetSafeHwnd() == nullptr)
        return;
    ModifyStyleEx(on ? 0 : kRightToLeft, on ? kRightToLeft : 0);
    KeepLastColumnAtEdge();
    RedrawAll();
}

void CListBoxEx::SetReadOnly(BOOL on) {
    const bool changed = (m_bReadOnly != FALSE) != (on != FALSE);
    m_bReadOnly = on;
    if (!changed)
        return;
    const Lifeline life(this);
    if (on)
        CellCancel();
    if (!life.Exists())
        return;
    EnableWindow(!on);
    if (life.Holds())
        Invalidate();
}

void CListBoxEx::SetSeparator(LPCTSTR separator) {
    if (separator != nullptr && *separator != '\0')
        m_strSeparator = separator;
}

CString CListBoxEx::CleanValue(LPCTSTR value, LPCTSTR replacement) const {
    CString clean(value);
    clean.Replace(m_strSeparator, replacement != nullptr ? replacement : "");
    return clean;
}

int CListBoxEx::GetColumnWidth(int column) const {
    return IsColumn(column) ? m_pColumns[static_cast<std::size_t>(column)].m_nWidth : 0;
}

CString CListBoxEx::GetColumnName(int column) const {
    return IsColumn(column) ? m_pColumns[static_cast<std::size_t>(column)].m_strHeading : CString();
}

void CListBoxEx::RedrawAll() {
    if (GetSafeHwnd() != nullptr)
        Invalidate();
    if (m_pHeadings != nullptr && m_pHeadings->GetSafeHwnd() != nullptr)
        m_pHeadings->Invalidate();
    PlaceFilterFields();
}

#include "vnbytstr/ListBoxExHeadings.h"

#include "src/lists/HeadingGeometry.h"
#include "src/lists/HeadingTracking.h"

#include "vnbytstr/ListBoxEx.h"
#include "vnbytstr/framework/Module.h"

#include <algorithm>

using namespace vnbytstr::detail;

namespace {

constexpr const char* kClassName = "ListBoxExHeadingsWindowClass";
constexpr int kKeyStep = 8;     ///< pixels that a key resizes by
constexpr int kArrowHeight = 4; ///< of the sort arrow; its width is twice as much less 1

LRESULT DefaultProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProc(window, message, wParam, lParam);
}

} // namespace

IMPLEMENT_DYNAMIC(CListBoxExHeadings, CWnd)

BEGIN_MESSAGE_MAP(CListBoxExHeadings, CWnd)
ON_WM_PAINT()
ON_WM_LBUTTONDOWN()
ON_WM_LBUTTONUP()
ON_WM_LBUTTONDBLCLK()
ON_WM_MOUSEMOVE()
ON_WM_SETCURSOR()
ON_WM_CANCELMODE()
ON_WM_SYSCOLORCHANGE()
ON_MESSAGE(WM_GETFONT, OnGetFont)
ON_MESSAGE(WM_SETFONT, OnSetFont)
ON_WM_DESTROY()
ON_WM_GETDLGCODE()
ON_WM_KEYDOWN()
ON_WM_SETFOCUS()
ON_WM_KILLFOCUS()
END_MESSAGE_MAP()

CListBoxExHeadings::CListBoxExHeadings()
    : m_pTracking(std::make_unique<HeadingTracking>()), m_hArrow(LoadCursor(nullptr, IDC_ARROW)),
      m_hSize(LoadCursor(nullptr, IDC_SIZEWE)) {}

CListBoxExHeadings::~CListBoxExHeadings() {
    if (GetSafeHwnd() != nullptr)
        DestroyWindow();
}

BOOL CListBoxExHeadings::Initialize() {
    WNDCLASS known{};
    if (GetClassInfo(AfxGetInstanceHandle(), kClassName, &known))
        return TRUE;
    WNDCLASS strip{};
    strip.style = CS_DBLCLKS;
    strip.lpfnWndProc = DefaultProcedure;
    strip.hInstance = AfxGetInstanceHandle();
    strip.lpszClassName = kClassName;
    return RegisterClass(&strip) != 0;
}

BOOL CListBoxExHeadings::Create(const RECT& rect, CWnd* parent, UINT id) {
    if (!Initialize() || parent == nullptr)
        return FALSE;
    return CWnd::Create(kClassName, "", WS_CHILD | WS_VISIBLE | WS_GROUP, rect, parent, id);
}

void CListBoxExHeadings::SetListBox(CListBoxEx* list) {
    if (list != m_pList && m_pTracking->tracking)
        OnCancelMode();
    m_pList = list;
}

// --- geometry ------------------------------------------------------------------------------------

/// The list, which must be set, by what headings need of it.
HeadingsOwner& CListBoxExHeadings::Owner() const { return *m_pList; }

int CListBoxExHeadings::ColumnCount() const {
    return m_pList != nullptr ? static_cast<int>(Owner().GetColumns().size()) : 0;
}

HeadingGeometry CListBoxExHeadings::Geometry() const {
    CRect client;
    if (GetSafeHwnd() != nullptr)
        GetClientRect(client);
    if (m_pList == nullptr)
        return {{}, client.Width(), client.Height()};
    return {Owner().GetColumns(), client.Width(), client.Height(), Owner().GetSideShift()};
}

BOOL CListBoxExHeadings::GetRect(int column, CRect* rect) {
    HeadingRect place;
    const bool isInside = Geometry().GetRect(column, place);
    *rect = CRect(place.left, place.top, place.right, place.bottom);
    return isInside;
}

int CListBoxExHeadings::HitTest(CPoint point) { return Geometry().HitTest(point.x, point.y); }

int CListBoxExHeadings::SizerHitTest(CPoint point) { return Geometry().SizerHitTest(point.x); }

void CListBoxExHeadings::FixLastColWidth() {
    if (m_pList != nullptr)
        Owner().FillLastColumn(Geometry().FixedLastWidth());
}

CFont* CListBoxExHeadings::GetActiveFont() {
    if (m_bSystemFont)
        return nullptr;
    if (m_font.GetSafeHandle() != nullptr)
        return &m_font;
    if (m_pList != nullptr && m_pList->GetSafeHwnd() != nullptr)
        if (CFont* font = m_pList->GetFont(); font != nullptr)
            return font;
    CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr;
    return parent != nullptr ? parent->GetFont() : nullptr;
}

int CListBoxExHeadings::GetDesiredHeight() {
    CClientDC dc(nullptr);
    CFont* font = GetActiveFont();
    CFont* old = font != nullptr ? dc.SelectObject(font) : nullptr;
    TEXTMETRIC metrics{};
    dc.GetTextMetrics(&metrics);
    if (old != nullptr)
        dc.SelectObject(old);
    return metrics.tmHeight + 4;
}

LRESULT CListBoxExHeadings::OnGetFont(WPARAM wParam, LPARAM lParam) {
    static_cast<void>(wParam);
    static_cast<void>(lParam);
    return reinterpret_cast<LRESULT>(m_font.GetSafeHandle());
}

LRESULT CListBoxExHeadings::OnSetFont(WPARAM wParam, LPARAM lParam) {
    LOGFONT description{};
    const auto font = reinterpret_cast<HFONT>(wParam);
    if (font != nullptr && ::GetObject(font, sizeof description, &description) == 0)
        return 0;
    m_font.DeleteObject();
    m_bSystemFont = font == nullptr;
    if (font != nullptr)
        m_font.CreateFontIndirect(&description);
    if (lParam != 0)
        Invalidate();
    return 0;
}

// --- drawing -------------------------------------------------------------------------------------

void CListBoxExHeadings::MakeDrawingObjects() {
    if (m_brBackground.GetSafeHandle() != nullptr)
        return;
    m_brBackground.CreateSolidBrush(GetSysColor(COLOR_3DFACE));
    m_penFrame.CreatePen(PS_SOLID, 1, GetSysColor(COLOR_3DDKSHADOW));
    m_penHighlight.CreatePen(PS_SOLID, 1, GetSysColor(COLOR_3DHIGHLIGHT));
    m_penShadow.CreatePen(PS_SOLID, 1, GetSysColor(COLOR_3DSHADOW));
}

void CListBoxExHeadings::DeleteDrawingObjects() {
    m_brBackground.DeleteObject();
    m_penFrame.DeleteObject();
    m_penHighlight.DeleteObject();
    m_penShadow.DeleteObject();
}

void CListBoxExHeadings::DrawHeading(CDC* dc, LPCTSTR text, CRect rect, BOOL pressed) {
    MakeDrawingObjects();
    const HeadingLines lines =
        LayOutHeading({rect.left, rect.top, rect.right, rect.bottom}, pressed != FALSE);
    CPen* old = dc->SelectObject(&m_penFrame);
    if (lines.hasFrame) {
        dc->MoveTo(lines.frame[0].x, lines.frame[0].y);
        dc->LineTo(lines.frame[1].x, lines.frame[1].y);
    }
    dc->SelectObject(pressed ? &m_penShadow : &m_penHighlight);
    for (int i = 1; i < lines.upperPoints; ++i) {
        dc->MoveTo(lines.upper[i - 1].x, lines.upper[i - 1].y);
        dc->LineTo(lines.upper[i].x, lines.upper[i].y);
    }
    if (lines.hasLower) {
        dc->SelectObject(&m_penShadow);
        dc->MoveTo(lines.lower[0].x, lines.lower[0].y);
        dc->LineTo(lines.lower[1].x, lines.lower[1].y);
    }
    if (old != nullptr)
        dc->SelectObject(old);

    CRect place(lines.text.left, lines.text.top, lines.text.right, lines.text.bottom);
    if (place.Width() <= 0)
        return;
    const CString heading(text);
    SIZE size{0, 0};
    GetTextExtentPoint32(*dc, heading, heading.GetLength(), &size);
    UINT flags = DT_SINGLELINE | DT_NOPREFIX | DT_VCENTER;
    if (size.cx <= place.Width())
        flags |= DT_CENTER; // of a text too wide the beginning shows, not the middle
    dc->DrawText(heading, place, flags);
}

void CListBoxExHeadings::DrawArrow(CDC* dc, const CRect& rect, BOOL ascending) {
    const int right = rect.right - 6;
    const int left = right - 2 * kArrowHeight + 1;
    if (left < rect.left + 4)
        return;
    const int top = (rect.top + rect.bottom - kArrowHeight) / 2 + 1;
    dc->FillRect(CRect(left - 2, rect.top + 2, right + 2, rect.bottom), &m_brBackground);
    for (int line = 0; line < kArrowHeight; ++line) {
        const int inset = ascending ? kArrowHeight - 1 - line : line;
        dc->FillSolidRect(CRect(left + inset, top + line, right - inset, top + line + 1),
                          GetSysColor(COLOR_BTNTEXT));
    }
}

void CListBoxExHeadings::OnPaint() {
    CPaintDC dc(this);
    MakeDrawingObjects();
    CRect client;
    GetClientRect(client);
    dc.FillRect(client, &m_brBackground);
    if (m_pList == nullptr)
        return;
    Owner().SetWidths();
    CFont* font = GetActiveFont();
    CFont* old = font != nullptr ? dc.SelectObject(font) : nullptr;
    dc.SetBkMode(TRANSPARENT);
    dc.SetTextColor(GetSysColor(IsWindowEnabled() ? COLOR_BTNTEXT : COLOR_GRAYTEXT));
    CRect rect;
    for (int column = 0; column < ColumnCount() && GetRect(column, &rect); ++column) {
        if (rect.right <= 0)
            continue; // scrolled out
        DrawHeading(&dc, Owner().GetColumns()[static_cast<std::size_t>(column)].m_strHeading, rect,
                    m_pTracking->pressedLook && column == m_pTracking->pressedHeading);
        if (m_bSortArrow && column == Owner().GetSortColumn())
            DrawArrow(&dc, rect, Owner().GetSortState() == kSortedAscending);
        if (m_bKeyboard && column == m_nFocusColumn && GetFocus() == this) {
            rect.DeflateRect(2, 2);
            dc.DrawFocusRect(rect);
        }
    }
    if (old != nullptr)
        dc.SelectObject(old);
}

void CListBoxExHeadings::DrawSizer() {
    CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr;
    if (parent == nullptr || m_pList == nullptr || m_pList->GetSafeHwnd() == nullptr)
        return;
    CRect line(m_pTracking->sizerPosition, 0, m_pTracking->sizerPosition + 1, 1);
    MapWindowPoints(parent, line);
    CRect list;
    m_pList->GetWindowRect(list);
    parent->ScreenToClient(list);
    line.bottom = list.bottom;
    CClientDC dc(parent);
    dc.InvertRect(line);
}

void CListBoxExHeadings::OnSysColorChange() {
    CWnd::OnSysColorChange();
    DeleteDrawingObjects();
    Invalidate();
}

void CListBoxExHeadings::OnDestroy() {
    if (m_pTracking->tracking)
        OnCancelMode();
    DeleteDrawingObjects();
    CWnd::OnDestroy();
}

// --- mouse ---------------------------------------------------------------------------------------

void CListBoxExHeadings::FocusList() {
    if (m_pList != nullptr && m_pList->GetSafeHwnd() != nullptr && m_pList->IsWindowEnabled() &&
        (m_pList->GetStyle() & WS_TABSTOP) != 0)
        m_pList->SetFocus();
}

void CListBoxExHeadings::OnLButtonDown(UINT flags, CPoint point) {
    static_cast<void>(flags);
    FocusList(); // which commits an open editor
    if (GetSafeHwnd() == nullptr || m_pList == nullptr || GetCapture() == this)
        return;
    if (const int column = SizerHitTest(point); column >= 0) {
        BeginResize(column, point);
        return;
    }
    const int heading = HitTest(point);
    if (!Owner().IsSortEnabled() || heading < 0)
        return;
    m_pTracking->PressHeading(heading);
    SetCapture();
    Invalidate();
}

void CListBoxExHeadings::BeginResize(int column, CPoint point) {
    CRect rect;
    GetRect(column, &rect);
    m_pTracking->PressBoundary(column, rect.right, point.x);

    const int room =
        (m_pList->GetStyle() & WS_VSCROLL) != 0 ? GetSystemMetrics(SM_CXVSCROLL) + 1 : 0;
    CRect client;
    GetClientRect(client);
    CRect span(rect.left, 0, client.right - room - m_pTracking->grabOffset, 1);
    ClientToScreen(span);
    CRect rows;
    m_pList->GetClientRect(rows);
    m_pList->ClientToScreen(rows);
    CRect confined(span.left, rows.top, span.right, rows.bottom);
    confined.NormalizeRect();
    ClipCursor(confined);
    SetCapture();
    DrawSizer();
}

void CListBoxExHeadings::ResizeTo(CPoint point, BOOL erase) {
    CRect rect;
    const int column = m_pTracking->sizingColumn;
    GetRect(column, &rect);
    Owner().ResizeColumn(column, m_pTracking->MoveBoundary(point.x, rect.left));
    FixLastColWidth();
    Invalidate();
    Owner().ColumnsMoved(std::max<int>(0, rect.left - HeadingGeometry::kFirstLeft), erase);
}

void CListBoxExHeadings::OnMouseMove(UINT flags, CPoint point) {
    static_cast<void>(flags);
    if (m_pTracking->GetPhase() == HeadingTracking::Phase::Idle || m_pList == nullptr) {
        SetCursor(SizerHitTest(point) >= 0 ? m_hSize : m_hArrow);
        return;
    }
    if (m_pTracking->GetPhase() == HeadingTracking::Phase::HeadingPressed) {
        SetCursor(m_hArrow);
        if (m_pTracking->MoveOver(HitTest(point)))
            Invalidate();
        return;
    }
    m_pList->SetFocus();
    if (GetSafeHwnd() == nullptr || !m_pTracking->tracking ||
        m_pTracking->sizingColumn >= ColumnCount())
        return; // the focus change ended the drag, or destroyed the list or its columns
    SetCursor(m_hSize);
    DrawSizer();
    ResizeTo(point, FALSE);
    UpdateWindow(); // the list follows the drag
    m_pList->UpdateWindow();
    DrawSizer();
}

void CListBoxExHeadings::OnLButtonUp(UINT flags, CPoint point) {
    static_cast<void>(flags);
    if (!m_pTracking->tracking)
        return;
    if (m_pTracking->GetPhase() == HeadingTracking::Phase::Resizing) {
        DrawSizer();
        ClipCursor(nullptr);
        if (m_pTracking->sizingColumn < ColumnCount()) {
            ResizeTo(point, TRUE);
            NotifyAccessibility(m_pList->m_hWnd, AccessibleChange::Columns);
        }
    }
    const HeadingTracking::Released released = m_pTracking->Release(HitTest(point));
    ReleaseCapture();
    const HWND window = m_hWnd;
    const BOOL sorted =
        released.sortColumn >= 0 && m_pList != nullptr && Owner().Sort(released.sortColumn);
    if (IsWindow(window) && (sorted || released.hadLook))
        Invalidate();
}

void CListBoxExHeadings::OnLButtonDblClk(UINT flags, CPoint point) {
    static_cast<void>(flags);
    FocusList();
    if (GetSafeHwnd() == nullptr)
        return;
    Default();
    if (const int column = SizerHitTest(point); column >= 0)
        Owner().AutoFitCol(column);
}

BOOL CListBoxExHeadings::OnSetCursor(CWnd* window, UINT hitTest, UINT message) {
    static_cast<void>(window);
    static_cast<void>(hitTest);
    static_cast<void>(message);
    CPoint point;
    GetCursorPos(&point);
    ScreenToClient(&point);
    SetCursor(m_pTracking->pressedHeading < 0 && SizerHitTest(point) >= 0 ? m_hSize : m_hArrow);
    return TRUE;
}

void CListBoxExHeadings::OnCancelMode() {
    if (!m_pTracking->tracking)
        return;
    if (m_pTracking->Cancel() == HeadingTracking::Phase::Resizing) {
        DrawSizer();
        ClipCursor(nullptr);
    }
    ReleaseCapture();
    if (GetSafeHwnd() != nullptr)
        Invalidate(TRUE);
}

// --- beyond the strip's usual ways ---------------------------------------------------------------

void CListBoxExHeadings::ShowSortArrow(BOOL on) {
    m_bSortArrow = on;
    if (GetSafeHwnd() != nullptr)
        Invalidate();
}

void CListBoxExHeadings::EnableKeyboard(BOOL on) {
    m_bKeyboard = on;
    if (GetSafeHwnd() == nullptr)
        return;
    ModifyStyle(on ? 0 : WS_TABSTOP, on ? WS_TABSTOP : 0);
    Invalidate();
}

UINT CListBoxExHeadings::OnGetDlgCode() {
    return m_bKeyboard ? static_cast<UINT>(DLGC_WANTARROWS | DLGC_WANTCHARS | DLGC_WANTALLKEYS)
                       : CWnd::OnGetDlgCode();
}

void CListBoxExHeadings::SelectHeading(int column) {
    if (ColumnCount() == 0)
        return;
    m_nFocusColumn = std::clamp(column, 0, ColumnCount() - 1);
    Invalidate();
    NotifyAccessibility(m_pList->m_hWnd, AccessibleChange::Focus, -1, m_nFocusColumn);
}

void CListBoxExHeadings::ResizeByKey(int column, int pixels) {
    if (column >= ColumnCount())
        return;
    m_pList->SetColumnWidth(column, m_pList->GetColumnWidth(column) + pixels);
    FixLastColWidth();
    NotifyAccessibility(m_pList->m_hWnd, AccessibleChange::Columns);
}

void CListBoxExHeadings::OnKeyDown(UINT key, UINT repeat, UINT flags) {
    if (!m_bKeyboard || m_pList == nullptr || m_pTracking->tracking) {
        CWnd::OnKeyDown(key, repeat, flags);
        return;
    }
    const bool shift = GetKeyState(VK_SHIFT) < 0;
    const bool control = GetKeyState(VK_CONTROL) < 0;
    switch (key) {
    case VK_LEFT:
    case VK_RIGHT: {
        const int step = key == VK_RIGHT ? 1 : -1;
        if (shift)
            ResizeByKey(m_nFocusColumn, step * kKeyStep);
        else
            SelectHeading(m_nFocusColumn + step);
        break;
    }
    case VK_HOME:
        SelectHeading(0);
        break;
    case VK_END:
        SelectHeading(ColumnCount() - 1);
        break;
    case VK_RETURN:
    case VK_SPACE:
        if (control)
            Owner().AutoFitCol(m_nFocusColumn);
        else if (Owner().IsSortEnabled())
            Owner().Sort(m_nFocusColumn);
        break;
    case VK_TAB: {
        // Every key comes here; this one goes on.
        CWnd* top = GetTopLevelParent();
        if (CWnd* next = top != nullptr ? top->GetNextDlgTabItem(this, shift) : nullptr)
            next->SetFocus();
        break;
    }
    default:
        CWnd::OnKeyDown(key, repeat, flags);
        break;
    }
}

void CListBoxExHeadings::OnSetFocus(CWnd* old) {
    CWnd::OnSetFocus(old);
    if (m_bKeyboard)
        SelectHeading(m_nFocusColumn);
}

void CListBoxExHeadings::OnKillFocus(CWnd* next) {
    CWnd::OnKillFocus(next);
    if (m_bKeyboard)
        Invalidate();
}

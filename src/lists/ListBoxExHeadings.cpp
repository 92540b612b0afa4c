// CListBoxExHeadings: the window, its geometry and its font. The state of a drag or press, with its
// invariants, is HeadingTracking.
#include "vnbytstr/ListBoxExHeadings.h"

#include "src/lists/HeadingGeometry.h"
#include "src/lists/HeadingTracking.h"
#include "vnbytstr/ListBoxEx.h"
#include "vnbytstr/framework/Module.h"

using namespace vnbytstr::detail;

namespace {

constexpr int kFarAway = 1'000'000; ///< left of the control, in pixels

constexpr const char* kClassName = "ListBoxExHeadingsWindowClass";

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
ON_WM_CONTEXTMENU()
ON_WM_TIMER()
ON_WM_MOUSELEAVE()
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
    : m_pTracking(std::make_shared<HeadingTracking>()), m_hArrow(LoadCursor(nullptr, IDC_ARROW)),
      m_hSize(LoadCursor(nullptr, IDC_SIZEWE)) {}

CListBoxExHeadings::~CListBoxExHeadings() {
    if (GetSafeHwnd() != nullptr)
        DestroyWindow();
    if (m_pList != nullptr)
        Owner().HeadingsServe(this, false);
    for (HeadingsOwner* user : m_users)
        user->HeadingsEnd(this);
}

BOOL CListBoxExHeadings::Initialize() {
    WNDCLASS known{};
    if (GetClassInfo(AfxGetInstanceHandle(), kClassName, &known))
        return TRUE;
    WNDCLASS description{};
    description.style = CS_DBLCLKS;
    description.lpfnWndProc = DefaultProcedure;
    description.hInstance = AfxGetInstanceHandle();
    description.lpszClassName = kClassName;
    return RegisterClass(&description) != 0;
}

BOOL CListBoxExHeadings::Create(const RECT& rect, CWnd* parent, UINT id) {
    if (!Initialize() || parent == nullptr)
        return FALSE;
    return CWnd::Create(kClassName, "", WS_CHILD | WS_VISIBLE | WS_GROUP, rect, parent, id);
}

void CListBoxExHeadings::SetListBox(CListBoxEx* list) {
    if (list != m_pList && m_pTracking->tracking)
        OnCancelMode();
    if (m_pList != nullptr)
        Owner().HeadingsServe(this, false);
    m_pList = list;
    if (m_pList != nullptr)
        Owner().HeadingsServe(this, true);
}

void CListBoxExHeadings::OnDestroy() {
    if (m_pTracking->tracking)
        OnCancelMode();
    DeleteDrawingObjects();
    CWnd::OnDestroy();
}

// --- geometry ------------------------------------------------------------------------------------

/// What the header control asks of its list, which must be set.
HeadingsOwner& CListBoxExHeadings::Owner() const { return *m_pList; }

int CListBoxExHeadings::ColumnCount() const {
    return m_pList != nullptr ? static_cast<int>(Owner().GetColumns().size()) : 0;
}

HeadingGeometry CListBoxExHeadings::Geometry() const {
    CRect client;
    if (GetSafeHwnd() != nullptr)
        GetClientRect(client);
    if (m_pList == nullptr)
        return {ColumnView(), client.Width(), client.Height()};
    return {Owner().GetColumnView(), client.Width(), client.Height(), Owner().GetRowsLeft()};
}

BOOL CListBoxExHeadings::GetRect(int column, CRect* rect) {
    HeadingRect place;
    const bool isInside = Geometry().GetRect(column, place);
    *rect = CRect(place.left, place.top, place.right, place.bottom);
    return isInside;
}

/// What is drawn is what is hit: an override of GetRect counts.
HeadingRects CListBoxExHeadings::Rects() {
    const ColumnView view = m_pList != nullptr ? Owner().GetColumnView() : ColumnView();
    const int frozenWidth = view.FrozenWidth();
    return [this, view, frozenWidth](int position, HeadingRect& place) {
        const int column = view.ColumnOf(position);
        CRect rect;
        const BOOL isInside = GetRect(column, &rect);
        place = {rect.left, rect.top, rect.right, rect.bottom};
        if (position >= view.Frozen() && view.Frozen() > 0 &&
            view.Place(column).right < frozenWidth)
            place.left = place.right = -kFarAway; // covered: nothing of it can be hit
        return isInside != FALSE;
    };
}

int CListBoxExHeadings::HitTest(CPoint point) {
    if (m_pList == nullptr)
        return -1;
    const ColumnView view = Owner().GetColumnView();
    const int position = HeadingAt(view.Count(), Rects(), point.x, point.y);
    return position >= 0 ? view.ColumnOf(position) : -1;
}

int CListBoxExHeadings::SizerHitTest(CPoint point) {
    if (m_pList == nullptr)
        return -1;
    CRect client;
    if (GetSafeHwnd() != nullptr)
        GetClientRect(client);
    const ColumnView view = Owner().GetColumnView();
    const int position = DividerAt(view.Count(), Rects(), client.Width(), point.x);
    return position >= 0 ? view.ColumnOf(position) : -1;
}

void CListBoxExHeadings::FixLastColWidth() {
    if (m_pList == nullptr || GetSafeHwnd() == nullptr)
        return;
    const ColumnView view = Owner().GetColumnView();
    CRect client;
    GetClientRect(client);
    CRect last;
    GetRect(view.Last(), &last);
    // Scrolled or not, the column is as wide as it is when the list is not scrolled.
    int left = last.left + Owner().GetSideShift();
    if (view.Frozen() > 0) // they may cover it
        left = Geometry().Left() + view.WidthBefore(view.Count() - 1);
    const bool isInside = view.Count() > 0 && left < client.right;
    Owner().FillLastColumn(isInside ? client.right - left : -1);
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

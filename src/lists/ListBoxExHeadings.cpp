// CListBoxExHeadings: the window, its geometry and its font. The state of a drag or press, with its
// invariants, is HeadingTracking.
#include "vnbytstr/ListBoxExHeadings.h"

#include "src/lists/HeadingGeometry.h"
#include "src/lists/HeadingTracking.h"
#include "vnbytstr/ListBoxEx.h"
#include "vnbytstr/framework/Module.h"

using namespace vnbytstr::detail;

namespace {

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
        return {{}, client.Width(), client.Height()};
    return {Owner().GetColumns(), client.Width(), client.Height(),
            Owner().GetSideShift() - Owner().GetRowsLeft()};
}

BOOL CListBoxExHeadings::GetRect(int column, CRect* rect) {
    HeadingRect place;
    const bool isInside = Geometry().GetRect(column, place);
    *rect = CRect(place.left, place.top, place.right, place.bottom);
    return isInside;
}

/// What is drawn is what is hit: an override of GetRect counts.
HeadingRects CListBoxExHeadings::Rects() {
    return [this](int column, HeadingRect& place) {
        CRect rect;
        const BOOL isInside = GetRect(column, &rect);
        place = {rect.left, rect.top, rect.right, rect.bottom};
        return isInside != FALSE;
    };
}

int CListBoxExHeadings::HitTest(CPoint point) {
    return HeadingAt(ColumnCount(), Rects(), point.x, point.y);
}

int CListBoxExHeadings::SizerHitTest(CPoint point) {
    CRect client;
    if (GetSafeHwnd() != nullptr)
        GetClientRect(client);
    return DividerAt(ColumnCount(), Rects(), client.Width(), point.x);
}

void CListBoxExHeadings::FixLastColWidth() {
    if (m_pList == nullptr || GetSafeHwnd() == nullptr)
        return;
    CRect client;
    GetClientRect(client);
    CRect last;
    GetRect(ColumnCount() - 1, &last);
    // Scrolled or not, the column is as wide as it is when the list is not scrolled.
    const int left = last.left + Owner().GetSideShift();
    const bool isInside = ColumnCount() > 0 && left < client.right;
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

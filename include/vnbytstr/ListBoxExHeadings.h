// The strip of headings above a CListBoxEx: resizes columns with the mouse, fits them with a double
// click, sorts by the heading clicked.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/window/Wnd.h"

#include <memory>

namespace vnbytstr::detail {
class HeadingGeometry;
class HeadingsOwner;
struct HeadingTracking;
} // namespace vnbytstr::detail

class CListBoxEx;

/// Owns no column data: widths and heading texts are the list's. Coordinates are pixels of the
/// strip's client area.
///
/// The strip is filled with COLOR_3DFACE, also right of the last column; the lines have
/// COLOR_3DDKSHADOW (frame), COLOR_3DHIGHLIGHT and COLOR_3DSHADOW, the texts COLOR_BTNTEXT,
/// COLOR_GRAYTEXT while the strip is disabled.
class VNBYTSTR_API CListBoxExHeadings : public CWnd {
    DECLARE_DYNAMIC(CListBoxExHeadings)
public:
    CListBoxExHeadings();
    ~CListBoxExHeadings() override;

    /// Registers the window class "ListBoxExHeadingsWindowClass", once per process. FALSE when that
    /// fails.
    static BOOL Initialize();

    using CWnd::Create;
    /// Makes the strip a child of `parent`. FALSE when there can be no window.
    virtual BOOL Create(const RECT& rect, CWnd* parent, UINT id);
    /// The list served; null: none. It must outlive the strip's window or take itself away.
    virtual void SetListBox(CListBoxEx* list);
    /// The active font's height plus 4, in pixels.
    virtual int GetDesiredHeight();
    /// Makes the last column end at the strip's right edge, be it wider or narrower than before.
    virtual void FixLastColWidth();
    /// Null (the device context's own font) after WM_SETFONT without one; else the font of
    /// WM_SETFONT, else the list's, else the parent's. Whose it is does not change.
    virtual CFont* GetActiveFont();
    /// The heading's rectangle. FALSE when its left edge is out of the strip, or there is no list
    /// or no such column.
    virtual BOOL GetRect(int column, CRect* rect);
    /// Draws one raised (or pressed) heading into `rect`.
    virtual void DrawHeading(CDC* dc, LPCTSTR text, CRect rect, BOOL pressed);
    /// The column whose right boundary is grabbed at the point (5 pixels left of it to 3 right of
    /// it), or -1. The last column has none. Of two boundaries in reach the right one is taken.
    virtual int SizerHitTest(CPoint point);
    /// The column whose heading holds the point, or -1.
    virtual int HitTest(CPoint point);
    /// Inverts the line at the boundary being dragged, down to the list's bottom; drawn twice it is
    /// gone.
    virtual void DrawSizer();

    // --- beyond the strip's usual ways; both are off unless asked for
    // -----------------------------
    /// Marks the heading of the last sort by a triangle.
    void ShowSortArrow(BOOL on = TRUE);
    /// Lets Tab go to the strip: Left and Right choose a heading, Enter and Space sort by it (in a
    /// list that sorts), Shift+Left and Shift+Right resize its column by 8 pixels, Ctrl+Enter fits
    /// it.
    void EnableKeyboard(BOOL on = TRUE);
    /// The heading that keys go to; -1 without keyboard use.
    int GetFocusColumn() const { return m_bKeyboard ? m_nFocusColumn : -1; }

protected:
    void OnPaint();
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonUp(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    void OnMouseMove(UINT flags, CPoint point);
    BOOL OnSetCursor(CWnd* window, UINT hitTest, UINT message);
    void OnCancelMode();
    void OnSysColorChange();
    LRESULT OnGetFont(WPARAM wParam, LPARAM lParam);
    LRESULT OnSetFont(WPARAM wParam, LPARAM lParam);
    void OnDestroy();
    UINT OnGetDlgCode();
    void OnKeyDown(UINT key, UINT repeat, UINT flags);
    void OnSetFocus(CWnd* old);
    void OnKillFocus(CWnd* next);
    DECLARE_MESSAGE_MAP()

    CListBoxEx* m_pList = nullptr;
    /// What the pressed mouse does.
    const std::unique_ptr<vnbytstr::detail::HeadingTracking> m_pTracking;
    CBrush m_brBackground; ///< made when first needed, like the pens
    CPen m_penFrame;
    CPen m_penHighlight;
    CPen m_penShadow;
    HCURSOR m_hArrow;
    HCURSOR m_hSize;
    CFont m_font;               ///< the strip's copy of the font of WM_SETFONT
    BOOL m_bSystemFont = FALSE; ///< WM_SETFONT passed no font

private:
    vnbytstr::detail::HeadingsOwner& Owner() const;
    int ColumnCount() const;
    vnbytstr::detail::HeadingGeometry Geometry() const;
    void FocusList();
    void BeginResize(int column, CPoint point);
    void ResizeTo(CPoint point, BOOL erase);
    void DrawArrow(CDC* dc, const CRect& rect, BOOL ascending);
    void MakeDrawingObjects();
    void DeleteDrawingObjects();
    void SelectHeading(int column);
    void ResizeByKey(int column, int pixels);

    BOOL m_bSortArrow = FALSE;
    BOOL m_bKeyboard = FALSE;
    int m_nFocusColumn = 0;
};

// The header control of a CListBoxEx: resizes columns with the mouse, fits them on a double click,
// sorts by the header that is clicked.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

#include <functional>
#include <memory>
#include <vector>

namespace vnbytstr::detail {
class HeadingGeometry;
class HeadingsOwner;
struct HeadingRect;
struct HeadingTracking;
} // namespace vnbytstr::detail

class CListBoxEx;

/// Owns no column data: widths and names are the list's. Coordinates are pixels of the control's
/// client area.
///
/// The background is COLOR_3DFACE, also right of the last column; lines are COLOR_3DDKSHADOW
/// (frame), COLOR_3DHIGHLIGHT and COLOR_3DSHADOW, texts COLOR_BTNTEXT, or COLOR_GRAYTEXT while the
/// control is disabled.
class VNBYTSTR_CONTROLS_API CListBoxExHeadings : public CWnd {
    DECLARE_DYNAMIC(CListBoxExHeadings)
public:
    CListBoxExHeadings();
    ~CListBoxExHeadings() override;

    /// Registers the window class "ListBoxExHeadingsWindowClass", once per process. FALSE on
    /// failure.
    static BOOL Initialize();

    using CWnd::Create;
    /// Creates the window as a child of `parent`. FALSE on failure.
    virtual BOOL Create(const RECT& rect, CWnd* parent, UINT id);
    /// Sets the list, or none if null. Either may be destroyed first: the other forgets it.
    virtual void SetListBox(CListBoxEx* list);
    /// The active font's height plus 4, in pixels.
    virtual int GetDesiredHeight();
    /// Makes the last column end at the right edge, by widening or narrowing it. A column that
    /// begins right of the edge keeps its width; with EnableSideScroll none is narrowed below its
    /// own width. The list calls it whenever widths or sizes change.
    virtual void FixLastColWidth();
    /// Null (the device context's own font) after WM_SETFONT without a font; else the font of
    /// WM_SETFONT, else the list's, else the parent's. Ownership is not transferred.
    virtual CFont* GetActiveFont();
    /// A column header's rectangle. FALSE when it begins right of the control's right edge, or
    /// there is no list or no such column. Drawing, both hit tests and FixLastColWidth ask it.
    virtual BOOL GetRect(int column, CRect* rect);
    /// Draws one raised (or pressed) column header into `rect`.
    virtual void DrawHeading(CDC* dc, LPCTSTR text, CRect rect, BOOL pressed);
    /// The column whose divider, its right boundary, is under the point (5 pixels left of it to 3
    /// right of it), or -1. The last column has no divider. Of two dividers in reach the right one
    /// is taken.
    virtual int SizerHitTest(CPoint point);
    /// The column whose header contains the point, or -1.
    virtual int HitTest(CPoint point);
    /// Inverts a line at the divider being dragged, down to the list's bottom. Drawing it a second
    /// time removes it.
    virtual void DrawSizer();

    // --- extensions, off by default --------------------------------------------------------------
    /// Marks the column of the last sort with a triangle.
    void ShowSortArrow(BOOL on = TRUE);
    /// Makes the control a tab stop: Left, Right, Home and End choose a column, Enter and Space
    /// sort by it (if EnableSort is on), Shift+Left and Shift+Right resize it by 8 pixels,
    /// Ctrl+Enter fits it.
    void EnableKeyboard(BOOL on = TRUE);
    /// The user drags headers to other places. A line shows where the column will stand; the list's
    /// parent gets VNM_COLUMNSCHANGED.
    void EnableMove(BOOL on = TRUE) { m_bMove = on; }
    /// A right click opens a menu by which the user hides and shows columns; the parent gets
    /// VNM_COLUMNSCHANGED.
    void EnableColumnMenu(BOOL on = TRUE) { m_bColumnMenu = on; }
    /// The pointer resting on a header shows the column's name and type
    /// (CListBoxEx::SetColumnTip, SetColumnTypeText).
    void EnableTips(BOOL on = TRUE);
    /// The column that keys act on; -1 unless EnableKeyboard is on.
    int GetFocusColumn() const { return m_bKeyboard ? m_nFocusColumn : -1; }

protected:
    void OnPaint();
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonUp(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    void OnMouseMove(UINT flags, CPoint point);
    BOOL OnSetCursor(CWnd* window, UINT hitTest, UINT message);
    void OnCancelMode();
    void OnContextMenu(CWnd* window, CPoint screen);
    void OnTimer(std::uintptr_t id);
    void OnMouseLeave();
    void OnSysColorChange();
    LRESULT OnGetFont(WPARAM wParam, LPARAM lParam);
    LRESULT OnSetFont(WPARAM wParam, LPARAM lParam);
    void OnDestroy();
    UINT OnGetDlgCode();
    void OnKeyDown(UINT key, UINT repeat, UINT flags);
    void OnSetFocus(CWnd* old);
    void OnKillFocus(CWnd* next);
    DECLARE_MESSAGE_MAP()

    /// The list that it belongs to.
    CListBoxEx* m_pList = nullptr;
    /// What a pressed mouse button is doing.
    const std::shared_ptr<vnbytstr::detail::HeadingTracking> m_pTracking;
    CBrush m_brBackground; ///< made when first needed, like the pens
    CPen m_penFrame;
    CPen m_penHighlight;
    CPen m_penShadow;
    HCURSOR m_hArrow;
    HCURSOR m_hSize;
    CFont m_font;               ///< a copy of the font of WM_SETFONT
    BOOL m_bSystemFont = FALSE; ///< WM_SETFONT passed no font

private:
    friend class CListBoxEx;
    /// Tells after a message to others whether this object still exists.
    using Life = std::weak_ptr<vnbytstr::detail::HeadingTracking>;

    vnbytstr::detail::HeadingsOwner& Owner() const;
    int ColumnCount() const;
    vnbytstr::detail::HeadingGeometry Geometry() const;
    std::function<bool(int, vnbytstr::detail::HeadingRect&)> Rects();
    BOOL CanFocusList() const;
    void FocusList();
    BOOL FocusListForPress();
    void BeginResize(int column, CPoint point);
    void ResizeTo(CPoint point, BOOL erase);
    void DrawArrow(CDC* dc, const CRect& rect, BOOL ascending);
    void MakeDrawingObjects();
    void DeleteDrawingObjects();
    int FocusPosition() const;
    void SelectHeading(int position);
    void ResizeByKey(int column, int pixels);
    bool DragHeading(CPoint point);
    bool DropHeading();
    void EndHeadingDrag();
    void DrawDropMark();
    void WaitForTip(CPoint point);

    /// A header that is dragged to another place.
    struct Drag {
        int startX = 0;    ///< where the button went down
        int position = -1; ///< where the header would be dropped; -1: it is not dragged yet
        bool isMarked = false;
    };
    Drag m_drag;
    BOOL m_bMove = FALSE;
    BOOL m_bColumnMenu = FALSE;
    BOOL m_bTips = FALSE;
    int m_nTipColumn = -1; ///< the header that the pointer rests on
    CPoint m_tipPoint;
    UINT m_nTextFlags = 1; ///< DT_ alignment of the header being drawn; initially centred
    int m_nArrowRoom = 0;  ///< at the right of the header being drawn, for the sort arrow

    BOOL m_bSortArrow = FALSE;
    BOOL m_bKeyboard = FALSE;
    int m_nFocusColumn = 0;
    std::vector<vnbytstr::detail::HeadingsOwner*> m_users; ///< lists that this is the control of
};

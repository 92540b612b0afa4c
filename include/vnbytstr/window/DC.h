// CDC and the classes derived from it: drawing on a window, or measuring text without one.
//
// Coordinates are those of the window's client area (CWindowDC: of its whole rectangle), in
// device-independent pixels, from its left top; in a window with WS_EX_LAYOUTRTL from its right
// top, x growing to the left, and text is not mirrored. Text is in the ANSI code page.
//
// Drawing inside WM_PAINT (CPaintDC, and the device context of WM_DRAWITEM) goes to the window.
// Drawing outside WM_PAINT goes to a layer over the window and its children. Filled and written
// pixels stay there until the window paints that place again, inverted ones (InvertRect,
// DrawFocusRect) until they are inverted back.
#pragma once

#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Gdi.h"
#include "vnbytstr/window/Messages.h"

class CWnd;

class VNBYTSTR_CONTROLS_API CDC : public CObject {
    DECLARE_DYNAMIC(CDC)
public:
    CDC() = default;
    ~CDC() override;

    /// The handle; null when there is none.
    operator HDC() const { return m_hDC; }
    HDC GetSafeHdc() const { return m_hDC; }
    /// Attaches a handle. FALSE when it is null or one is attached.
    BOOL Attach(HDC dc);
    HDC Detach();
    /// The object for a handle; null for null. It lives as long as the handle.
    static CDC* FromHandle(HDC dc);
    BOOL DeleteDC();

    /// Remembers the state (objects, colours, modes, clipping); returns a number above 0.
    int SaveDC();
    /// Goes back to a state; -1 to the last one.
    BOOL RestoreDC(int saved);
    /// The window drawn on; null for a context that only measures.
    CWnd* GetWindow() const;

    /// Objects: each returns the one selected before, null on failure.
    CPen* SelectObject(CPen* pen);
    CBrush* SelectObject(CBrush* brush);
    CFont* SelectObject(CFont* font);
    HGDIOBJ SelectObject(HGDIOBJ object);

    /// Colours and modes: each returns the value before.
    COLORREF SetTextColor(COLORREF color);
    int SetBkMode(int mode); ///< TRANSPARENT or OPAQUE (the beginning)

    // Shapes. Rectangles exclude their right and bottom edges.
    /// Where the next line begins. Returns where it would have begun.
    CPoint MoveTo(int x, int y);
    CPoint MoveTo(POINT point) { return MoveTo(point.x, point.y); }
    /// A line with the selected pen up to, and not including, the point.
    BOOL LineTo(int x, int y);
    BOOL LineTo(POINT point) { return LineTo(point.x, point.y); }
    void FillRect(LPCRECT rect, CBrush* brush);
    void FillSolidRect(LPCRECT rect, COLORREF color);
    void FrameRect(LPCRECT rect, CBrush* brush);
    /// Inverts every pixel; twice is as before.
    void InvertRect(LPCRECT rect);
    /// Draws (or, drawn twice, removes) the dotted frame of the focus.
    void DrawFocusRect(LPCRECT rect);
    void Draw3dRect(LPCRECT rect, COLORREF leftTop, COLORREF rightBottom);

    // Text.
    /// `options` ETO_*; `rect` (may be null) is filled or clips; `widths` is not used.
    BOOL ExtTextOut(int x, int y, UINT options, LPCRECT rect, LPCTSTR text, UINT length,
                    const int* widths = nullptr);
    BOOL ExtTextOut(int x, int y, UINT options, LPCRECT rect, const CString& text,
                    const int* widths = nullptr) {
        return ExtTextOut(x, y, options, rect, text, static_cast<UINT>(text.GetLength()), widths);
    }
    /// `flags` DT_*; `length` -1: up to the NUL. Returns the height of the text. DT_CALCRECT sets
    /// the rectangle's right and bottom to what the text needs and draws nothing.
    int DrawText(LPCTSTR text, int length, LPRECT rect, UINT flags);
    int DrawText(const CString& text, LPRECT rect, UINT flags) {
        return DrawText(text, text.GetLength(), rect, flags);
    }
    CSize GetTextExtent(LPCTSTR text, int length) const;
    CSize GetTextExtent(const CString& text) const { return GetTextExtent(text, text.GetLength()); }
    BOOL GetTextMetrics(LPTEXTMETRIC metrics) const;

    // Clipping.
    /// The smallest rectangle that holds all that can be drawn on.
    int GetClipBox(LPRECT rect) const;
    /// From now on, until RestoreDC, nothing is drawn outside of the rectangle, nor outside of
    /// those of former calls.
    void IntersectClipRect(int left, int top, int right, int bottom);

    /// The handle.
    HDC m_hDC = nullptr;

protected:
    BOOL m_owned = FALSE; ///< the destructor frees m_hDC
};

/// Draws a window in its WM_PAINT handler: the constructor begins painting (erasing the
/// background), the destructor ends it.
class VNBYTSTR_CONTROLS_API CPaintDC : public CDC {
    DECLARE_DYNAMIC(CPaintDC)
public:
    /// Begins painting the window; the destructor ends it.
    explicit CPaintDC(CWnd* window);
    ~CPaintDC() override;

    /// What is to be painted, and whether the background has to be erased first.
    struct {
        HDC hdc;
        BOOL fErase;
        RECT rcPaint; ///< what has to be painted
    } m_ps;
};

/// Draws on a window's client area at any time. With a null window it only measures text.
class VNBYTSTR_CONTROLS_API CClientDC : public CDC {
    DECLARE_DYNAMIC(CClientDC)
public:
    /// Of the window; null: text can be measured.
    explicit CClientDC(CWnd* window);
};

/// As CClientDC, with the coordinates of the whole window.
class VNBYTSTR_CONTROLS_API CWindowDC : public CDC {
    DECLARE_DYNAMIC(CWindowDC)
public:
    /// Of the window; null: text can be measured.
    explicit CWindowDC(CWnd* window);
};

/// As CDC::GetTextExtent.
VNBYTSTR_CONTROLS_API BOOL GetTextExtentPoint32(HDC dc, LPCTSTR text, int length, LPSIZE size);

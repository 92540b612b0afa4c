// The window layer's plain types: opaque handles, points, sizes and rectangles, and the structures
// that messages carry. Coordinates are device-independent pixels: the window layer scales them to
// the screen's own pixels.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <algorithm>

struct HWND__;
struct HDC__;
struct HGDIOBJ__;
struct HCURSOR__;
struct HMENU__;
struct HDROP__;
using HWND = HWND__*;       ///< a window
using HDC = HDC__*;         ///< a device context
using HGDIOBJ = HGDIOBJ__*; ///< a font, pen, brush or bitmap
/// Drawing objects of one kind.
using HFONT = HGDIOBJ;
using HPEN = HGDIOBJ;
using HBRUSH = HGDIOBJ;
using HBITMAP = HGDIOBJ;
using HCURSOR = HCURSOR__*; ///< a mouse pointer, never freed
using HICON = HBITMAP;      ///< a picture
using HMENU = HMENU__*;     ///< a menu, or a child window's id cast to it
using HDROP = HDROP__*;     ///< the files of a drop

/// A point.
struct POINT {
    /// Across, to the right, and down.
    LONG x;
    LONG y;
};
/// A size.
struct SIZE {
    /// Width and height.
    LONG cx;
    LONG cy;
};
/// The right and bottom edges are outside the rectangle.
struct RECT {
    /// Coordinates of the edges.
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
using LPPOINT = POINT*;
using LPSIZE = SIZE*;
using LPRECT = RECT*;
using LPCRECT = const RECT*;

/// The low and high 16 bits, and their composition.
constexpr WORD LOWORD(std::uintptr_t value) { return static_cast<WORD>(value & 0xFFFF); }
constexpr WORD HIWORD(std::uintptr_t value) { return static_cast<WORD>((value >> 16) & 0xFFFF); }
constexpr WORD LOWORD(std::intptr_t value) { return LOWORD(static_cast<std::uintptr_t>(value)); }
constexpr WORD HIWORD(std::intptr_t value) { return HIWORD(static_cast<std::uintptr_t>(value)); }
constexpr WORD LOWORD(DWORD value) { return static_cast<WORD>(value & 0xFFFF); }
constexpr WORD HIWORD(DWORD value) { return static_cast<WORD>(value >> 16); }
constexpr WORD LOWORD(LONG value) { return LOWORD(static_cast<DWORD>(value)); }
constexpr WORD HIWORD(LONG value) { return HIWORD(static_cast<DWORD>(value)); }
constexpr LONG MAKELONG(WORD low, WORD high) {
    return static_cast<LONG>(static_cast<DWORD>(low) | (static_cast<DWORD>(high) << 16));
}
constexpr WPARAM MAKEWPARAM(int low, int high) {
    return static_cast<DWORD>(MAKELONG(static_cast<WORD>(low), static_cast<WORD>(high)));
}
constexpr LPARAM MAKELPARAM(int low, int high) {
    return static_cast<LPARAM>(MAKEWPARAM(low, high));
}
/// The signed coordinates in a mouse message's lParam.
constexpr int GET_X_LPARAM(LPARAM value) { return static_cast<std::int16_t>(LOWORD(value)); }
constexpr int GET_Y_LPARAM(LPARAM value) { return static_cast<std::int16_t>(HIWORD(value)); }
/// The rotation in a WM_MOUSEWHEEL's wParam; 120 is one notch away from the user.
constexpr int GET_WHEEL_DELTA_WPARAM(WPARAM value) {
    return static_cast<std::int16_t>(HIWORD(value));
}

/// A colour: red in the lowest byte, then green, then blue.
constexpr COLORREF RGB(int red, int green, int blue) {
    return static_cast<COLORREF>((red & 0xFF) | ((green & 0xFF) << 8) | ((blue & 0xFF) << 16));
}
constexpr BYTE GetRValue(COLORREF color) { return static_cast<BYTE>(color); }
constexpr BYTE GetGValue(COLORREF color) { return static_cast<BYTE>(color >> 8); }
constexpr BYTE GetBValue(COLORREF color) { return static_cast<BYTE>(color >> 16); }

// The members are set in the constructors' bodies because the static analyzer does not see those of
// a base that is initialised in braces.
/// A size with operators.
class CSize : public SIZE {
public:
    constexpr CSize() : CSize(0, 0) {}
    /// A size.
    constexpr CSize(int width, int height) : SIZE() {
        cx = width;
        cy = height;
    }
    /// A size.
    constexpr CSize(SIZE size) : SIZE(size) {}
    /// Whether both are the same.
    constexpr bool operator==(const CSize& other) const { return cx == other.cx && cy == other.cy; }
};

/// A point with operators.
class CPoint : public POINT {
public:
    constexpr CPoint() : CPoint(0, 0) {}
    /// A point.
    constexpr CPoint(int left, int top) : POINT() {
        x = left;
        y = top;
    }
    /// A point.
    constexpr CPoint(POINT point) : POINT(point) {}
    /// The point in a mouse message's lParam.
    constexpr explicit CPoint(LPARAM packed) : CPoint(GET_X_LPARAM(packed), GET_Y_LPARAM(packed)) {}
    constexpr CPoint operator+(SIZE size) const { return {x + size.cx, y + size.cy}; }
    constexpr CPoint operator-(SIZE size) const { return {x - size.cx, y - size.cy}; }
    constexpr CSize operator-(POINT point) const { return {x - point.x, y - point.y}; }
    constexpr bool operator==(const CPoint& other) const { return x == other.x && y == other.y; }
};

/// A rectangle with operators.
class CRect : public RECT {
public:
    constexpr CRect() : CRect(0, 0, 0, 0) {}
    /// From its edges, or its corner and size.
    constexpr CRect(int l, int t, int r, int b) : RECT() {
        left = l;
        top = t;
        right = r;
        bottom = b;
    }
    /// From its edges, or its corner and size.
    constexpr CRect(const RECT& rect) : RECT(rect) {}
    constexpr CRect(POINT point, SIZE size)
        : CRect(point.x, point.y, point.x + size.cx, point.y + size.cy) {}

    /// Measures and corner.
    constexpr int Width() const { return right - left; }
    constexpr int Height() const { return bottom - top; }
    constexpr CSize Size() const { return {Width(), Height()}; }
    constexpr CPoint TopLeft() const { return {left, top}; }
    /// Whether the width or height is 0 or less.
    constexpr BOOL IsRectEmpty() const { return left >= right || top >= bottom; }
    /// The right and bottom edges do not count.
    constexpr BOOL PtInRect(POINT point) const {
        return point.x >= left && point.x < right && point.y >= top && point.y < bottom;
    }
    constexpr void InflateRect(int dx, int dy) {
        left -= dx;
        right += dx;
        top -= dy;
        bottom += dy;
    }
    constexpr void DeflateRect(int dx, int dy) { InflateRect(-dx, -dy); }
    constexpr void OffsetRect(int dx, int dy) {
        left += dx;
        right += dx;
        top += dy;
        bottom += dy;
    }
    constexpr void OffsetRect(POINT by) { OffsetRect(by.x, by.y); }
    /// Swaps edges until neither width nor height is negative.
    constexpr void NormalizeRect() {
        if (left > right)
            std::swap(left, right);
        if (top > bottom)
            std::swap(top, bottom);
    }
    /// Sets this to the intersection, all zero when it is empty. Returns whether it is not.
    constexpr BOOL IntersectRect(LPCRECT a, LPCRECT b) {
        const CRect common(std::max(a->left, b->left), std::max(a->top, b->top),
                           std::min(a->right, b->right), std::min(a->bottom, b->bottom));
        *this = common.IsRectEmpty() ? CRect() : common;
        return !IsRectEmpty();
    }
    constexpr operator LPRECT() { return this; }
    constexpr operator LPCRECT() const { return this; }
    constexpr bool operator==(const CRect& other) const {
        return left == other.left && top == other.top && right == other.right &&
               bottom == other.bottom;
    }
};

/// A message in the queue.
struct MSG {
    /// The window, the message's number, and what it carries.
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time; ///< tick count when the message was made
    POINT pt;   ///< the pointer's position on the screen at that time
};
using LPMSG = MSG*;

/// What WM_CREATE carries.
struct CREATESTRUCT {
    /// The arguments of CWnd::CreateEx; lpszName is the window's text.
    void* lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu; ///< a child window's id
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    DWORD style;
    LPCSTR lpszName;
    LPCSTR lpszClass;
    DWORD dwExStyle;
};
using LPCREATESTRUCT = CREATESTRUCT*;

/// What WM_DRAWITEM carries.
struct DRAWITEMSTRUCT {
    /// The control and its id, the item and its data, and where to draw.
    UINT CtlType; ///< ODT_*
    UINT CtlID;
    UINT itemID;     ///< index; 0xFFFFFFFF: the focus rectangle of an empty list
    UINT itemAction; ///< ODA_*
    UINT itemState;  ///< ODS_*
    HWND hwndItem;
    HDC hDC; ///< restored after the message
    RECT rcItem;
    std::uintptr_t itemData;
};
using LPDRAWITEMSTRUCT = DRAWITEMSTRUCT*;

/// What WM_MEASUREITEM carries.
struct MEASUREITEMSTRUCT {
    /// The kind of control (ODT_*), its id, the item and its data.
    UINT CtlType;
    UINT CtlID;
    UINT itemID;
    UINT itemWidth;
    UINT itemHeight; ///< the answer, in pixels; 1 to 255
    std::uintptr_t itemData;
};
using LPMEASUREITEMSTRUCT = MEASUREITEMSTRUCT*;

/// What WM_DELETEITEM carries.
struct DELETEITEMSTRUCT {
    /// The kind of control (ODT_*), its id, the item and its data.
    UINT CtlType;
    UINT CtlID;
    UINT itemID;
    HWND hwndItem;
    std::uintptr_t itemData;
};
using LPDELETEITEMSTRUCT = DELETEITEMSTRUCT*;

/// What WM_COMPAREITEM carries (a sorted owner-drawn list without strings).
struct COMPAREITEMSTRUCT {
    /// The kind of control (ODT_*), its id, the two items and their data.
    UINT CtlType;
    UINT CtlID;
    HWND hwndItem;
    UINT itemID1;
    std::uintptr_t itemData1;
    UINT itemID2;
    std::uintptr_t itemData2;
};
using LPCOMPAREITEMSTRUCT = COMPAREITEMSTRUCT*;

/// What begins every WM_NOTIFY.
struct NMHDR {
    /// The control, its id, and the notification.
    HWND hwndFrom;
    std::uintptr_t idFrom;
    UINT code;
};

/// What WM_WINDOWPOSCHANGING and WM_WINDOWPOSCHANGED carry.
struct WINDOWPOS {
    /// The arguments of CWnd::SetWindowPos.
    HWND hwnd;
    HWND hwndInsertAfter;
    int x;
    int y;
    int cx;
    int cy;
    UINT flags; ///< SWP_*
};
using LPWINDOWPOS = WINDOWPOS*;

/// What WM_HELP carries.
struct HELPINFO {
    /// The structure's size, the window with its id, and the pointer's place.
    UINT cbSize;
    int iContextType; ///< 1: a window
    int iCtrlId;
    HWND hItemHandle;
    DWORD dwContextId; ///< the message's help identifier
    POINT MousePos;
};

/// What WM_GETMINMAXINFO carries: the limits of a window's size.
struct MINMAXINFO {
    /// Size and place when maximised, and the limits while it is dragged.
    POINT ptReserved;
    POINT ptMaxSize;
    POINT ptMaxPosition;
    POINT ptMinTrackSize;
    POINT ptMaxTrackSize;
};

/// What a scroll bar shows.
struct SCROLLINFO {
    /// The structure's size, range, page and position; nTrackPos while it is dragged.
    UINT cbSize;
    UINT fMask; ///< SIF_*
    int nMin;
    int nMax;
    UINT nPage;
    int nPos;
    int nTrackPos;
};

/// Bytes of a face's name, with the NUL.
inline constexpr int LF_FACESIZE = 32;
/// What a font is to look like.
struct LOGFONT {
    LONG lfHeight;      ///< above 0: of a line; below 0: of a character, in pixels; 0: the default
    LONG lfWidth;       ///< not used
    LONG lfEscapement;  ///< not used
    LONG lfOrientation; ///< not used
    LONG lfWeight;      ///< 400 normal, 700 bold
    /// Nonzero: slanted, with a line below, with a line through it.
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    /// Not used.
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    char lfFaceName[LF_FACESIZE]; ///< empty: the default face
};

/// A font's measures, in pixels.
struct TEXTMETRIC {
    /// Heights, widths, weight and styles.
    LONG tmHeight; ///< ascent plus descent
    LONG tmAscent;
    LONG tmDescent;
    LONG tmInternalLeading; ///< the part of the ascent above the letters
    LONG tmExternalLeading; ///< to be added between lines
    LONG tmAveCharWidth;
    LONG tmMaxCharWidth;
    LONG tmWeight;
    BYTE tmItalic;
    BYTE tmUnderlined;
    BYTE tmStruckOut;
    BYTE tmPitchAndFamily;
    BYTE tmCharSet;
};
using LPTEXTMETRIC = TEXTMETRIC*;

/// A window procedure.
using WNDPROC = LRESULT (*)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// A window class, as RegisterClass takes it.
struct WNDCLASS {
    /// What its windows have; the name is by which they are created.
    UINT style; ///< CS_*
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground; ///< a brush, COLOR_* + 1 cast to one, or null: the window erases itself
    LPCSTR lpszMenuName;
    LPCSTR lpszClassName;
};

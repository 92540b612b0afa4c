// What is selected into a device context: CPen, CBrush, CFont, CBitmap.
#pragma once

#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Messages.h"

#include <cstddef>
#include <span>

// --- text drawing --------------------------------------------------------------------------------
inline constexpr UINT DT_LEFT = 0x0000;
inline constexpr UINT DT_CENTER = 0x0001;
inline constexpr UINT DT_RIGHT = 0x0002;
inline constexpr UINT DT_VCENTER = 0x0004; ///< with DT_SINGLELINE
inline constexpr UINT DT_BOTTOM = 0x0008;  ///< with DT_SINGLELINE
inline constexpr UINT DT_WORDBREAK = 0x0010;
inline constexpr UINT DT_SINGLELINE = 0x0020;
inline constexpr UINT DT_EXPANDTABS = 0x0040;
inline constexpr UINT DT_NOCLIP = 0x0100;
inline constexpr UINT DT_CALCRECT = 0x0400;
inline constexpr UINT DT_NOPREFIX = 0x0800;
inline constexpr UINT DT_END_ELLIPSIS = 0x8000;
inline constexpr UINT DT_RTLREADING = 0x20000;
inline constexpr UINT ETO_OPAQUE = 0x0002;
inline constexpr UINT ETO_CLIPPED = 0x0004;
inline constexpr UINT ETO_RTLREADING = 0x0080;
inline constexpr int TRANSPARENT = 1;
inline constexpr int OPAQUE = 2;
inline constexpr int PS_SOLID = 0;
inline constexpr int PS_NULL = 5;
inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;
inline constexpr int FW_NORMAL = 400;
inline constexpr int FW_BOLD = 700;
inline constexpr BYTE DEFAULT_CHARSET = 1;
inline constexpr int WHITE_BRUSH = 0;
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;
inline constexpr int WHITE_PEN = 6;
inline constexpr int BLACK_PEN = 7;
inline constexpr int NULL_PEN = 8;
inline constexpr int ANSI_FIXED_FONT = 11;
inline constexpr int SYSTEM_FONT = 13;
inline constexpr int DEFAULT_GUI_FONT = 17;

// --- system colours ------------------------------------------------------------------------------
inline constexpr int COLOR_WINDOW = 5;
inline constexpr int COLOR_WINDOWFRAME = 6;
inline constexpr int COLOR_MENUTEXT = 7;
inline constexpr int COLOR_WINDOWTEXT = 8;
inline constexpr int COLOR_CAPTIONTEXT = 9;
inline constexpr int COLOR_APPWORKSPACE = 12;
inline constexpr int COLOR_HIGHLIGHT = 13;
inline constexpr int COLOR_HIGHLIGHTTEXT = 14;
inline constexpr int COLOR_3DFACE = 15;
inline constexpr int COLOR_BTNSHADOW = 16;
inline constexpr int COLOR_3DSHADOW = 16;
inline constexpr int COLOR_GRAYTEXT = 17;
inline constexpr int COLOR_BTNTEXT = 18;
inline constexpr int COLOR_BTNHIGHLIGHT = 20;
inline constexpr int COLOR_3DHIGHLIGHT = 20;
inline constexpr int COLOR_3DDKSHADOW = 21;
inline constexpr int COLOR_3DLIGHT = 22;
inline constexpr int COLOR_INFOTEXT = 23;
inline constexpr int COLOR_INFOBK = 24;

/// A drawing object. The destructor deletes it, unless it was attached to a stock object. Deleting
/// an object that is selected into a device context leaves the context drawing with it until
/// another one is selected.
class VNBYTSTR_CONTROLS_API CGdiObject : public CObject {
    DECLARE_DYNAMIC(CGdiObject)
public:
    ~CGdiObject() override { DeleteObject(); }

    /// The handle; null when there is none.
    operator HGDIOBJ() const { return m_hObject; }
    HGDIOBJ GetSafeHandle() const { return m_hObject; }
    /// Attaches a handle. FALSE when it is null or one is attached.
    BOOL Attach(HGDIOBJ object);
    /// Detaches the handle and returns it.
    HGDIOBJ Detach();
    /// Frees the object. FALSE when there is none.
    BOOL DeleteObject();
    /// Copies the object's description (a font's LOGFONT) into `buffer`, at most `size` bytes.
    /// Returns the bytes written, 0 when there is none or the object is of another type.
    int GetObject(int size, void* buffer) const;
    /// Makes this object one of the stock objects (WHITE_BRUSH ... DEFAULT_GUI_FONT).
    BOOL CreateStockObject(int index);

    /// The handle.
    HGDIOBJ m_hObject = nullptr;

protected:
    CGdiObject() = default;
};

/// What lines are drawn with.
class VNBYTSTR_CONTROLS_API CPen : public CGdiObject {
    DECLARE_DYNAMIC(CPen)
public:
    CPen() = default;
    /// As CreatePen.
    CPen(int style, int width, COLORREF color) { CreatePen(style, width, color); }
    /// `style` PS_*, `width` in pixels (0 counts as 1).
    BOOL CreatePen(int style, int width, COLORREF color);
};

/// What areas are filled with.
class VNBYTSTR_CONTROLS_API CBrush : public CGdiObject {
    DECLARE_DYNAMIC(CBrush)
public:
    CBrush() = default;
    /// Of one colour.
    explicit CBrush(COLORREF color) { CreateSolidBrush(color); }
    /// Of one colour.
    BOOL CreateSolidBrush(COLORREF color);
};

/// What text is written with.
class VNBYTSTR_CONTROLS_API CFont : public CGdiObject {
    DECLARE_DYNAMIC(CFont)
public:
    CFont() = default;
    /// A face that the machine does not have is replaced by the nearest one.
    BOOL CreateFontIndirect(const LOGFONT* description);
    /// `tenths` of a point; an empty face is the default one.
    BOOL CreatePointFont(int tenths, LPCTSTR face);

    /// The object for a handle; null for null. The window layer owns it until the handle is
    /// deleted.
    static CFont* FromHandle(HFONT font);
};

/// A picture.
class VNBYTSTR_CONTROLS_API CBitmap : public CGdiObject {
    DECLARE_DYNAMIC(CBitmap)
public:
    CBitmap() = default;
    /// A picture in a file's format (PNG, BMP, JPEG, GIF and what else the machine knows) from
    /// memory. FALSE when the bytes are not a picture, or it would take more than 256 megabytes.
    BOOL LoadFromMemory(std::span<const std::byte> file);
};

/// As the members of CGdiObject.
VNBYTSTR_CONTROLS_API BOOL DeleteObject(HGDIOBJ object);
VNBYTSTR_CONTROLS_API HGDIOBJ GetStockObject(int index);
/// A system colour's brush, which is never deleted. Null for an unknown index.
VNBYTSTR_CONTROLS_API HBRUSH GetSysColorBrush(int index);
VNBYTSTR_CONTROLS_API HBRUSH CreateSolidBrush(COLORREF color);
VNBYTSTR_CONTROLS_API HFONT CreateFontIndirect(const LOGFONT* description);
VNBYTSTR_CONTROLS_API int GetObject(HGDIOBJ object, int size, void* buffer);

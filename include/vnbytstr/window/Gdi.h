// What is selected into a device context: CPen, CBrush, CFont, CBitmap.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/window/Messages.h"

#include <cstddef>
#include <span>

/// A drawing object. The destructor deletes it, unless it was attached to a stock object. Deleting
/// an object that is selected into a device context leaves the context drawing with it until
/// another one is selected.
class VNBYTSTR_API CGdiObject : public CObject {
    DECLARE_DYNAMIC(CGdiObject)
public:
    ~CGdiObject() override { DeleteObject(); }

    operator HGDIOBJ() const { return m_hObject; }
    HGDIOBJ GetSafeHandle() const { return m_hObject; }
    /// Takes the handle over. Fails when it is null or this object has one.
    BOOL Attach(HGDIOBJ object);
    /// Gives the handle to the caller.
    HGDIOBJ Detach();
    /// Frees the object. FALSE when there is none.
    BOOL DeleteObject();
    /// Copies the object's description (a font's LOGFONT) into `buffer`, at most `size` bytes.
    /// Returns the bytes written, 0 when there is none or the object is of another type.
    int GetObject(int size, void* buffer) const;
    /// Makes this object one of the stock objects (WHITE_BRUSH ... DEFAULT_GUI_FONT).
    BOOL CreateStockObject(int index);

    HGDIOBJ m_hObject = nullptr;

protected:
    CGdiObject() = default;
};

class VNBYTSTR_API CPen : public CGdiObject {
    DECLARE_DYNAMIC(CPen)
public:
    CPen() = default;
    CPen(int style, int width, COLORREF color) { CreatePen(style, width, color); }
    /// `style` PS_*, `width` in pixels (0 counts as 1).
    BOOL CreatePen(int style, int width, COLORREF color);
};

class VNBYTSTR_API CBrush : public CGdiObject {
    DECLARE_DYNAMIC(CBrush)
public:
    CBrush() = default;
    explicit CBrush(COLORREF color) { CreateSolidBrush(color); }
    BOOL CreateSolidBrush(COLORREF color);
};

class VNBYTSTR_API CFont : public CGdiObject {
    DECLARE_DYNAMIC(CFont)
public:
    CFont() = default;
    /// A face that the machine does not have is replaced by the nearest one.
    BOOL CreateFontIndirect(const LOGFONT* description);
    /// `tenths` of a point; an empty face is the default one.
    BOOL CreatePointFont(int tenths, LPCTSTR face);

    /// The object for a handle; null for null. It belongs to the window layer and lives until the
    /// handle is deleted.
    static CFont* FromHandle(HFONT font);
};

class VNBYTSTR_API CBitmap : public CGdiObject {
    DECLARE_DYNAMIC(CBitmap)
public:
    CBitmap() = default;
    /// A picture in a file's format (PNG, BMP, JPEG, GIF and what else the machine knows) from
    /// memory. FALSE when the bytes are none, or it would take more than 256 megabytes.
    BOOL LoadFromMemory(std::span<const std::byte> file);
    /// Width and height in pixels; (0, 0) when there is none.
    CSize GetBitmapSize() const;
};

VNBYTSTR_API BOOL DeleteObject(HGDIOBJ object);
VNBYTSTR_API HGDIOBJ GetStockObject(int index);
/// A system colour's brush. It is the layer's: nobody deletes it. Null for an unknown index.
VNBYTSTR_API HBRUSH GetSysColorBrush(int index);
VNBYTSTR_API HBRUSH CreateSolidBrush(COLORREF color);
VNBYTSTR_API HFONT CreateFontIndirect(const LOGFONT* description);
VNBYTSTR_API int GetObject(HGDIOBJ object, int size, void* buffer);

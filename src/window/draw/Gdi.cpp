#include "vnbytstr/window/Gdi.h"

#include "src/window/core/WindowInternal.h"
#include "src/window/draw/GdiInternal.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <QApplication>
#include <QBuffer>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QImageReader>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <unordered_set>

IMPLEMENT_DYNAMIC(CGdiObject, CObject)
IMPLEMENT_DYNAMIC(CPen, CGdiObject)
IMPLEMENT_DYNAMIC(CBrush, CGdiObject)
IMPLEMENT_DYNAMIC(CFont, CGdiObject)
IMPLEMENT_DYNAMIC(CBitmap, CGdiObject)

namespace vnbytstr::detail {
namespace {

std::unordered_set<const GdiObject*>& LiveObjects() {
    static auto* live = new std::unordered_set<const GdiObject*>; // outlives every static CFont
    return *live;
}

constexpr int kMaxStock = 17;

std::unique_ptr<GdiObject> MakeStock(int index) {
    auto object = std::make_unique<GdiObject>();
    object->stock = true;
    switch (index) {
    case WHITE_BRUSH:
        object->color = RGB(255, 255, 255);
        break;
    case BLACK_BRUSH:
        break;
    case NULL_BRUSH:
        object->empty = true;
        break;
    case WHITE_PEN:
        object->type = GdiObject::Type::Pen;
        object->color = RGB(255, 255, 255);
        break;
    case BLACK_PEN:
        object->type = GdiObject::Type::Pen;
        break;
    case NULL_PEN:
        object->type = GdiObject::Type::Pen;
        object->empty = true;
        break;
    case ANSI_FIXED_FONT:
        object->type = GdiObject::Type::Font;
        object->font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        break;
    case SYSTEM_FONT:
    case DEFAULT_GUI_FONT:
        object->type = GdiObject::Type::Font;
        object->font = QApplication::font();
        break;
    default:
        return nullptr;
    }
    if (object->type == GdiObject::Type::Font)
        object->logFont = DescribeFont(object->font);
    return object;
}

/// A font whose line is `height` pixels high.
void SetLineHeight(QFont& font, int height) {
    font.setPixelSize(std::max(height, 1));
    const double line = QFontMetricsF(font).height();
    if (line > 0)
        font.setPixelSize(std::max(1, static_cast<int>(std::lround(height * height / line))));
}

QFont MakeFont(const LOGFONT& description) {
    QFont font = QApplication::font();
    const auto* end = std::find(description.lfFaceName, description.lfFaceName + LF_FACESIZE, '\0');
    const std::string_view face(description.lfFaceName,
                                static_cast<std::size_t>(end - description.lfFaceName));
    if (!face.empty())
        font.setFamilies({ToQString(face)});
    constexpr int kMaxHeight = 2000;
    if (description.lfHeight < 0)
        font.setPixelSize(std::min(-std::max(description.lfHeight, -kMaxHeight), kMaxHeight));
    else if (description.lfHeight > 0)
        SetLineHeight(font, std::min(description.lfHeight, kMaxHeight));
    const int weight = description.lfWeight == 0 ? FW_NORMAL : description.lfWeight;
    font.setWeight(static_cast<QFont::Weight>(std::clamp(weight, 1, 1000)));
    font.setItalic(description.lfItalic != 0);
    font.setUnderline(description.lfUnderline != 0);
    font.setStrikeOut(description.lfStrikeOut != 0);
    return font;
}

} // namespace

HGDIOBJ GdiObject::Make(std::unique_ptr<GdiObject> object) {
    static unsigned serial = 0;
    object->serial = ++serial;
    LiveObjects().insert(object.get());
    return reinterpret_cast<HGDIOBJ>(object.release());
}

GdiObject* GdiObject::Of(HGDIOBJ object) {
    auto* known = reinterpret_cast<GdiObject*>(object);
    return object != nullptr && LiveObjects().count(known) != 0 ? known : nullptr;
}

GdiObject* GdiObject::Of(HGDIOBJ object, Type type) {
    GdiObject* known = Of(object);
    return known != nullptr && known->type == type ? known : nullptr;
}

bool GdiObject::Free(HGDIOBJ object) {
    GdiObject* known = Of(object);
    if (known == nullptr || known->stock)
        return known != nullptr;
    LiveObjects().erase(known);
    if (known->temporary)
        known->temporary->m_hObject = nullptr;
    const std::unique_ptr<GdiObject> owner(known);
    return true;
}

QFont FontOf(HFONT font) {
    const GdiObject* object = GdiObject::Of(font, GdiObject::Type::Font);
    return object != nullptr ? object->font : QApplication::font();
}

unsigned FontSerial(HFONT font) {
    const GdiObject* object = GdiObject::Of(font, GdiObject::Type::Font);
    return object != nullptr ? object->serial : 0;
}

bool BrushColor(HBRUSH brush, COLORREF& color) {
    const auto number = reinterpret_cast<std::uintptr_t>(brush);
    if (number > 0 && number <= COLOR_INFOBK + 1) {
        color = GetSysColor(static_cast<int>(number) - 1);
        return true;
    }
    const GdiObject* object = GdiObject::Of(brush, GdiObject::Type::Brush);
    if (object == nullptr || object->empty)
        return false;
    color = object->color;
    return true;
}

LOGFONT DescribeFont(const QFont& font) {
    LOGFONT description{};
    const QFontInfo info(font);
    description.lfHeight = -info.pixelSize();
    description.lfWeight = font.weight();
    description.lfItalic = font.italic() ? 1 : 0;
    description.lfUnderline = font.underline() ? 1 : 0;
    description.lfStrikeOut = font.strikeOut() ? 1 : 0;
    description.lfCharSet = DEFAULT_CHARSET;
    const std::string face = FromQString(font.family());
    std::strncpy(description.lfFaceName, face.c_str(), LF_FACESIZE - 1);
    return description;
}

} // namespace vnbytstr::detail

using vnbytstr::detail::GdiObject;

namespace {

constexpr qint64 kMaxPictureBytes = 256LL << 20;

HGDIOBJ MakeBrush(COLORREF color) {
    auto object = std::make_unique<GdiObject>();
    object->type = GdiObject::Type::Brush;
    object->color = color;
    return GdiObject::Make(std::move(object));
}

} // namespace

BOOL CGdiObject::Attach(HGDIOBJ object) {
    if (m_hObject != nullptr || GdiObject::Of(object) == nullptr)
        return FALSE;
    m_hObject = object;
    return TRUE;
}

HGDIOBJ CGdiObject::Detach() {
    HGDIOBJ object = m_hObject;
    m_hObject = nullptr;
    return object;
}

BOOL CGdiObject::DeleteObject() { return GdiObject::Free(Detach()); }

int CGdiObject::GetObject(int size, void* buffer) const {
    return ::GetObject(m_hObject, size, buffer);
}

BOOL CGdiObject::CreateStockObject(int index) {
    return m_hObject == nullptr && Attach(GetStockObject(index));
}

BOOL CPen::CreatePen(int style, int width, COLORREF color) {
    if (m_hObject != nullptr)
        return FALSE;
    auto object = std::make_unique<GdiObject>();
    object->type = GdiObject::Type::Pen;
    object->penStyle = style;
    object->penWidth = std::max(width, 1);
    object->empty = style == PS_NULL;
    object->color = color;
    return Attach(GdiObject::Make(std::move(object)));
}

BOOL CBrush::CreateSolidBrush(COLORREF color) {
    return m_hObject == nullptr && Attach(MakeBrush(color));
}

BOOL CFont::CreateFontIndirect(const LOGFONT* description) {
    return m_hObject == nullptr && Attach(::CreateFontIndirect(description));
}

BOOL CFont::CreatePointFont(int tenths, LPCTSTR face) {
    LOGFONT description{};
    constexpr int kTenthsPerInch = 720;
    constexpr int kPixelsPerInch = 96;
    description.lfHeight = -std::max(MulDiv(tenths, kPixelsPerInch, kTenthsPerInch), 1);
    description.lfCharSet = DEFAULT_CHARSET;
    std::strncpy(description.lfFaceName, face != nullptr ? face : "", LF_FACESIZE - 1);
    return CreateFontIndirect(&description);
}

CFont* CFont::FromHandle(HFONT font) {
    GdiObject* object = GdiObject::Of(font, GdiObject::Type::Font);
    if (object == nullptr)
        return nullptr;
    if (!object->temporary) {
        // Its destructor must not free the object that owns it: GdiObject::Free empties it first.
        object->temporary = std::make_unique<CFont>();
        object->temporary->m_hObject = font;
    }
    return static_cast<CFont*>(object->temporary.get());
}

BOOL CBitmap::LoadFromMemory(std::span<const std::byte> file) {
    if (m_hObject != nullptr || file.empty() || file.size() > static_cast<std::size_t>(INT_MAX))
        return FALSE;
    AfxInitWindows();
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(file.data()),
                                               static_cast<qsizetype>(file.size()));
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    QImageReader reader(&device);
    const QSize size = reader.size();
    constexpr qint64 kBytesPerPixel = 4;
    if (size.isValid() &&
        static_cast<qint64>(size.width()) * size.height() > kMaxPictureBytes / kBytesPerPixel)
        return FALSE;
    const QImage image = reader.read();
    if (image.isNull() || image.sizeInBytes() > kMaxPictureBytes)
        return FALSE;
    auto object = std::make_unique<GdiObject>();
    object->type = GdiObject::Type::Bitmap;
    object->pixmap = QPixmap::fromImage(image);
    return Attach(GdiObject::Make(std::move(object)));
}

BOOL DeleteObject(HGDIOBJ object) { return GdiObject::Free(object); }

HGDIOBJ GetStockObject(int index) {
    static HGDIOBJ objects[vnbytstr::detail::kMaxStock + 1];
    if (index < 0 || index > vnbytstr::detail::kMaxStock)
        return nullptr;
    if (objects[index] == nullptr) {
        AfxInitWindows();
        if (auto object = vnbytstr::detail::MakeStock(index))
            objects[index] = GdiObject::Make(std::move(object));
    }
    return objects[index];
}

HBRUSH GetSysColorBrush(int index) {
    static HBRUSH brushes[COLOR_INFOBK + 1];
    if (index < 0 || index > COLOR_INFOBK)
        return nullptr;
    if (brushes[index] == nullptr) {
        brushes[index] = MakeBrush(0);
        GdiObject::Of(brushes[index])->stock = true;
    }
    GdiObject::Of(brushes[index])->color = GetSysColor(index);
    return brushes[index];
}

HBRUSH CreateSolidBrush(COLORREF color) { return MakeBrush(color); }

HFONT CreateFontIndirect(const LOGFONT* description) {
    if (description == nullptr)
        return nullptr;
    AfxInitWindows();
    auto object = std::make_unique<GdiObject>();
    object->type = GdiObject::Type::Font;
    object->font = vnbytstr::detail::MakeFont(*description);
    object->logFont = *description;
    return GdiObject::Make(std::move(object));
}

int GetObject(HGDIOBJ handle, int size, void* buffer) {
    const GdiObject* object = GdiObject::Of(handle, GdiObject::Type::Font);
    if (object == nullptr || buffer == nullptr || size <= 0)
        return 0;
    const int bytes = std::min(size, static_cast<int>(sizeof object->logFont));
    std::memcpy(buffer, &object->logFont, static_cast<std::size_t>(bytes));
    return bytes;
}

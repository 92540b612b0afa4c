#include "vnbytstr/window/DC.h"

#include "src/window/core/WindowWidget.h"
#include "src/window/draw/DeviceContext.h"
#include "src/window/draw/GdiInternal.h"
#include "src/window/draw/Overlay.h"
#include "vnbytstr/window/Application.h"
#include "vnbytstr/window/WindowFunctions.h"
#include "vnbytstr/window/Wnd.h"

#include <QFontMetricsF>

#include <algorithm>

IMPLEMENT_DYNAMIC(CDC, CObject)
IMPLEMENT_DYNAMIC(CPaintDC, CDC)
IMPLEMENT_DYNAMIC(CClientDC, CDC)
IMPLEMENT_DYNAMIC(CWindowDC, CDC)

namespace vnbytstr::detail {

DeviceContext::DeviceContext(Kind ofKind, Window* window, QPainter* painter, bool wholeWindow)
    : kind(ofKind), m_painter(painter) {
    if (window == nullptr)
        return;
    m_window = window->Handle();
    m_area = wholeWindow ? QRect(QPoint(), window->Widget()->size()) : window->ClientArea();
    m_origin = m_area.topLeft();
    if (window->IsMirrored())
        m_mirrorEdge = m_area.x() + m_area.width();
    m_rtlReading = (window->ExStyle() & WS_EX_RTLREADING) != 0;
    state.font = window->Font();
    state.textColor = GetSysColor(COLOR_WINDOWTEXT);
    state.bkColor = GetSysColor(COLOR_WINDOW);
}

DeviceContext::~DeviceContext() {
    if (object)
        object->m_hDC = nullptr;
}

QRect DeviceContext::ToDevice(const RECT& rect) const {
    const int width = rect.right - rect.left;
    const int x = IsMirrored() ? m_mirrorEdge - rect.right : m_origin.x() + rect.left;
    return {x, m_origin.y() + rect.top, width, rect.bottom - rect.top};
}

QPoint DeviceContext::ToDevice(POINT point) const {
    return {IsMirrored() ? m_mirrorEdge - 1 - point.x : m_origin.x() + point.x,
            m_origin.y() + point.y};
}

CRect DeviceContext::FromDevice(const QRect& rect) const {
    const int left =
        IsMirrored() ? m_mirrorEdge - (rect.x() + rect.width()) : rect.x() - m_origin.x();
    const int top = rect.y() - m_origin.y();
    return {left, top, left + rect.width(), top + rect.height()};
}

void DeviceContext::PaintLayer(const QRect& bounds, void (*call)(void*, QPainter&), void* context) {
    Window* window = GetWindow();
    if (window == nullptr)
        return;
    window->GetOverlay().Paint(bounds, [&](QPainter& painter) {
        painter.setClipRect(m_area);
        call(context, painter);
    });
}

void DeviceContext::Invert(const QRegion& region) {
    if (kind == Kind::Layer) {
        if (Window* window = GetWindow())
            window->GetOverlay().Invert(region & m_area);
        return;
    }
    Paint(region.boundingRect(), [&](QPainter& painter) {
        painter.setCompositionMode(QPainter::CompositionMode_Difference);
        for (const QRect& rect : region)
            painter.fillRect(rect, Qt::white);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    });
}

bool DeviceContext::HasPen() const {
    const GdiObject* pen = GdiObject::Of(state.pen, GdiObject::Type::Pen);
    return pen == nullptr || !pen->empty;
}

QColor DeviceContext::PenColor() const {
    const GdiObject* pen = GdiObject::Of(state.pen, GdiObject::Type::Pen);
    return pen != nullptr ? ToQColor(pen->color) : QColor(Qt::black);
}

} // namespace vnbytstr::detail

using vnbytstr::detail::BrushColor;
using vnbytstr::detail::DeviceContext;
using vnbytstr::detail::GdiObject;
using vnbytstr::detail::ToQColor;
using vnbytstr::detail::Window;

namespace {

DeviceContext* Context(HDC dc) { return DeviceContext::Of(dc); }

int PenWidth(const DeviceContext& context) {
    const GdiObject* pen = GdiObject::Of(context.state.pen, GdiObject::Type::Pen);
    return pen != nullptr ? pen->penWidth : 1;
}

/// The dotted frame of a focus rectangle, as every second pixel of its edges.
QRegion FocusFrame(const QRect& rect) {
    QRegion frame;
    if (rect.isEmpty())
        return frame;
    // No screen is larger: limit the number of dots.
    constexpr int kMaxEdge = 16384;
    const QRect shown = rect & QRect(-kMaxEdge, -kMaxEdge, 2 * kMaxEdge, 2 * kMaxEdge);
    std::vector<QRect> dots;
    const auto dot = [&](int x, int y) {
        if (((x + y) & 1) == 0 && shown.contains(x, y))
            dots.emplace_back(x, y, 1, 1);
    };
    for (int x = shown.left(); x <= shown.right(); ++x)
        dot(x, rect.top());
    for (int y = rect.top() + 1; y < rect.bottom(); ++y) {
        dot(rect.left(), y);
        if (rect.right() != rect.left())
            dot(rect.right(), y);
    }
    if (rect.bottom() != rect.top())
        for (int x = shown.left(); x <= shown.right(); ++x)
            dot(x, rect.bottom());
    frame.setRects(dots.data(), static_cast<int>(dots.size()));
    return frame;
}

/// A line of one pixel width without smoothing: horizontal and vertical ones as rectangles, which
/// stay sharp at every scale.
void DrawLine(QPainter& painter, QPoint from, QPoint to, const QColor& color, int width) {
    if (from == to)
        return;
    if (from.x() == to.x()) {
        const int step = to.y() > from.y() ? 0 : 1; // the end does not belong to the line
        painter.fillRect(QRect(from.x() - width / 2, std::min(from.y(), to.y()) + step, width,
                               std::abs(to.y() - from.y())),
                         color);
    } else if (from.y() == to.y()) {
        const int step = to.x() > from.x() ? 0 : 1;
        painter.fillRect(QRect(std::min(from.x(), to.x()) + step, from.y() - width / 2,
                               std::abs(to.x() - from.x()), width),
                         color);
    } else {
        painter.setPen(QPen(color, width));
        painter.drawLine(from, to);
    }
}

void DrawFrame(QPainter& painter, const QRect& rect, const QColor& leftTop,
               const QColor& rightBottom) {
    if (rect.isEmpty())
        return;
    painter.fillRect(rect.x(), rect.y(), rect.width() - 1, 1, leftTop);
    painter.fillRect(rect.x(), rect.y(), 1, rect.height() - 1, leftTop);
    painter.fillRect(rect.x() + rect.width() - 1, rect.y(), 1, rect.height(), rightBottom);
    painter.fillRect(rect.x(), rect.y() + rect.height() - 1, rect.width(), 1, rightBottom);
}

} // namespace

CDC::~CDC() {
    if (m_owned)
        DeleteDC();
}

BOOL CDC::Attach(HDC dc) {
    if (dc == nullptr || m_hDC != nullptr)
        return FALSE;
    m_hDC = dc;
    return TRUE;
}

HDC CDC::Detach() {
    HDC dc = m_hDC;
    m_hDC = nullptr;
    m_owned = FALSE;
    return dc;
}

CDC* CDC::FromHandle(HDC dc) {
    if (dc == nullptr)
        return nullptr;
    DeviceContext* context = Context(dc);
    if (!context->object) {
        context->object = std::make_unique<CDC>();
        context->object->m_hDC = dc;
    }
    return context->object.get();
}

BOOL CDC::DeleteDC() {
    if (m_hDC == nullptr || !m_owned)
        return FALSE;
    const std::unique_ptr<DeviceContext> context(Context(Detach()));
    return TRUE;
}

int CDC::SaveDC() {
    if (m_hDC == nullptr)
        return 0;
    Context(m_hDC)->saved.push_back(Context(m_hDC)->state);
    return static_cast<int>(Context(m_hDC)->saved.size());
}

BOOL CDC::RestoreDC(int number) {
    if (m_hDC == nullptr)
        return FALSE;
    auto& saved = Context(m_hDC)->saved;
    const int count = static_cast<int>(saved.size());
    const int index = number == -1 ? count - 1 : number - 1;
    if (index < 0 || index >= count)
        return FALSE;
    Context(m_hDC)->state = saved[static_cast<std::size_t>(index)];
    saved.resize(static_cast<std::size_t>(index));
    return TRUE;
}

CWnd* CDC::GetWindow() const {
    Window* window = m_hDC != nullptr ? Context(m_hDC)->GetWindow() : nullptr;
    return window != nullptr ? window->ObjectOrTemporary() : nullptr;
}

HGDIOBJ CDC::SelectObject(HGDIOBJ object) {
    const GdiObject* known = GdiObject::Of(object);
    if (m_hDC == nullptr || known == nullptr || known->type == GdiObject::Type::Bitmap)
        return nullptr;
    auto& state = Context(m_hDC)->state;
    HGDIOBJ& place = known->type == GdiObject::Type::Pen     ? state.pen
                     : known->type == GdiObject::Type::Brush ? state.brush
                                                             : state.font;
    return std::exchange(place, object);
}

namespace {

/// The objects that FromHandle makes of pens and brushes.
template <class T>
T* TemporaryOf(HGDIOBJ handle) {
    GdiObject* object = GdiObject::Of(handle);
    if (object == nullptr)
        return nullptr;
    if (!object->temporary) {
        object->temporary = std::make_unique<T>();
        object->temporary->m_hObject = handle;
    }
    return static_cast<T*>(object->temporary.get());
}

} // namespace

CPen* CDC::SelectObject(CPen* pen) {
    HGDIOBJ before = m_hDC != nullptr ? Context(m_hDC)->state.pen : nullptr;
    if (pen == nullptr || GdiObject::Of(*pen, GdiObject::Type::Pen) == nullptr)
        return nullptr;
    SelectObject(pen->m_hObject);
    return TemporaryOf<CPen>(before != nullptr ? before : GetStockObject(BLACK_PEN));
}

CBrush* CDC::SelectObject(CBrush* brush) {
    HGDIOBJ before = m_hDC != nullptr ? Context(m_hDC)->state.brush : nullptr;
    if (brush == nullptr || GdiObject::Of(*brush, GdiObject::Type::Brush) == nullptr)
        return nullptr;
    SelectObject(brush->m_hObject);
    return TemporaryOf<CBrush>(before != nullptr ? before : GetStockObject(WHITE_BRUSH));
}

CFont* CDC::SelectObject(CFont* font) {
    HGDIOBJ before = m_hDC != nullptr ? Context(m_hDC)->state.font : nullptr;
    if (font == nullptr || GdiObject::Of(*font, GdiObject::Type::Font) == nullptr)
        return nullptr;
    SelectObject(font->m_hObject);
    return CFont::FromHandle(GdiObject::Of(before) != nullptr ? before
                                                              : GetStockObject(SYSTEM_FONT));
}

COLORREF CDC::SetTextColor(COLORREF color) {
    return m_hDC != nullptr ? std::exchange(Context(m_hDC)->state.textColor, color) : CLR_INVALID;
}
int CDC::SetBkMode(int mode) {
    if (m_hDC == nullptr || (mode != TRANSPARENT && mode != OPAQUE))
        return 0;
    return std::exchange(Context(m_hDC)->state.bkMode, mode);
}
CPoint CDC::MoveTo(int x, int y) {
    return m_hDC != nullptr ? std::exchange(Context(m_hDC)->state.current, CPoint(x, y)) : CPoint();
}

BOOL CDC::LineTo(int x, int y) {
    if (m_hDC == nullptr)
        return FALSE;
    DeviceContext& context = *Context(m_hDC);
    const QPoint from = context.ToDevice(context.state.current);
    const QPoint to = context.ToDevice(CPoint(x, y));
    context.state.current = CPoint(x, y);
    if (!context.HasPen())
        return TRUE;
    const QColor color = context.PenColor();
    const int width = PenWidth(context);
    context.Paint(QRect(from, to).normalized().adjusted(-width, -width, width, width),
                  [&](QPainter& painter) { DrawLine(painter, from, to, color, width); });
    return TRUE;
}

void CDC::FillRect(LPCRECT rect, CBrush* brush) {
    COLORREF color = 0;
    if (brush != nullptr && BrushColor(*brush, color))
        FillSolidRect(rect, color);
}

void CDC::FillSolidRect(LPCRECT rect, COLORREF color) {
    if (m_hDC == nullptr || rect == nullptr)
        return;
    DeviceContext& context = *Context(m_hDC);
    const QRect area = context.ToDevice(*rect);
    if (!area.isEmpty())
        context.Paint(area, [&](QPainter& painter) { painter.fillRect(area, ToQColor(color)); });
}

void CDC::FrameRect(LPCRECT rect, CBrush* brush) {
    COLORREF color = 0;
    if (brush != nullptr && BrushColor(*brush, color))
        Draw3dRect(rect, color, color);
}

void CDC::InvertRect(LPCRECT rect) {
    if (m_hDC == nullptr || rect == nullptr)
        return;
    const QRect area = Context(m_hDC)->ToDevice(*rect);
    if (!area.isEmpty())
        Context(m_hDC)->Invert(area);
}

void CDC::DrawFocusRect(LPCRECT rect) {
    if (m_hDC != nullptr && rect != nullptr)
        Context(m_hDC)->Invert(FocusFrame(Context(m_hDC)->ToDevice(*rect)));
}

void CDC::Draw3dRect(LPCRECT rect, COLORREF leftTop, COLORREF rightBottom) {
    if (m_hDC == nullptr || rect == nullptr)
        return;
    DeviceContext& context = *Context(m_hDC);
    const QRect area = context.ToDevice(*rect);
    context.Paint(area, [&](QPainter& painter) {
        DrawFrame(painter, area, ToQColor(leftTop), ToQColor(rightBottom));
    });
}

int CDC::GetClipBox(LPRECT rect) const {
    if (m_hDC == nullptr || rect == nullptr)
        return 0;
    *rect = Context(m_hDC)->FromDevice(Context(m_hDC)->Area());
    return CRect(*rect).IsRectEmpty() ? 1 : 2;
}

void CDC::IntersectClipRect(int left, int top, int right, int bottom) {
    if (m_hDC == nullptr)
        return;
    auto& clip = Context(m_hDC)->state.clip;
    const CRect rect(left, top, right, bottom);
    const QRect device = rect.IsRectEmpty() ? QRect() : Context(m_hDC)->ToDevice(rect);
    clip = clip ? clip->intersected(device) : device;
}

CPaintDC::CPaintDC(CWnd* window) : m_ps{} {
    Window* known = Window::Of(window);
    if (known == nullptr)
        return;
    bool erase = false;
    m_hDC = vnbytstr::detail::BeginWindowPaint(*known, erase, m_ps.rcPaint);
    m_ps.hdc = m_hDC;
    m_ps.fErase = erase;
}

CPaintDC::~CPaintDC() {
    if (HDC dc = Detach())
        vnbytstr::detail::EndWindowPaint(dc);
}

CClientDC::CClientDC(CWnd* window) {
    AfxInitWindows();
    Window* known = Window::Of(window);
    const auto kind = known != nullptr ? DeviceContext::Kind::Layer : DeviceContext::Kind::Measure;
    m_hDC = (new DeviceContext(kind, known, nullptr))->Handle();
    m_owned = TRUE;
}

CWindowDC::CWindowDC(CWnd* window) {
    AfxInitWindows();
    Window* known = Window::Of(window);
    const auto kind = known != nullptr ? DeviceContext::Kind::Layer : DeviceContext::Kind::Measure;
    m_hDC = (new DeviceContext(kind, known, nullptr, true))->Handle();
    m_owned = TRUE;
}

// The device context an HDC points to.
#pragma once

#include "src/window/core/WindowInternal.h"
#include "vnbytstr/window/DC.h"

#include <QPainter>
#include <QRegion>

#include <memory>
#include <optional>
#include <vector>

namespace vnbytstr::detail {

class DeviceContext {
public:
    enum class Kind {
        Paint,  ///< on the window, inside its paint event
        Layer,  ///< on the layer over the window
        Measure ///< draws nothing
    };

    /// Everything SaveDC keeps.
    struct State {
        HPEN pen = nullptr;
        HBRUSH brush = nullptr;
        HFONT font = nullptr;
        COLORREF textColor = 0;
        COLORREF bkColor = 0xFFFFFF;
        int bkMode = OPAQUE;
        CPoint current;
        std::optional<QRect> clip; ///< in device coordinates; none: the whole area
    };

    DeviceContext(Kind kind, Window* window, QPainter* painter, bool wholeWindow = false);
    ~DeviceContext();
    DeviceContext(const DeviceContext&) = delete;
    DeviceContext& operator=(const DeviceContext&) = delete;

    static DeviceContext* Of(HDC dc) { return reinterpret_cast<DeviceContext*>(dc); }
    HDC Handle() { return reinterpret_cast<HDC>(this); }

    Window* GetWindow() const { return Window::Of(m_window); }
    QRect ToDevice(const RECT& rect) const;
    QPoint ToDevice(POINT point) const;
    CRect FromDevice(const QRect& rect) const;
    bool IsMirrored() const { return m_mirrorEdge >= 0; }
    bool IsRtlReading() const { return m_rtlReading; }

    /// Calls `draw(QPainter&)` with the clipping set, unless there is nowhere to draw.
    template <class Draw>
    void Paint(const QRect& bounds, Draw&& draw);
    void Invert(const QRegion& region);
    /// What may be drawn to, in device coordinates.
    const QRect& Area() const { return m_area; }

    QColor PenColor() const;
    bool HasPen() const;

    Kind kind;
    State state;
    std::vector<State> saved;
    std::unique_ptr<CDC> object; ///< what CDC::FromHandle gives out

private:
    void PaintLayer(const QRect& bounds, void (*call)(void*, QPainter&), void* context);

    HWND m_window = nullptr;
    QPainter* m_painter;
    QPoint m_origin;
    int m_mirrorEdge = -1; ///< the right edge of the area in device coordinates; -1: not mirrored
    QRect m_area;
    bool m_rtlReading = false;
};

template <class Draw>
void DeviceContext::Paint(const QRect& bounds, Draw&& draw) {
    if (kind == Kind::Paint && m_painter != nullptr) {
        if (!state.clip) {
            draw(*m_painter);
            return;
        }
        m_painter->save();
        m_painter->setClipRect(*state.clip, Qt::IntersectClip);
        draw(*m_painter);
        m_painter->restore();
    } else if (kind == Kind::Layer) {
        auto call = [](void* context, QPainter& painter) {
            (*static_cast<std::remove_reference_t<Draw>*>(context))(painter);
        };
        PaintLayer(bounds, call, &draw);
    }
}

/// Begins painting a window and returns what CPaintDC draws with; one at a time per window.
HDC BeginWindowPaint(Window& window, bool& erase, RECT& paint);
void EndWindowPaint(HDC dc);

} // namespace vnbytstr::detail

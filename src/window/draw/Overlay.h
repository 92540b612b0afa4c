// The layer over a window that takes what is drawn outside WM_PAINT.
#pragma once

#include <QImage>
#include <QPainter>
#include <QRegion>
#include <QWidget>

namespace vnbytstr::detail {

/// A transparent widget over all children of a window: pixels that were filled or written, and a
/// set of places that are shown inverted. It takes no events and no focus.
class Overlay : public QWidget {
public:
    explicit Overlay(QWidget* window);

    /// Draws with `draw` (a function of QPainter&) in the window's widget coordinates.
    template <class Draw>
    void Paint(const QRect& bounds, Draw&& draw) {
        QPainter painter(&Image());
        draw(painter);
        painter.end();
        update(bounds);
    }
    /// Inverts, or inverts back.
    void Invert(const QRegion& region);
    /// Forgets what was filled and written there.
    void Forget(const QRegion& region);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QImage& Image();

    QImage m_image;
    QRegion m_inverted;
};

} // namespace vnbytstr::detail

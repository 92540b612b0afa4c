#include "src/window/draw/Overlay.h"

#include <QChildEvent>
#include <QPaintEvent>

namespace vnbytstr::detail {

Overlay::Overlay(QWidget* window) : QWidget(window) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
    setGeometry(window->rect());
    window->installEventFilter(this);
    show();
    raise();
}

void Overlay::Invert(const QRegion& region) {
    m_inverted = m_inverted.xored(region);
    update(region);
}

void Overlay::Forget(const QRegion& region) {
    if (m_image.isNull())
        return;
    QPainter painter(&m_image);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    for (const QRect& rect : region)
        painter.fillRect(rect, Qt::transparent);
    painter.end();
    update(region);
}

QImage& Overlay::Image() {
    const QSize wanted = size() * devicePixelRatioF();
    if (m_image.size() != wanted) {
        QImage image(wanted, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(devicePixelRatioF());
        image.fill(Qt::transparent);
        if (!m_image.isNull()) {
            QPainter painter(&image);
            painter.drawImage(0, 0, m_image);
        }
        m_image = std::move(image);
    }
    return m_image;
}

void Overlay::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    if (!m_image.isNull())
        painter.drawImage(0, 0, m_image);
    // The difference from white inverts what the widgets below have drawn.
    painter.setCompositionMode(QPainter::CompositionMode_Difference);
    for (const QRect& rect : m_inverted & event->region())
        painter.fillRect(rect, Qt::white);
}

bool Overlay::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    else if (event->type() == QEvent::ChildPolished || event->type() == QEvent::ChildAdded)
        raise();
    return false;
}

} // namespace vnbytstr::detail

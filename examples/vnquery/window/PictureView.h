// A picture that is scaled down to the room there is.
#pragma once

#include "vnquery/result/Value.h"

#include <QImage>
#include <QWidget>

namespace vnquery {

/// Shows pictures in the middle, never larger than they are.
class PictureView : public QWidget {
public:
    using QWidget::QWidget;
    void SetImage(const QImage& image);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage m_image;
};

constexpr qint64 kMaxPixels = 64 << 20;

/// A value as a picture, by Qt's plug-ins; a null image when it is not one. `size` is what the
/// picture says of itself. More than kMaxPixels, and SVG of more than 1 MB, are refused before they
/// are read.
QImage ReadPicture(const Value& value, QSize& size);

} // namespace vnquery

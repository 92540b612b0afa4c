#include "vnquery/window/PictureView.h"

#include "vnquery/result/PictureKind.h"
#include "vnquery/tasks/Failure.h"

#include <QIODevice>
#include <QImageReader>
#include <QPainter>

#include <algorithm>

namespace vnquery {

namespace {

constexpr int kMaxMegabytes = 256; ///< that decoding may take
constexpr DWORD kMaxSvg = 1 << 20;

/// Reads a value where the picture's plug-in wants it. Exceptions end at its functions, since the
/// libraries that call them are written in C.
class ValueDevice : public QIODevice {
public:
    explicit ValueDevice(const Value& value) : m_value(value) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    qint64 size() const override { return m_value.GetLength(); }
    bool seek(qint64 position) override {
        m_at = static_cast<DWORD>(std::clamp<qint64>(position, 0, size()));
        return QIODevice::seek(position);
    }

protected:
    qint64 readData(char* to, qint64 count) override try {
        const std::string bytes =
            m_value.Read(m_at, static_cast<DWORD>(std::min<qint64>(count, kPieceSize)));
        std::ranges::copy(bytes, to);
        m_at += static_cast<DWORD>(bytes.size());
        return static_cast<qint64>(bytes.size());
    } catch (CException* error) {
        setErrorString(QString::fromStdString(TakeMessage(error)));
        return -1;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    const Value& m_value;
    DWORD m_at = 0;
};

} // namespace

void PictureView::SetImage(const QImage& image) {
    m_image = image;
    update();
}

void PictureView::paintEvent(QPaintEvent*) {
    if (m_image.isNull())
        return;
    QSize size = m_image.size();
    if (size.width() > width() || size.height() > height())
        size.scale(this->size(), Qt::KeepAspectRatio);
    QRect place(QPoint(), size);
    place.moveCenter(rect().center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, m_image);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(place.adjusted(0, 0, -1, -1));
}

QImage ReadPicture(const Value& value, QSize& size) {
    const PictureKind kind = RecognisePicture(value);
    size = QSize();
    if (kind == PictureKind::None || (kind == PictureKind::Svg && value.GetLength() > kMaxSvg))
        return {};
    ValueDevice device(value);
    QImageReader::setAllocationLimit(kMaxMegabytes);
    QImageReader reader(&device, QByteArray(PictureName(kind)).toLower());
    reader.setAutoTransform(true);
    size = reader.size();
    const qint64 pixels = qint64{size.width()} * size.height();
    return size.isEmpty() || pixels > kMaxPixels ? QImage() : reader.read();
}

} // namespace vnquery

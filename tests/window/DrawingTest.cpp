// Drawing: real pixels of real windows.
#include "tests/window/WindowFixture.h"

#include <QImage>
#include <QPixmap>

#include <cstdlib>
#include <functional>

namespace {

class PaintingWnd : public CWnd {
public:
    std::function<void(CDC&)> paint;

protected:
    void OnPaint() {
        CPaintDC dc(this);
        if (paint)
            paint(dc);
    }
    DECLARE_MESSAGE_MAP()
};
BEGIN_MESSAGE_MAP(PaintingWnd, CWnd)
ON_WM_PAINT()
END_MESSAGE_MAP()

constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);

class Drawing : public WindowTest<PaintingWnd> {
protected:
    void Create(DWORD exStyle = 0) {
        ASSERT_TRUE(m_window.CreateEx(exStyle, nullptr, "", WS_CHILD | WS_VISIBLE,
                                      CRect(0, 0, 100, 40), &m_frame, 1));
    }
    QImage Picture(const std::function<void(CDC&)>& paint) {
        m_window.paint = paint;
        return m_window.GetWidget()->grab().toImage();
    }
    static int CountInk(const QImage& image, const QRect& area, QRgb paper) {
        int ink = 0;
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                ink += image.pixel(x, y) != paper ? 1 : 0;
        return ink;
    }
    PaintingWnd m_window;
};

constexpr QRgb kRedPixel = qRgb(255, 0, 0);
constexpr QRgb kWhite = qRgb(255, 255, 255);

void FillWhite(CDC& dc) { dc.FillSolidRect(CRect(0, 0, 100, 40), RGB(255, 255, 255)); }

} // namespace

TEST_F(Drawing, RectanglesAndLinesExcludeTheirEnds) {
    Create();
    const QImage image = Picture([](CDC& dc) {
        FillWhite(dc);
        CBrush brush(kRed);
        dc.FillRect(CRect(10, 5, 20, 15), &brush);
        CPen pen(PS_SOLID, 1, kBlue);
        CPen* before = dc.SelectObject(&pen);
        dc.MoveTo(30, 10);
        dc.LineTo(40, 10);
        dc.MoveTo(50, 20);
        dc.LineTo(50, 10);
        dc.SelectObject(before);
    });
    EXPECT_EQ(image.pixel(10, 5), kRedPixel);
    EXPECT_EQ(image.pixel(19, 14), kRedPixel);
    EXPECT_EQ(CountInk(image, QRect(0, 0, 29, 40), kWhite), 100);
    EXPECT_EQ(image.pixel(30, 10), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(40, 10), kWhite);
    EXPECT_EQ(image.pixel(50, 20), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(50, 10), kWhite);
    EXPECT_EQ(CountInk(image, QRect(30, 0, 70, 40), kWhite), 20);
}

TEST_F(Drawing, MirroredDrawingStartsAtTheRight) {
    Create(WS_EX_LAYOUTRTL);
    const QImage image = Picture([](CDC& dc) {
        FillWhite(dc);
        dc.FillSolidRect(CRect(0, 0, 10, 10), kRed);
        dc.MoveTo(20, 20);
        dc.LineTo(30, 20);
        dc.SetBkMode(TRANSPARENT);
        CRect text(0, 22, 100, 40);
        dc.DrawText("text", 4, text, DT_SINGLELINE | DT_NOPREFIX);
    });
    EXPECT_EQ(CountInk(image, QRect(90, 0, 10, 10), kWhite), 100);
    EXPECT_EQ(image.pixel(79, 20), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel(70, 20), qRgb(0, 0, 0));
    EXPECT_EQ(image.pixel(69, 20), kWhite);
    EXPECT_EQ(CountInk(image, QRect(0, 22, 50, 18), kWhite), 0);
    EXPECT_GT(CountInk(image, QRect(50, 22, 50, 18), kWhite), 10);
}

TEST_F(Drawing, TextKeepsInsideItsRectangle) {
    Create();
    const char* longText = "a text that is much too long for its place";
    const auto draw = [&](UINT flags, const char* text) {
        return Picture([=](CDC& dc) {
            FillWhite(dc);
            dc.SetBkMode(TRANSPARENT);
            CRect place(20, 4, 60, 30);
            dc.DrawText(text, -1, place, flags | DT_SINGLELINE | DT_NOPREFIX);
        });
    };
    const QImage ellipsis = draw(DT_END_ELLIPSIS, longText);
    EXPECT_EQ(CountInk(ellipsis, QRect(0, 0, 20, 40), kWhite), 0);
    EXPECT_EQ(CountInk(ellipsis, QRect(60, 0, 40, 40), kWhite), 0);
    EXPECT_GT(CountInk(ellipsis, QRect(20, 4, 40, 26), kWhite), 20);
    EXPECT_NE(ellipsis, draw(0, longText));
    // Right-aligned text ends at the right edge, centred text leaves room on both sides.
    const QImage right = draw(DT_RIGHT, "ii");
    EXPECT_EQ(CountInk(right, QRect(20, 0, 20, 40), kWhite), 0);
    EXPECT_GT(CountInk(right, QRect(40, 0, 20, 40), kWhite), 0);
    const QImage centre = draw(DT_CENTER | DT_VCENTER, "ii");
    EXPECT_EQ(CountInk(centre, QRect(20, 0, 10, 40), kWhite), 0);
    EXPECT_GT(CountInk(centre, QRect(30, 0, 20, 40), kWhite), 0);
}

TEST_F(Drawing, MeasuresWhatItDraws) {
    Create();
    CClientDC dc(&m_window);
    TEXTMETRIC metrics{};
    ASSERT_TRUE(dc.GetTextMetrics(&metrics));
    EXPECT_EQ(metrics.tmHeight, metrics.tmAscent + metrics.tmDescent);
    const CSize one = dc.GetTextExtent("W", 1);
    const CSize two = dc.GetTextExtent("WW", 2);
    EXPECT_EQ(one.cy, metrics.tmHeight);
    EXPECT_GE(two.cx, 2 * one.cx - 1);
    CRect needed(5, 5, 6, 6);
    const int height = dc.DrawText("one\ntwo", -1, needed, DT_CALCRECT | DT_NOPREFIX);
    EXPECT_EQ(height, needed.Height());
    EXPECT_GE(needed.Height(), 2 * metrics.tmHeight - 2);
    LOGFONT description{};
    description.lfHeight = -30;
    CFont font;
    ASSERT_TRUE(font.CreateFontIndirect(&description));
    CFont* before = dc.SelectObject(&font);
    EXPECT_GT(dc.GetTextExtent("W", 1).cx, one.cx);
    dc.SelectObject(before);
    EXPECT_EQ(dc.GetTextExtent("W", 1), one);
    LOGFONT back{};
    EXPECT_EQ(font.GetObject(sizeof back, &back), static_cast<int>(sizeof back));
    EXPECT_EQ(back.lfHeight, -30);
}

TEST_F(Drawing, DrawingOutsidePaintStaysUntilTheWindowPaintsAgain) {
    Create();
    m_window.paint = FillWhite;
    const QImage plain = m_frame.GetWidget()->grab().toImage();
    {
        CClientDC dc(&m_frame); // over its child, too
        dc.InvertRect(CRect(50, 0, 51, 100));
    }
    const QImage inverted = m_frame.GetWidget()->grab().toImage();
    EXPECT_EQ(inverted.pixel(50, 10), qRgb(0, 0, 0));
    EXPECT_EQ(inverted.pixel(49, 10), kWhite);
    EXPECT_NE(inverted.pixel(50, 60), plain.pixel(50, 60));
    m_frame.Invalidate();
    EXPECT_EQ(m_frame.GetWidget()->grab().toImage(), inverted);
    CClientDC(&m_frame).InvertRect(CRect(50, 0, 51, 100));
    EXPECT_EQ(m_frame.GetWidget()->grab().toImage(), plain);

    CClientDC(&m_window).FillSolidRect(CRect(0, 0, 5, 5), kRed);
    EXPECT_EQ(m_frame.GetWidget()->grab().toImage().pixel(2, 2), kRedPixel);
    m_window.Invalidate();
    EXPECT_EQ(m_frame.GetWidget()->grab().toImage(), plain);
}

TEST_F(Drawing, ObjectsOutliveTheirMistreatment) {
    Create();
    Picture([](CDC& dc) {
        CFont* none = nullptr;
        EXPECT_EQ(dc.SelectObject(none), nullptr);
        {
            LOGFONT description{};
            CFont font;
            font.CreateFontIndirect(&description);
            dc.SelectObject(&font);
        }
        EXPECT_TRUE(dc.ExtTextOut(0, 0, 0, nullptr, "drawn with the font of before", 5));
        EXPECT_FALSE(dc.RestoreDC(3));
        const int saved = dc.SaveDC();
        dc.SetTextColor(kRed);
        EXPECT_TRUE(dc.RestoreDC(saved));
        EXPECT_NE(dc.SetTextColor(kRed), kRed);
    });
    CBitmap bitmap;
    EXPECT_FALSE(bitmap.LoadFromMemory({}));
    const char noPicture[] = "no picture at all";
    EXPECT_FALSE(bitmap.LoadFromMemory(std::as_bytes(std::span(noPicture))));
    CFont stock;
    ASSERT_TRUE(stock.CreateStockObject(DEFAULT_GUI_FONT));
    EXPECT_TRUE(stock.DeleteObject());
    EXPECT_EQ(GetStockObject(99), nullptr);
    ASSERT_TRUE(stock.CreateStockObject(DEFAULT_GUI_FONT));
}

// These also run at scale factors of 1.5 and 2.5 (see CMakeLists.txt).
using Scaled = Drawing;

TEST_F(Scaled, RectanglesAreSharpAndTextIsDrawnAtTheScreensOwnPixels) {
    Create();
    const QImage image = Picture([](CDC& dc) {
        FillWhite(dc);
        dc.FillSolidRect(CRect(11, 7, 31, 17), kRed);
        dc.SetBkMode(TRANSPARENT);
        dc.ExtTextOut(40, 5, 0, nullptr, "Sharp", 5);
    });
    const double scale = m_window.GetWidget()->devicePixelRatioF();
    ASSERT_EQ(image.size(), QSize(100, 40) * scale);
    int red = 0;
    int mixed = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < static_cast<int>(38 * scale); ++x) {
            const QRgb pixel = image.pixel(x, y);
            red += pixel == kRedPixel ? 1 : 0;
            mixed += pixel != kRedPixel && pixel != kWhite ? 1 : 0;
        }
    EXPECT_EQ(mixed, 0);
    EXPECT_NEAR(red, 200 * scale * scale, 30 * scale + 1);
    if (scale == 1)
        return;
    // Text that was drawn small and blown up would look the same when it is made small and large.
    const QImage blurred =
        image.scaled(100, 40, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .scaled(image.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    double difference = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = static_cast<int>(40 * scale); x < static_cast<int>(80 * scale); ++x)
            difference += std::abs(qGray(image.pixel(x, y)) - qGray(blurred.pixel(x, y)));
    EXPECT_GT(difference / (40 * scale * 20 * scale), 5);
}

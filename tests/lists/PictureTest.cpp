// What the list looks like: kept pictures at three scales, left to right and right to left. With
// VNBYTSTR_UPDATE_PICTURES=1 the pictures are drawn anew; look at them before they are kept.
#include "tests/lists/ListFixture.h"

#include <QFontDatabase>
#include <QImage>
#include <QStyle>

#include <cstdlib>
#include <tuple>

namespace vnbytstr::test {
namespace {

constexpr const char* kFace = "DejaVu Sans";

enum class State { Plain, Pressed, Edited };

class Picture : public ListFixture,
                public ::testing::WithParamInterface<std::tuple<State, double, bool>> {
protected:
    void SetUp() override {
        if (!QFontDatabase::families().contains(kFace))
            GTEST_SKIP() << kFace << " is not installed";
        QApplication::setStyle("Fusion");
        QApplication::setPalette(QApplication::style()->standardPalette());
        const bool mirrored = std::get<2>(GetParam());
        Make(WS_VSCROLL, mirrored ? WS_EX_LAYOUTRTL : 0);
        LOGFONT description{};
        description.lfHeight = -13;
        description.lfWeight = FW_NORMAL;
        qstrncpy(description.lfFaceName, kFace, LF_FACESIZE);
        ASSERT_TRUE(font.CreateFontIndirect(&description));
        list->SetFont(&font);
        ASSERT_TRUE(list->CreateHeadingsControl(1001));
        list->GetHeadings()->ShowSortArrow();
        list->EnableSort();
        list->SetEditorType(0, kEditorText);
        list->SetColumnName(2, "A heading too long for its column");
        list->UpdateStringItem(3, 1, "a text that is cut with an ellipsis");
        list->AddStringItems("שלום", "עיר 7", "1");
        list->Sort(0);
        list->SetOnlySel(2);
        list->SetColumnWidth(1, 120);
        list->GetHeadings()->FixLastColWidth();
        Pump();
    }

    QImage Draw(double scale) {
        QWidget* widget = parent.GetWidget();
        QImage image((QSizeF(widget->size()) * scale).toSize(),
                     QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::magenta);
        widget->render(&image);
        image.setDevicePixelRatio(1);
        return image.convertToFormat(QImage::Format_RGB32);
    }

    CFont font;
};

/// Pixels that differ by more than antialiasing does, in a thousand.
double Difference(const QImage& a, const QImage& b) {
    if (a.size() != b.size())
        return 1000;
    int differing = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb left = a.pixel(x, y);
            const QRgb right = b.pixel(x, y);
            const int most = std::max({std::abs(qRed(left) - qRed(right)),
                                       std::abs(qGreen(left) - qGreen(right)),
                                       std::abs(qBlue(left) - qBlue(right))});
            differing += most > 48;
        }
    return 1000.0 * differing / (a.width() * a.height());
}

TEST_P(Picture, IsAsKept) {
    const auto [state, scale, mirrored] = GetParam();
    if (state == State::Pressed)
        Mouse(*list->GetHeadings(), QEvent::MouseButtonPress, {40, 8});
    if (state == State::Edited)
        list->EditColumn(3, 0);
    Pump();
    const char* const states[] = {"plain", "pressed", "edited"};
    const QString name = QString("%1/%2-%3%4.png")
                             .arg(VNBYTSTR_TEST_PICTURES)
                             .arg(states[static_cast<int>(state)])
                             .arg(static_cast<int>(scale * 100))
                             .arg(mirrored ? "-rtl" : "");
    const QImage drawn = Draw(scale);
    if (std::getenv("VNBYTSTR_UPDATE_PICTURES") != nullptr) {
        ASSERT_TRUE(drawn.save(name));
        return;
    }
    const QImage kept = QImage(name).convertToFormat(QImage::Format_RGB32);
    ASSERT_FALSE(kept.isNull()) << name.toStdString();
    const double difference = Difference(drawn, kept);
    if (difference > 10)
        drawn.save("drawn-" + name.section('/', -1));
    // Other builds of the font rasteriser shade letters a little otherwise.
    EXPECT_LE(difference, 10) << name.toStdString();
    if (state == State::Pressed)
        list->GetHeadings()->SendMessage(WM_CANCELMODE);
}

INSTANTIATE_TEST_SUITE_P(All, Picture,
                         ::testing::Combine(::testing::Values(State::Plain, State::Pressed,
                                                              State::Edited),
                                            ::testing::Values(1.0, 1.5, 2.5), ::testing::Bool()));

/// Places of the drawn lines and texts, pixel by pixel.
class Pixels : public ListFixture {
protected:
    QRgb At(const QImage& image, CWnd& window, int x, int y) {
        POINT screen{x, y};
        window.ClientToScreen(&screen);
        const QPoint place = parent.GetWidget()->mapFromGlobal(QPoint(screen.x, screen.y));
        return image.pixel(place) & 0xFFFFFF;
    }
    static QRgb Color(int index) {
        const COLORREF color = GetSysColor(index);
        return qRgb(GetRValue(color), GetGValue(color), GetBValue(color)) & 0xFFFFFF;
    }
};

TEST_F(Pixels, HeadingsHaveTheirLines) {
    ASSERT_TRUE(list->CreateHeadingsControl(1001));
    for (int column = 0; column < 3; ++column)
        list->SetColumnName(column, "");
    Pump();
    CListBoxExHeadings& header = *list->GetHeadings();
    const int bottom = header.GetDesiredHeight();
    const QImage image = parent.GetWidget()->grab().toImage();
    const QRgb face = Color(COLOR_3DFACE);
    EXPECT_EQ(At(image, header, 50, 0), face);                     // above the headers
    EXPECT_EQ(At(image, header, 50, 2), Color(COLOR_3DHIGHLIGHT)); // top + 1
    EXPECT_EQ(At(image, header, 50, 3), face);
    EXPECT_EQ(At(image, header, 2, bottom - 1), Color(COLOR_3DHIGHLIGHT)); // left
    EXPECT_EQ(At(image, header, 100, 5), Color(COLOR_3DSHADOW));           // right - 2
    EXPECT_EQ(At(image, header, 101, 5), Color(COLOR_3DDKSHADOW));         // right - 1
    EXPECT_EQ(At(image, header, 101, 1), Color(COLOR_3DDKSHADOW));
    EXPECT_EQ(At(image, header, 102, 5), Color(COLOR_3DHIGHLIGHT)); // the next header's left
}

TEST_F(Pixels, TextStartsAfterTheOffsetAndEndsBeforeTheSpacing) {
    list->SendMessage(LB_RESETCONTENT);
    list->AddStringItems("MMMMMMMMMMMMMMMMMMMMMMMMMMM", "", "");
    list->SetColumnSpacing(-1, 30);
    Pump();
    const auto extent = [this] {
        const QImage image = parent.GetWidget()->grab().toImage();
        int first = -1, last = -1;
        for (int x = 2; x < 300; ++x) // inside of the focus frame
            for (int y = 2; y < RowHeight() - 2; ++y)
                if (qGray(At(image, *list, x, y)) < 128) {
                    first = first < 0 ? x : first;
                    last = x;
                }
        return std::pair(first, last);
    };
    const auto [first, last] = extent();
    EXPECT_GE(first, 4);
    EXPECT_LE(first, 7);
    EXPECT_LT(last, 4 + 100 - 30);
    EXPECT_GT(last, 4 + 100 - 30 - 16);
    list->SetOffset(20);
    Pump();
    EXPECT_EQ(extent().first, first + 18);
}

} // namespace
} // namespace vnbytstr::test

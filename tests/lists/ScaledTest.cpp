// The list, its editors and the zoom in light and dark palettes, left to right and mirrored, at the
// scale of QT_SCALE_FACTOR. With VNBYTSTR_SHEETS=folder each case is also kept there as a sheet of
// pictures to look at.
#include "tests/lists/SourceFixture.h"

#include <QPainter>
#include <QStyle>
#include <QTimer>

#include <cstdlib>

namespace vnbytstr::test {
namespace {

QPalette DarkPalette() {
    QPalette dark(QColor(49, 54, 59), QColor(35, 38, 41));
    dark.setColor(QPalette::Base, QColor(27, 30, 32));
    dark.setColor(QPalette::Highlight, QColor(61, 174, 233));
    dark.setColor(QPalette::HighlightedText, QColor(252, 252, 252));
    return dark;
}

class Scaled : public ListFixture, public ::testing::WithParamInterface<std::tuple<bool, bool>> {
protected:
    void SetUp() override {
        QApplication::setStyle("Fusion");
        kept = QApplication::palette();
        QApplication::setPalette(IsDark() ? DarkPalette()
                                          : QApplication::style()->standardPalette());
        Make(WS_VSCROLL | LBS_EXTENDEDSEL, IsMirrored() ? WS_EX_LAYOUTRTL : 0);
        list->CreateHeadingsControl(1001);
        list->EnableSort();
        list->GetHeadings()->ShowSortArrow();
        list->EnableZebra();
        list->EnableFilterRow();
        list->EnableGreyNulls();
        list->SetColumnAlignment(-1, kAlignByType);
        for (int i = 0; i < 12; ++i)
            list->AddStringItems(("Row " + std::to_string(i)).c_str(), i % 3 == 0 ? "-" : "Linz",
                                 std::to_string(i * 1001).c_str());
        list->Sort(2);
        CStringArray choices;
        choices.Add("Linz");
        choices.Add("Graz");
        list->SetEditorStrings(1, choices);
        Pump();
    }
    void TearDown() override {
        ListFixture::TearDown();
        QApplication::setPalette(kept);
        const char* const folder = std::getenv("VNBYTSTR_SHEETS");
        if (folder == nullptr || sheet.empty())
            return;
        QSize size;
        for (const QImage& image : sheet)
            size = size.expandedTo(image.size());
        constexpr int kAcross = 3;
        const int count = static_cast<int>(sheet.size());
        QImage all(size.width() * kAcross, size.height() * ((count + kAcross - 1) / kAcross),
                   QImage::Format_RGB32);
        all.fill(Qt::magenta);
        QPainter painter(&all);
        for (int i = 0; i < count; ++i)
            painter.drawImage(i % kAcross * size.width(), i / kAcross * size.height(),
                              sheet[static_cast<std::size_t>(i)]);
        painter.end();
        const QString name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        all.save(QString("%1/%2-%3-%4%5.png")
                     .arg(folder, name.section('/', 0, 0))
                     .arg(qRound(100 * ratio))
                     .arg(IsDark() ? "dark" : "light", IsMirrored() ? "rtl" : "ltr"));
    }
    static bool IsDark() { return std::get<0>(GetParam()); }
    static bool IsMirrored() { return std::get<1>(GetParam()); }

    void Keep(QWidget* widget) {
        QImage image = widget->grab().toImage();
        ratio = image.devicePixelRatio();
        image.setDevicePixelRatio(1);
        sheet.push_back(image);
    }
    QImage Grab() {
        Pump();
        Keep(parent.GetWidget());
        return sheet.back();
    }
    /// The colour in the middle of a row, right of the texts of column 0.
    QColor RowColor(const QImage& image, int row) {
        POINT at{70, row * RowHeight() + RowHeight() / 2};
        list->ClientToScreen(&at);
        const QPoint in = parent.GetWidget()->mapFromGlobal(QPoint(at.x, at.y));
        return image.pixelColor((QPointF(in) * ratio).toPoint());
    }
    static QColor SysColor(int index) {
        const COLORREF color = GetSysColor(index);
        return {GetRValue(color), GetGValue(color), GetBValue(color)};
    }

    QPalette kept;
    std::vector<QImage> sheet;
    double ratio = 1;
};

TEST_P(Scaled, RowsHitsAndSelection) {
    const QImage plain = Grab();
    EXPECT_EQ(RowColor(plain, 2), SysColor(COLOR_WINDOW));
    EXPECT_NE(RowColor(plain, 1), RowColor(plain, 2));
    EXPECT_EQ(RowColor(plain, 1), RowColor(plain, 3));
    list->SetColumnFilter(2, ">1000");
    list->FindText("1");
    const QImage found = Grab();
    EXPECT_EQ(RowColor(found, list->GetFirstSel()), SysColor(COLOR_HIGHLIGHT));
    list->FindText("n");
    Grab();
    list->ClearFilter();
    list->EnableWindow(FALSE);
    Grab();
}

TEST_P(Scaled, Editors) {
    const struct {
        int type, column;
    } editors[] = {{kEditorText, 0},   {kEditorFile, 0},  {kEditorFolder, 0},
                   {kEditorNumber, 2}, {kEditorCombo, 1}, {kEditorPick, 1}};
    for (const auto& editor : editors) {
        list->SetEditorType(editor.column, editor.type);
        list->EditColumn(3, editor.column);
        ASSERT_TRUE(IsOpen());
        const CRect place = EditorRect();
        EXPECT_EQ(place.top, 3 * RowHeight());
        EXPECT_LE(place.right, Widget()->width());
        Grab();
        list->CellCancel();
    }
}

TEST_P(Scaled, Zoom) {
    std::string lines;
    for (int line = 0; line < 40; ++line)
        lines += "A line of the value that is longer than the edit control is wide, number " +
                 std::to_string(line) + "\r\n";
    CZoomDialog dialog(lines.c_str(), "City", &parent);
    QTimer::singleShot(50, [&] {
        DWORD first = 1, last = 1;
        dialog.GetDlgItem(100)->SendMessage(EM_GETSEL, reinterpret_cast<WPARAM>(&first),
                                            reinterpret_cast<LPARAM>(&last));
        EXPECT_EQ(first, 0U);
        EXPECT_EQ(last, 0U);
        const auto place = [&](int id) {
            CRect rect;
            dialog.GetDlgItem(id)->GetWindowRect(rect);
            dialog.ScreenToClient(rect);
            return rect;
        };
        for (const CSize size : {CSize(0, 0), CSize(600, 400), CSize(300, 180)}) {
            if (size.cx > 0)
                dialog.SetWindowPos(nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER);
            Pump();
            Keep(dialog.GetWidget());
            CRect client;
            dialog.GetClientRect(client);
            for (const int button : {IDOK, IDCANCEL}) {
                EXPECT_LE(place(100).bottom, place(button).top);
                EXPECT_LE(place(button).bottom, client.bottom);
            }
            EXPECT_GE(place(100).Height(), 50);
        }
        dialog.EndDialog(IDCANCEL);
    });
    dialog.DoModal();
}

INSTANTIATE_TEST_SUITE_P(All, Scaled, ::testing::Combine(::testing::Bool(), ::testing::Bool()));

} // namespace
} // namespace vnbytstr::test

// Columns as the user wants them: moved, hidden, frozen, aligned; tips and stripes.
#include "tests/lists/ListFixture.h"

#include "vnbytstr/window/ToolTip.h"

#include <QImage>
#include <QMenu>
#include <QPixmap>
#include <QTimer>

namespace vnbytstr::test {
namespace {

class UserColumns : public ListFixture {
protected:
    void SetUp() override { MakeFor(0); }
    void MakeFor(DWORD exStyle) {
        Make(0, exStyle);
        ASSERT_TRUE(list->CreateHeadingsControl(1001));
        Pump();
    }
    CListBoxExHeadings& Header() { return *list->GetHeadings(); }
    CRect HeadingRect(int column) {
        CRect rect;
        Header().GetRect(column, &rect);
        return rect;
    }
    /// The columns from left to right, as the pointer finds them in header and rows.
    std::string Seen() {
        std::string text;
        CRect client;
        list->GetClientRect(client);
        for (int x = 3, last = -1; x < client.right - 3; ++x) {
            int row = -1, column = -1;
            list->HitTest({x, 4}, row, column);
            if (column != last)
                text += std::to_string(column);
            last = column;
            EXPECT_EQ(Header().HitTest({x + 2, 5}), column) << x;
        }
        return text;
    }
    void DragHeading(int fromX, int toX) {
        Mouse(Header(), QEvent::MouseButtonPress, {fromX, 8});
        for (int step = 1; step <= 4; ++step)
            Mouse(Header(), QEvent::MouseMove, {fromX + (toX - fromX) * step / 4, 8});
        Mouse(Header(), QEvent::MouseButtonRelease, {toX, 8});
        Pump();
    }
    QImage Picture(CWnd& window) {
        Pump();
        return window.GetWidget()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }
    /// Whether anything but the background is drawn between two x of a row.
    bool HasInk(const QImage& image, int row, int left, int right) {
        const int y = row * RowHeight() + RowHeight() / 2;
        const QRgb ground = image.pixel(right - 1, row * RowHeight() + 3);
        for (int x = left; x < right; ++x)
            for (int up = -4; up <= 4; ++up)
                if (std::abs(qGray(image.pixel(x, y + up)) - qGray(ground)) > 60)
                    return true;
        return false;
    }
};

TEST_F(UserColumns, OrderIsWhatTheUserSees) {
    EXPECT_EQ(Seen(), "012");
    const int order[] = {2, 0, 1};
    EXPECT_TRUE(list->SetColumnOrder(order));
    EXPECT_EQ(Seen(), "201");
    EXPECT_EQ(list->GetColumnOrder(), (std::vector<int>{2, 0, 1}));
    EXPECT_EQ(Cell(0, 0), "delta"); // numbers stay
    EXPECT_EQ(HeadingRect(0).left, 2 + 100);
    EXPECT_GE(HeadingRect(1).right, 390); // the last one fills the header control
    EXPECT_EQ(list->GetColumnWidth(2), 100);
    for (const auto& wrong :
         {std::vector<int>{0, 1}, {0, 1, 1}, {0, 1, 3}, {0, 1, 2, 3}, {-1, 0, 1}})
        EXPECT_FALSE(list->SetColumnOrder(wrong));
    EXPECT_EQ(Seen(), "201");
    // Tab goes from cell to cell as they are seen.
    for (int column = 0; column < 3; ++column)
        list->SetEditorType(column, kEditorText);
    list->EditColumn(0, 2);
    const CRect place = EditorRect();
    EXPECT_EQ(place.left, 0);
    EXPECT_EQ(place.right, 100);
    Key(Qt::Key_Tab);
    EXPECT_TRUE(IsOpenAt(0, 0));
    Key(Qt::Key_Tab);
    EXPECT_TRUE(IsOpenAt(0, 1));
    Key(Qt::Key_Tab);
    EXPECT_TRUE(IsOpenAt(1, 2));
}

TEST_F(UserColumns, AHeaderIsDragged) {
    for (const DWORD exStyle : {DWORD{0}, WS_EX_LAYOUTRTL}) {
        MakeFor(exStyle);
        list->EnableSort();
        DragHeading(50, 260);
        EXPECT_EQ(Seen(), "012"); // not asked for
        Header().EnableMove();
        DragHeading(50, 250); // right of the last one's middle? it ends at the edge: before it
        EXPECT_EQ(Seen(), "102");
        EXPECT_EQ(list->GetSortColumn(), -1);
        DragHeading(50, 395);
        EXPECT_EQ(Seen(), "021");
        DragHeading(150, 5);
        EXPECT_EQ(Seen(), "201");
        DragHeading(50, 53); // hardly moved: a click
        EXPECT_EQ(list->GetSortColumn(), 2);
        EXPECT_EQ(Seen(), "201");
        // The drop mark is gone whatever ends the drag.
        const QImage before = Picture(parent);
        Mouse(Header(), QEvent::MouseButtonPress, {50, 8});
        Mouse(Header(), QEvent::MouseMove, {150, 8});
        EXPECT_NE(Picture(parent), before);
        Header().SendMessage(WM_CANCELMODE);
        Mouse(Header(), QEvent::MouseButtonRelease, {150, 8});
        EXPECT_EQ(Picture(parent), before);
        EXPECT_EQ(Seen(), "201");
    }
}

TEST_F(UserColumns, HiddenColumnsKeepWidthAndPlace) {
    EXPECT_TRUE(list->HideColumn(1));
    EXPECT_TRUE(list->IsColumnHidden(1));
    EXPECT_EQ(Seen(), "02");
    EXPECT_FALSE(Header().GetRect(1, std::make_unique<CRect>().get()));
    list->SetColumnFilter(1, "linz"); // it filters
    EXPECT_EQ(Column(0), "Alpha bravo");
    list->ClearFilter();
    list->SetEditorType(1, kEditorText);
    list->StartEditing(0, 1);
    EXPECT_FALSE(IsOpen());
    EXPECT_TRUE(list->HideColumn(2));
    EXPECT_FALSE(list->HideColumn(0)); // the last one shown
    EXPECT_FALSE(list->HideColumn(3));
    EXPECT_GE(HeadingRect(0).right, 390);
    EXPECT_TRUE(list->HideColumn(1, FALSE));
    EXPECT_TRUE(list->HideColumn(2, FALSE));
    EXPECT_EQ(Seen(), "012");
    EXPECT_EQ(list->GetColumnWidth(0), 100);
    EXPECT_EQ(list->GetColumnWidth(1), 100);
}

TEST_F(UserColumns, AMenuHidesAndShowsColumns) {
    const auto choose = [this](int item) {
        QStringList texts;
        QTimer::singleShot(0, [&texts, item] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_NE(menu, nullptr);
            for (const QAction* action : menu->actions())
                texts.append(action->text() + (action->isChecked() ? " *" : ""));
            QAction* chosen = menu->actions().at(item);
            menu->setActiveAction(chosen);
            QTest::keyClick(menu, Qt::Key_Return);
        });
        CPoint point(150, 8);
        Header().ClientToScreen(&point);
        Header().SendMessage(WM_CONTEXTMENU, reinterpret_cast<WPARAM>(Header().m_hWnd),
                             MAKELPARAM(point.x, point.y));
        Pump();
        return texts;
    };
    Header().EnableColumnMenu();
    list->SetColumnName(2, "A&B");
    const QStringList texts = choose(0); // hides the one under the pointer
    ASSERT_EQ(texts.size(), 6);
    EXPECT_EQ(texts.at(5), "A&&B *");
    EXPECT_EQ(Seen(), "02");
    EXPECT_EQ(choose(3).at(4), "City");
    EXPECT_EQ(Seen(), "2");
    choose(1);
    EXPECT_EQ(Seen(), "012");
}

TEST_F(UserColumns, FrozenColumnsStayWhenTheListIsScrolled) {
    Make(WS_HSCROLL);
    ASSERT_TRUE(list->CreateHeadingsControl(1001));
    list->EnableSideScroll();
    for (int column = 1; column < 3; ++column)
        list->SetColumnWidth(column, 300);
    list->SetFrozenColumns(1);
    Header().FixLastColWidth();
    Pump();
    const auto frozen = [this](CWnd& window) { return Picture(window).copy(QRect(4, 4, 90, 8)); };
    const QImage rows = frozen(*list), header = frozen(Header());
    list->SendMessage(WM_HSCROLL, SB_BOTTOM);
    ASSERT_GT(list->GetSideShift(), 100);
    EXPECT_EQ(frozen(*list), rows);
    EXPECT_EQ(frozen(Header()), header);
    EXPECT_EQ(Seen(), "02"); // the second one is covered
    EXPECT_EQ(HeadingRect(0).left, 2);
    list->SendMessage(WM_HSCROLL, SB_LINEUP);
    list->SendMessage(WM_HSCROLL, SB_LINEUP);
    EXPECT_EQ(Seen(), "012");
    EXPECT_EQ(HeadingRect(1).left, 102); // without what is covered
    list->ShowColumn(1);
    EXPECT_EQ(list->GetSideShift(), 0);
    // The boundary of the frozen column resizes it, not one that is under it.
    list->SendMessage(WM_HSCROLL, SB_BOTTOM);
    EXPECT_EQ(Header().SizerHitTest({101, 5}), 0);
}

TEST_F(UserColumns, NumbersStandAtTheRight) {
    list->SendMessage(LB_SETCURSEL, static_cast<WPARAM>(-1));
    list->SetColumnAlignment(-1, kAlignByType);
    EXPECT_EQ(list->GetColumnAlignment(2), kAlignByType);
    const QImage rows = Picture(*list);
    const int right = list->GetColumnWidth(2) + 200;
    EXPECT_TRUE(HasInk(rows, 1, right - 20, right - 2));
    EXPECT_FALSE(HasInk(rows, 1, 204, 240));
    EXPECT_TRUE(HasInk(rows, 1, 104, 120)); // texts stay at the left
    list->SetColumnAlignment(2, kAlignLeft);
    EXPECT_TRUE(HasInk(Picture(*list), 1, 204, 220));
    list->SetColumnAlignment(2, 99);
    EXPECT_EQ(list->GetColumnAlignment(2), kAlignDefault);
    list->SetColumnAlignment(0, kAlignRight);
    const int order[] = {1, 0, 2}; // with an order of its own, too
    list->SetColumnOrder(order);
    EXPECT_TRUE(HasInk(Picture(*list), 1, 180, 202));
}

TEST_F(UserColumns, EveryOtherRowIsStriped) {
    list->SendMessage(LB_SETCURSEL, static_cast<WPARAM>(-1));
    const auto ground = [this](int row) {
        return Picture(*list).pixel(98, row * RowHeight() + RowHeight() - 3);
    };
    EXPECT_EQ(ground(2), ground(3));
    list->EnableZebra();
    EXPECT_NE(ground(2), ground(3));
    EXPECT_EQ(ground(2), ground(4));
    EXPECT_LT(std::abs(qGray(ground(2)) - qGray(ground(3))), 40); // only slightly
}

TEST_F(UserColumns, TheHeaderSaysNameAndType) {
    for (const DWORD exStyle : {DWORD{0}, WS_EX_LAYOUTRTL}) {
        MakeFor(exStyle);
        EXPECT_EQ(list->GetColumnTip(1), CString("City"));
        list->SetColumnTypeText(1, "VARCHAR(30)");
        EXPECT_EQ(list->GetColumnTip(1), CString("City\nVARCHAR(30)"));
        Header().EnableTips();
        const auto restOn = [this](CPoint point) {
            POINT screen = point;
            Header().ClientToScreen(&screen);
            const QPoint global(screen.x, screen.y);
            QMouseEvent move(QEvent::MouseMove, Header().GetWidget()->mapFromGlobal(global), global,
                             Qt::NoButton, Qt::NoButton, {});
            QApplication::sendEvent(Header().GetWidget(), &move);
            QTest::qWait(800);
            Pump();
            return std::string(GetShownTip());
        };
        EXPECT_EQ(restOn({150, 8}), "City\nVARCHAR(30)");
        list->SetColumnTip(0, "tip");
        EXPECT_EQ(restOn({50, 8}), "tip");
        HideTip();
    }
}

} // namespace
} // namespace vnbytstr::test

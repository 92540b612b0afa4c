// Columns that do not fit: the list scrolls sideways, headings, cells and editors with it.
#include "tests/lists/ListFixture.h"

#include <QImage>
#include <QPixmap>

namespace vnbytstr::test {
namespace {

class SideScroll : public ListFixture {
protected:
    static constexpr int kWidth = 300; ///< of each column; the client area is less than 400 wide

    void SetUp() override {
        Make(WS_HSCROLL);
        ASSERT_TRUE(list->CreateHeadingsControl(1001));
        list->EnableSideScroll();
        for (int column = 0; column < 3; ++column)
            list->SetColumnWidth(column, kWidth);
        list->GetHeadings()->FixLastColWidth();
        Pump();
        list->GetClientRect(client);
    }
    int ColumnUnder(int x) {
        int row = -1, column = -1;
        list->HitTest({x, 4}, row, column);
        return column;
    }
    int HeadingLeft(int column) {
        CRect rect;
        list->GetHeadings()->GetRect(column, &rect);
        return rect.left;
    }
    bool HasBar() { return (list->GetStyle() & WS_HSCROLL) != 0; }
    QImage Seen(CWnd& window, int left, int width) {
        Pump();
        CRect all;
        window.GetClientRect(all);
        return window.GetWidget()->grab(QRect(left + 1, 1, width, all.Height() - 2)).toImage();
    }

    CRect client;
};

TEST_F(SideScroll, AllMovesTogether) {
    const int last = 3 * kWidth - client.Width();
    EXPECT_TRUE(HasBar());
    EXPECT_EQ(ColumnUnder(310), 1);
    const QImage rows = Seen(*list, 250, 100), header = Seen(*list->GetHeadings(), 251, 50);
    list->SendMessage(WM_HSCROLL, SB_LINEDOWN);
    const int step = list->GetSideShift();
    EXPECT_GT(step, 0);
    EXPECT_EQ(Seen(*list, 250 - step, 100), rows);
    EXPECT_EQ(Seen(*list->GetHeadings(), 251 - step, 50), header);
    EXPECT_EQ(HeadingLeft(1), 2 + kWidth - step);

    list->SendMessage(WM_HSCROLL, SB_BOTTOM);
    EXPECT_EQ(list->GetSideShift(), last);
    EXPECT_EQ(ColumnUnder(kWidth - last - 1 + kWidth), 1);
    EXPECT_EQ(ColumnUnder(client.right - 1), 2);
    const int divider = 2 + 2 * kWidth - last;
    EXPECT_EQ(list->GetHeadings()->SizerHitTest({divider, 8}), 1);
    EXPECT_NE(Seen(*list->GetHeadings(), divider - 5, 10),
              Seen(*list->GetHeadings(), divider - 25, 10)); // it is drawn
    list->ShowColumn(1); // ends right of what is seen, begins left of it
    EXPECT_EQ(list->GetSideShift(), kWidth);
    list->ShowColumn(0);
    EXPECT_EQ(list->GetSideShift(), 0);
    list->SendMessage(WM_HSCROLL, SB_BOTTOM);
    list->ResetContent();
    EXPECT_EQ(HeadingLeft(0), 2);
}

TEST_F(SideScroll, AnEditorComesIntoView) {
    list->SetEditorType(2, kEditorText);
    list->EditColumn(1, 2);
    CWnd* editor = list->GetActiveEditor();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(list->GetSideShift(), 3 * kWidth - client.Width());
    CRect place;
    editor->GetWindowRect(place);
    list->ScreenToClient(place);
    EXPECT_EQ(place.left, 2 * kWidth - list->GetSideShift());
    EXPECT_LE(place.right, client.right);
    Type("7");
    list->SendMessage(WM_HSCROLL, SB_TOP); // which stores it
    EXPECT_EQ(list->GetActiveEditor(), nullptr);
    EXPECT_EQ(parent.Take().back(), "store 2 7");
    EXPECT_EQ(list->GetSideShift(), 0);
}

TEST_F(SideScroll, WhatFitsDoesNotScroll) {
    list->ShowColumn(2);
    list->SetColumnWidth(0, 40); // less is hidden now
    EXPECT_EQ(list->GetSideShift(), 40 + 2 * kWidth - client.Width());
    list->SetColumnWidth(1, 10);
    list->GetHeadings()->FixLastColWidth();
    Pump();
    EXPECT_EQ(list->GetSideShift(), 0);
    EXPECT_FALSE(HasBar());
    EXPECT_EQ(list->GetOwnColumnWidth(2), kWidth);
    EXPECT_EQ(list->GetColumnWidth(2), 400 - 2 - 50); // the header control is filled
    list->MoveWindow(10, 60, 340, 200);               // and no longer
    Pump();
    EXPECT_TRUE(HasBar());
    EXPECT_EQ(list->GetColumnWidth(2), kWidth);
}

} // namespace
} // namespace vnbytstr::test

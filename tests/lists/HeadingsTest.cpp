#include "src/lists/HeadingTracking.h"
#include "tests/lists/ListFixture.h"

namespace vnbytstr::test {
namespace {

class TestHeadings : public CListBoxExHeadings {
public:
    using CListBoxExHeadings::m_hArrow;
    using CListBoxExHeadings::m_hSize;
    using CListBoxExHeadings::m_pTracking;
};

class Headings : public ListFixture {
protected:
    void SetUp() override {
        ListFixture::SetUp();
        ASSERT_TRUE(strip.CWnd::GetSafeHwnd() == nullptr);
        strip.SetListBox(list.get());
        ASSERT_TRUE(strip.Create(CRect(), &parent, 1001));
        list->SetHeadingsControl(&strip);
        list->PositionHeadings();
        strip.FixLastColWidth();
        Pump();
    }
    void TearDown() override {
        strip.SetListBox(nullptr);
        list->SetHeadingsControl(nullptr);
        if (strip.GetSafeHwnd() != nullptr)
            strip.DestroyWindow();
        ListFixture::TearDown();
    }
    void Press(int x) { Mouse(strip, QEvent::MouseButtonPress, {x, 8}); }
    void Move(int x, int y = 8) { Mouse(strip, QEvent::MouseMove, {x, y}); }
    void Release(int x, int y = 8) {
        Mouse(strip, QEvent::MouseButtonRelease, {x, y});
        Pump();
    }
    int Width(int column) { return list->GetColumnWidth(column); }

    TestHeadings strip;
};

TEST_F(Headings, TheStripSitsOnTheList) {
    CRect rows, above;
    list->GetWindowRect(rows);
    strip.GetWindowRect(above);
    EXPECT_EQ(above.bottom, rows.top);
    EXPECT_EQ(above.left, rows.left);
    EXPECT_EQ(above.right, rows.right);
    EXPECT_EQ(above.Height(), strip.GetDesiredHeight());
    EXPECT_EQ(strip.GetStyle() & 0x50020000, 0x50020000u);
    char name[64];
    GetClassName(strip.m_hWnd, name, sizeof name);
    EXPECT_STREQ(name, "ListBoxExHeadingsWindowClass");

    list->MoveWindow(20, 80, 300, 150); // goes along
    strip.GetWindowRect(above);
    parent.ScreenToClient(above);
    EXPECT_EQ(above, CRect(20, 80 - strip.GetDesiredHeight(), 320, 80));
    list->MoveWindow(0, 0, 300, 150); // no room above: the list gives way
    strip.GetWindowRect(above);
    list->GetWindowRect(rows);
    parent.ScreenToClient(above);
    parent.ScreenToClient(rows);
    EXPECT_EQ(above.top, 0);
    EXPECT_EQ(rows, CRect(0, above.bottom, 300, 150));
    list->ShowWindow(SW_HIDE);
    EXPECT_FALSE(strip.IsWindowVisible());
    list->ShowWindow(SW_SHOW);
    EXPECT_TRUE(strip.IsWindowVisible());
}

TEST_F(Headings, DraggingABoundaryResizesLive) {
    parent.GetWidget()->grab();
    const int all = Width(0) + Width(1) + Width(2);
    Press(97); // 5 left of the boundary at 102
    EXPECT_TRUE(strip.m_pTracking->tracking);
    EXPECT_EQ(Width(0), 100);
    Move(107);
    EXPECT_EQ(Width(0), 110);                       // while the button is down
    EXPECT_EQ(Width(0) + Width(1) + Width(2), all); // the last column gives
    Move(-50); // the pointer is kept right of the column's left edge
    EXPECT_EQ(Width(0), 5);
    Move(77);
    Release(77);
    EXPECT_EQ(Width(0), 80);
    EXPECT_FALSE(strip.m_pTracking->tracking);
    EXPECT_EQ(CWnd::GetFocus(), list.get());
    Move(200);
    EXPECT_EQ(Width(0), 80);
    CRect free;
    GetClipCursor(free);
    EXPECT_GE(free.Width(), GetSystemMetrics(SM_CXSCREEN)); // the pointer is free again
}

TEST_F(Headings, OnlyTheZoneAroundABoundaryGrabs) {
    parent.GetWidget()->grab();
    const struct {
        int x, column;
    } cases[] = {{96, -1}, {97, 0}, {105, 0}, {106, -1}, {197, 1}, {205, 1}, {206, -1}};
    for (const auto& c : cases)
        EXPECT_EQ(strip.SizerHitTest({c.x, 8}), c.column) << c.x;
    CRect rect;
    ASSERT_TRUE(strip.GetRect(2, &rect));
    EXPECT_EQ(strip.SizerHitTest({rect.right, 8}), -1); // the last column has none
}

TEST_F(Headings, TheSizerLineLeavesNoTrace) {
    list->SetOnlySel(1);
    parent.GetWidget()->grab();
    Pump();
    const QImage before = parent.GetWidget()->grab().toImage();
    strip.DrawSizer();
    EXPECT_NE(parent.GetWidget()->grab().toImage(), before);
    strip.DrawSizer();
    EXPECT_EQ(parent.GetWidget()->grab().toImage(), before);
    Press(100);
    Move(150);
    Release(100); // back where it was
    Pump();
    EXPECT_EQ(parent.GetWidget()->grab().toImage(), before);
}

TEST_F(Headings, AClickSortsOnlyWhereSortingIsOn) {
    Press(40);
    Release(40);
    EXPECT_EQ(Column(0), "delta Alpha charlie bravo echo");
    EXPECT_EQ(CWnd::GetFocus(), list.get()); // that is all it does
    list->EnableSort();
    Press(40);
    EXPECT_TRUE(strip.m_pTracking->pressedLook);
    Release(40);
    EXPECT_EQ(Column(0), "Alpha bravo charlie delta echo");
    Press(40);
    Release(40);
    EXPECT_EQ(Column(0), "echo delta charlie bravo Alpha");
}

TEST_F(Headings, ReleasedElsewhereAPressDoesNotSort) {
    list->EnableSort();
    Press(40);
    Move(140);
    EXPECT_FALSE(strip.m_pTracking->pressedLook);
    Move(45);
    EXPECT_TRUE(strip.m_pTracking->pressedLook);
    Move(45, 100);
    EXPECT_FALSE(strip.m_pTracking->pressedLook);
    Release(45, 100);
    EXPECT_EQ(strip.m_pTracking->pressedHeading, -1);
    EXPECT_EQ(list->GetSortState(), 0);
}

TEST_F(Headings, CancelEndsEitherKindOfPress) {
    list->EnableSort();
    Press(40);
    strip.SendMessage(WM_CANCELMODE);
    EXPECT_FALSE(strip.m_pTracking->tracking);
    Release(40);
    EXPECT_EQ(list->GetSortState(), 0);
    const QImage before = parent.GetWidget()->grab().toImage();
    Press(100);
    strip.SendMessage(WM_CANCELMODE);
    Move(160);
    Release(160);
    EXPECT_EQ(Width(0), 100);
    EXPECT_EQ(parent.GetWidget()->grab().toImage(), before); // no line is left
    strip.SendMessage(WM_CANCELMODE);
}

TEST_F(Headings, ADoubleClickOnABoundaryFits) {
    parent.GetWidget()->grab();
    Mouse(strip, QEvent::MouseButtonDblClick, {102, 8});
    Pump();
    const int fitted = Width(0);
    EXPECT_LT(fitted, 100);
    Mouse(strip, QEvent::MouseButtonRelease, {102, 8});
    Mouse(strip, QEvent::MouseButtonDblClick, {fitted / 2, 8});
    EXPECT_EQ(Width(0), fitted);
}

TEST_F(Headings, TheLastColumnEndsAtTheEdge) {
    CRect client, rect;
    strip.GetClientRect(client);
    strip.FixLastColWidth();
    strip.GetRect(2, &rect);
    EXPECT_EQ(rect.left + Width(2), client.right);
    list->SetColumnWidth(0, 1000);
    const int width = Width(2);
    strip.FixLastColWidth(); // it begins outside
    EXPECT_EQ(Width(2), width);
    EXPECT_FALSE(strip.GetRect(2, &rect));
}

TEST_F(Headings, TheFontIsTheStripsOwnCopy) {
    CFont font;
    ASSERT_TRUE(font.CreatePointFont(240, ""));
    const int before = strip.GetDesiredHeight();
    EXPECT_EQ(strip.SendMessage(WM_GETFONT), 0);
    strip.SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(font.GetSafeHandle()), TRUE);
    font.DeleteObject();
    EXPECT_GT(strip.GetDesiredHeight(), before);
    EXPECT_NE(strip.SendMessage(WM_GETFONT), 0);
    EXPECT_NE(strip.GetActiveFont(), nullptr);
    strip.SendMessage(WM_SETFONT, 0, TRUE);
    EXPECT_EQ(strip.GetActiveFont(), nullptr);
    EXPECT_EQ(strip.SendMessage(WM_GETFONT), 0);
}

TEST_F(Headings, ThePointerTellsWhatAPressWouldDo) {
    list->EnableSort();
    const auto over = [this](int x) {
        CPoint point(x, 8);
        strip.ClientToScreen(&point);
        SetCursorPos(point.x, point.y);
        EXPECT_EQ(strip.SendMessage(WM_SETCURSOR, reinterpret_cast<WPARAM>(strip.m_hWnd),
                                    MAKELPARAM(HTCLIENT, WM_MOUSEMOVE)),
                  1);
        return GetCursor();
    };
    EXPECT_EQ(over(102), strip.m_hSize);
    EXPECT_EQ(over(50), strip.m_hArrow);
}

TEST_F(Headings, NewColoursAreUsedAtOnce) {
    parent.GetWidget()->grab();
    strip.SendMessage(WM_SYSCOLORCHANGE);
    EXPECT_FALSE(parent.GetWidget()->grab().isNull());
}

TEST_F(Headings, WithoutAList) {
    strip.SetListBox(nullptr);
    CRect rect;
    EXPECT_FALSE(strip.GetRect(0, &rect));
    EXPECT_EQ(strip.HitTest({40, 8}), -1);
    EXPECT_EQ(strip.SizerHitTest({102, 8}), -1);
    Press(102);
    Move(110);
    Release(110);
    strip.FixLastColWidth();
    strip.DrawSizer();
    parent.GetWidget()->grab();
    Mouse(strip, QEvent::MouseButtonDblClick, {102, 8});
}

TEST_F(Headings, KeysAreOffUnlessAskedFor) {
    list->EnableSort();
    strip.SetFocus();
    Pump();
    strip.SendMessage(WM_KEYDOWN, VK_RETURN, 1);
    EXPECT_EQ(list->GetSortState(), 0);
    strip.EnableKeyboard();
    EXPECT_NE(strip.GetStyle() & WS_TABSTOP, 0u);
    strip.SetFocus();
    Pump();
    Key(Qt::Key_Right);
    EXPECT_EQ(strip.GetFocusColumn(), 1);
    Key(Qt::Key_Return);
    EXPECT_EQ(list->GetSortColumn(), 1);
    const int width = Width(1);
    Key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(Width(1), width + 8);
    Key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(Width(1), width);
    Key(Qt::Key_Home);
    EXPECT_EQ(strip.GetFocusColumn(), 0);
    Key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_LT(Width(0), 100);
    Key(Qt::Key_Tab); // and on to the list
    EXPECT_EQ(CWnd::GetFocus(), list.get());
}

TEST_F(Headings, TheParentDestroysAllWhileAHeadingIsPressed) {
    list->EnableSort();
    list->SetEditorType(0, kEditorText);
    list->EditColumn(1, 0);
    parent.onAsked = [this](UINT message) -> LRESULT {
        if (message == VNM_STOREVALUE) {
            strip.DestroyWindow();
            list->DestroyWindow();
        }
        return 0;
    };
    Press(40);
    EXPECT_EQ(strip.GetSafeHwnd(), nullptr);
    EXPECT_FALSE(strip.m_pTracking->tracking);
}

} // namespace
} // namespace vnbytstr::test

// The header control as a window. Its arithmetic is tested in HeadingLogicTest.cpp.
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
        header.SetListBox(list.get());
        ASSERT_TRUE(header.Create(CRect(), &parent, 1001));
        list->SetHeadingsControl(&header);
        list->PositionHeadings();
        header.FixLastColWidth();
        Pump();
    }
    void TearDown() override {
        header.SetListBox(nullptr);
        list->SetHeadingsControl(nullptr);
        if (header.GetSafeHwnd() != nullptr)
            header.DestroyWindow();
        ListFixture::TearDown();
    }
    void Press(int x) { Mouse(header, QEvent::MouseButtonPress, {x, 8}); }
    void Move(int x, int y = 8) { Mouse(header, QEvent::MouseMove, {x, y}); }
    void Release(int x, int y = 8) {
        Mouse(header, QEvent::MouseButtonRelease, {x, y});
        Pump();
    }
    void DoubleClick(int x) {
        Mouse(header, QEvent::MouseButtonDblClick, {x, 8});
        Mouse(header, QEvent::MouseButtonRelease, {x, 8});
        Pump();
    }
    QImage Drawn() { return parent.GetWidget()->grab().toImage(); }
    static bool IsPointerFree() {
        CRect clip;
        GetClipCursor(clip);
        return clip.Width() >= GetSystemMetrics(SM_CXSCREEN);
    }
    int Width(int column) { return list->GetColumnWidth(column); }
    /// In the parent's client area.
    CRect Place(CWnd& window) {
        CRect rect;
        window.GetWindowRect(rect);
        parent.ScreenToClient(rect);
        return rect;
    }

    TestHeadings header;
};

TEST_F(Headings, TheControlIsAboveTheList) {
    EXPECT_EQ(header.GetStyle() & 0x50020000, 0x50020000u);
    char name[64];
    GetClassName(header.m_hWnd, name, sizeof name);
    EXPECT_STREQ(name, "ListBoxExHeadingsWindowClass");
    const int height = header.GetDesiredHeight();
    const auto above = [height](int left, int bottom, int width) {
        return CRect(left, bottom - height, left + width, bottom);
    };
    EXPECT_EQ(Place(header), above(kListLeft, kListTop, 400));
    list->MoveWindow(20, 80, 300, 150); // moves with it
    EXPECT_EQ(Place(header), above(20, 80, 300));
    list->MoveWindow(0, 0, 300, 150); // no room above: the list's top moves down
    EXPECT_EQ(Place(header), above(0, height, 300));
    EXPECT_EQ(Place(*list), CRect(0, height, 300, 150));
    list->SetHeadingsControl(nullptr);
    list->MoveWindow(0, 0, 300, 150);
    list->SetHeadingsControl(&header);
    list->PositionHeadings(); // likewise
    EXPECT_EQ(Place(*list), CRect(0, height, 300, 150));
    list->ShowWindow(SW_HIDE);
    EXPECT_FALSE(header.IsWindowVisible());
    list->ShowWindow(SW_SHOW);
    EXPECT_TRUE(header.IsWindowVisible());
}

TEST_F(Headings, DraggingADividerResizesLive) {
    list->SetEditorType(1, kEditorText);
    list->SetOnlySel(1);
    const QImage before = Drawn();
    const int all = Width(0) + Width(1) + Width(2);
    Press(97); // 5 left of the divider at 102
    EXPECT_TRUE(header.m_pTracking->tracking);
    CRect clip, client;
    GetClipCursor(clip);
    header.ScreenToClient(clip);
    header.GetClientRect(client);
    EXPECT_EQ(clip.left, 2);
    EXPECT_EQ(clip.right, client.right - 4); // grabbed 4 left of the line
    EXPECT_EQ(Width(0), 100);
    Move(107);
    EXPECT_EQ(Width(0), 110); // while the button is down
    EXPECT_EQ(Width(0) + Width(1) + Width(2), all);
    const QImage dragged = Drawn();
    const CPoint line(kListLeft + header.m_pTracking->sizerPosition, Place(*list).bottom - 4);
    EXPECT_NE(dragged.pixel(line.x, line.y), dragged.pixel(line.x - 1, line.y));
    Move(-50); // the pointer is kept right of the column's left edge
    EXPECT_EQ(Width(0), 5);
    Move(77);
    Release(77);
    EXPECT_EQ(Width(0), 80);
    EXPECT_FALSE(header.m_pTracking->tracking);
    EXPECT_TRUE(IsPointerFree());
    EXPECT_EQ(CWnd::GetFocus(), list.get());
    Move(200);
    EXPECT_EQ(Width(0), 80);
    Press(80);
    Release(100);
    Pump();
    EXPECT_EQ(Drawn(), before); // no line remains

    list->EditColumn(1, 1); // an editor opened during a drag moves with its cell
    Press(100);
    list->EditColumn(1, 1);
    header.SendMessage(WM_LBUTTONUP, 0, MAKELPARAM(120, 8));
    EXPECT_EQ(EditorRect().left, 120);
}

TEST_F(Headings, ThePointerShowsWhereDividersAre) {
    list->EnableSort();
    const struct {
        int x;
        bool divider;
    } cases[] = {{50, false}, {96, false}, {97, true}, {105, true}, {106, false}, {197, true}};
    for (const auto& c : cases) {
        EXPECT_EQ(header.SizerHitTest({c.x, 8}) >= 0, c.divider) << c.x;
        CPoint point(c.x, 8);
        header.ClientToScreen(&point);
        SetCursorPos(point.x, point.y);
        EXPECT_EQ(header.SendMessage(WM_SETCURSOR, reinterpret_cast<WPARAM>(header.m_hWnd),
                                     MAKELPARAM(HTCLIENT, WM_MOUSEMOVE)),
                  1);
        EXPECT_EQ(GetCursor(), c.divider ? header.m_hSize : header.m_hArrow) << c.x;
    }
}

TEST_F(Headings, AClickSortsOnlyWhereSortingIsOn) {
    Press(40);
    Release(40);
    EXPECT_EQ(Column(0), "delta Alpha charlie bravo echo");
    EXPECT_EQ(CWnd::GetFocus(), list.get()); // that is all it does
    list->EnableSort();
    const QImage raised = Drawn();
    Press(40);
    const QImage sunken = Drawn();
    EXPECT_NE(sunken, raised);
    Move(45, 100); // outside
    Pump();
    EXPECT_EQ(Drawn(), raised);
    Move(45);
    Pump();
    EXPECT_EQ(Drawn(), sunken);
    Release(45);
    EXPECT_EQ(Column(0), "Alpha bravo charlie delta echo");
    Press(40);
    Release(140);
    EXPECT_EQ(list->GetSortState(), kSortedAscending); // released elsewhere
    Press(40);
    Release(40);
    EXPECT_EQ(Column(0), "echo delta charlie bravo Alpha");
}

TEST_F(Headings, CancelEndsEitherKindOfPress) {
    list->EnableSort();
    const QImage before = Drawn();
    const std::function<void()> cancels[] = {[this] { header.SendMessage(WM_CANCELMODE); },
                                             [this] { header.SetListBox(nullptr); }};
    for (const auto& cancel : cancels)
        for (const int x : {40, 100}) {
            Press(x);
            EXPECT_TRUE(header.m_pTracking->tracking);
            cancel();
            EXPECT_FALSE(header.m_pTracking->tracking);
            EXPECT_TRUE(IsPointerFree());
            header.SetListBox(list.get());
            Move(x + 60);
            Release(x + 60);
            EXPECT_EQ(list->GetSortState(), kNotSorted);
            EXPECT_EQ(Width(0), 100);
            EXPECT_EQ(Drawn(), before); // no line remains
        }
    Press(100);
    header.DestroyWindow();
    EXPECT_FALSE(header.m_pTracking->tracking);
    EXPECT_TRUE(IsPointerFree());
}

TEST_F(Headings, ADoubleClickOnADividerFits) {
    DoubleClick(102);
    const int fitted = Width(0);
    EXPECT_LT(fitted, 100);
    DoubleClick(fitted / 2);
    EXPECT_EQ(Width(0), fitted);
}

TEST_F(Headings, TheFontIsACopy) {
    CFont font, listFont;
    ASSERT_TRUE(font.CreatePointFont(240, ""));
    ASSERT_TRUE(listFont.CreatePointFont(120, ""));
    list->SetFont(&listFont);
    ASSERT_NE(header.GetActiveFont(), nullptr);
    EXPECT_EQ(header.GetActiveFont()->GetSafeHandle(), listFont.GetSafeHandle());
    const int before = header.GetDesiredHeight();
    EXPECT_EQ(header.SendMessage(WM_GETFONT), 0);
    header.SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(font.GetSafeHandle()), TRUE);
    font.DeleteObject();
    EXPECT_GT(header.GetDesiredHeight(), before);
    EXPECT_NE(header.SendMessage(WM_GETFONT), 0);
    header.SendMessage(WM_SETFONT, 0, TRUE);
    EXPECT_EQ(header.GetActiveFont(), nullptr);
    EXPECT_EQ(header.SendMessage(WM_GETFONT), 0);
    CClientDC dc(nullptr);
    TEXTMETRIC metrics{};
    dc.GetTextMetrics(&metrics);
    EXPECT_EQ(header.GetDesiredHeight(), metrics.tmHeight + 4);
    list->SetFont(nullptr);
}

TEST_F(Headings, WithoutAList) {
    header.SetListBox(nullptr);
    CRect rect;
    EXPECT_FALSE(header.GetRect(0, &rect));
    EXPECT_EQ(header.HitTest({40, 8}), -1);
    EXPECT_EQ(header.SizerHitTest({102, 8}), -1);
    Press(102);
    Move(110);
    Release(110);
    header.FixLastColWidth();
    header.DrawSizer();
    header.SendMessage(WM_SYSCOLORCHANGE);
    Drawn();
    DoubleClick(102);
}

TEST_F(Headings, KeysAreOffByDefault) {
    list->EnableSort();
    header.SetFocus();
    Pump();
    header.SendMessage(WM_KEYDOWN, VK_RETURN, 1);
    EXPECT_EQ(list->GetSortState(), kNotSorted);
    header.EnableKeyboard();
    EXPECT_NE(header.GetStyle() & WS_TABSTOP, 0u);
    header.SetFocus();
    Pump();
    Key(Qt::Key_Right);
    EXPECT_EQ(header.GetFocusColumn(), 1);
    Key(Qt::Key_Return);
    EXPECT_EQ(list->GetSortColumn(), 1);
    const int width = Width(1);
    Key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(Width(1), width + 8);
    Key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(Width(1), width);
    Key(Qt::Key_End);
    EXPECT_EQ(header.GetFocusColumn(), 2);
    Key(Qt::Key_Right);
    EXPECT_EQ(header.GetFocusColumn(), 2);
    Key(Qt::Key_Home);
    EXPECT_EQ(header.GetFocusColumn(), 0);
    Key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_LT(Width(0), 100);
    Key(Qt::Key_Tab); // on to the list
    EXPECT_EQ(CWnd::GetFocus(), list.get());
}

TEST_F(Headings, TheParentDestroysAllWhileAHeaderIsPressed) {
    list->EnableSort();
    list->SetEditorType(0, kEditorText);
    list->EditColumn(1, 0);
    parent.OnStore([this] {
        header.DestroyWindow();
        list->DestroyWindow();
    });
    Press(40);
    EXPECT_EQ(header.GetSafeHwnd(), nullptr);
    EXPECT_FALSE(header.m_pTracking->tracking);
}

} // namespace
} // namespace vnbytstr::test

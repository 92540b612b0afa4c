// The list box: messages, selection by mouse and keyboard, owner drawing, scrolling.
#include "vnbytstr/window/ListBox.h"
#include "tests/window/WindowFixture.h"

#include <QScrollBar>

#include <map>
#include <numeric>
#include <string>

namespace {

constexpr UINT kListId = 11;
constexpr int kRowHeight = 20;

/// A list whose rows are drawn here: each with its own colour.
class DrawnList : public CListBox {
public:
    std::map<UINT, DRAWITEMSTRUCT> drawn;
    int measured = 0;
    int keysSeen = 0;

    void DrawItem(LPDRAWITEMSTRUCT item) override {
        drawn[item->itemID] = *item;
        CDC* dc = CDC::FromHandle(item->hDC);
        dc->FillSolidRect(&item->rcItem, RGB(0, 100 + static_cast<int>(item->itemID), 0));
    }
    void MeasureItem(LPMEASUREITEMSTRUCT item) override {
        ++measured;
        item->itemHeight = (GetStyle() & LBS_OWNERDRAWVARIABLE) != 0
                               ? kRowHeight + item->itemID % 3 * 10
                               : kRowHeight;
    }
};

class Owner : public RecordingWnd {
public:
    std::vector<int> codes;

protected:
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override {
        if (LOWORD(wParam) == kListId)
            codes.push_back(static_cast<std::int16_t>(HIWORD(wParam)));
        return CWnd::OnCommand(wParam, lParam);
    }
};

class ListBox : public WindowTest<Owner> {
protected:
    void Create(DWORD style, int rows = 0) {
        ASSERT_TRUE(m_list.CreateEx(0, "LISTBOX", "",
                                    WS_CHILD | WS_VISIBLE | WS_TABSTOP | LBS_NOTIFY |
                                        LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | WS_VSCROLL | style,
                                    CRect(0, 0, 200, 100), &m_frame, kListId));
        for (int i = 0; i < rows; ++i)
            m_list.AddString(("row " + std::to_string(i)).c_str());
    }
    void Click(int row, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(m_list.GetWidget(), Qt::LeftButton, modifiers, PlaceOf(row));
    }
    static QPoint PlaceOf(int row) { return {30, row * kRowHeight + kRowHeight / 2}; }
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(m_list.GetWidget(), key, modifiers);
    }
    std::vector<int> Selected() const {
        std::vector<int> rows;
        for (int i = 0; i < m_list.GetCount(); ++i)
            if (m_list.GetSel(i) > 0)
                rows.push_back(i);
        return rows;
    }
    std::string Text(int row) const {
        CString text;
        m_list.GetText(row, text);
        return {text, static_cast<std::size_t>(text.GetLength())};
    }
    DrawnList m_list;
};

using Rows = std::vector<int>;

} // namespace

TEST_F(ListBox, RowsComeAndGo) {
    Create(0);
    EXPECT_EQ(m_list.AddString("one"), 0);
    EXPECT_EQ(m_list.AddString("three"), 1);
    EXPECT_EQ(m_list.InsertString(1, "two"), 1);
    EXPECT_EQ(m_list.InsertString(-1, "four"), 3);
    EXPECT_EQ(m_list.InsertString(9, "none"), LB_ERR);
    EXPECT_EQ(Text(1), "two");
    EXPECT_EQ(m_list.GetTextLen(2), 5);
    EXPECT_EQ(m_list.GetTextLen(4), LB_ERR);
    EXPECT_EQ(m_list.SetCurSel(2), 2);
    EXPECT_EQ(m_list.DeleteString(0), 3);
    EXPECT_EQ(m_list.GetCurSel(), 1);
    EXPECT_EQ(m_list.DeleteString(1), 2);
    EXPECT_EQ(m_list.GetCurSel(), LB_ERR);
    EXPECT_EQ(m_list.DeleteString(7), LB_ERR);
    EXPECT_EQ(m_list.SetItemData(1, 99), LB_OKAY);
    EXPECT_EQ(m_list.GetItemData(1), 99U);
    EXPECT_EQ(m_list.SetItemData(2, 1), LB_ERR);
    EXPECT_EQ(m_list.SelectString(-1, "FO"), 1);
    EXPECT_EQ(m_list.GetCurSel(), 1);
    EXPECT_EQ(m_list.SetSel(0), LB_ERR); // not in a list of one selection
    EXPECT_EQ(m_list.GetSelCount(), LB_ERR);
    m_list.ResetContent();
    EXPECT_EQ(m_list.GetCount(), 0);
    EXPECT_EQ(m_list.SetCurSel(0), LB_ERR);
    EXPECT_EQ(m_list.AddString(nullptr), 0);
}

TEST_F(ListBox, SortedListsPutRowsInTheirPlace) {
    Create(LBS_SORT);
    for (const char* text : {"pear", "Apple", "apple pie", "Zoo", "quince"})
        m_list.AddString(text);
    EXPECT_EQ(m_list.AddString("banana"), 2);
    const char texts[] = "cherry\0aardvark";
    EXPECT_EQ(ListBoxAddRows(m_list, texts, sizeof texts, 2), 6);
    std::vector<std::string> order;
    for (int i = 0; i < m_list.GetCount(); ++i)
        order.push_back(Text(i));
    EXPECT_EQ(order, (std::vector<std::string>{"aardvark", "Apple", "apple pie", "banana", "cherry",
                                               "pear", "quince", "Zoo"}));
}

TEST_F(ListBox, OneSelectionByMouse) {
    Create(0, 30);
    Click(2);
    EXPECT_EQ(m_list.GetCurSel(), 2);
    EXPECT_EQ(CWnd::GetFocus(), &m_list);
    EXPECT_EQ(m_frame.codes, (Rows{LBN_SETFOCUS, LBN_SELCHANGE}));
    m_frame.codes.clear();
    QTest::mousePress(m_list.GetWidget(), Qt::LeftButton, {}, PlaceOf(1));
    QTest::mouseMove(m_list.GetWidget(), PlaceOf(3));
    EXPECT_EQ(Selected(), Rows{3});
    EXPECT_TRUE(m_frame.codes.empty());
    QTest::mouseRelease(m_list.GetWidget(), Qt::LeftButton, {}, PlaceOf(3));
    EXPECT_EQ(m_frame.codes, Rows{LBN_SELCHANGE});
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
    QTest::mouseDClick(m_list.GetWidget(), Qt::LeftButton, {}, PlaceOf(3));
    EXPECT_NE(std::find(m_frame.codes.begin(), m_frame.codes.end(), LBN_DBLCLK),
              m_frame.codes.end());
    // Losing the focus ends a drag.
    QTest::mousePress(m_list.GetWidget(), Qt::LeftButton, {}, PlaceOf(0));
    m_frame.SetFocus();
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
}

TEST_F(ListBox, OneSelectionByKeyboard) {
    Create(0, 30);
    m_list.SetFocus();
    m_frame.codes.clear();
    Key(Qt::Key_Down);
    EXPECT_EQ(m_list.GetCurSel(), 0);
    Key(Qt::Key_Down);
    EXPECT_EQ(m_list.GetCurSel(), 1);
    Key(Qt::Key_End);
    EXPECT_EQ(m_list.GetCurSel(), 29);
    EXPECT_EQ(m_list.GetTopIndex(), 25);
    Key(Qt::Key_PageUp);
    EXPECT_EQ(m_list.GetCurSel(), 25);
    Key(Qt::Key_Home);
    EXPECT_EQ(m_list.GetTopIndex(), 0);
    Key(Qt::Key_Up); // nothing above: nothing changes, nobody is told
    EXPECT_EQ(m_frame.codes, Rows(5, LBN_SELCHANGE));
    m_list.AddString("zebra");
    Key(Qt::Key_Z);
    EXPECT_EQ(m_list.GetCurSel(), 30);
}

TEST_F(ListBox, MultipleSelectionToggles) {
    Create(LBS_MULTIPLESEL, 10);
    Click(1);
    Click(3);
    EXPECT_EQ(Selected(), (Rows{1, 3}));
    Click(1);
    EXPECT_EQ(Selected(), Rows{3});
    EXPECT_EQ(m_list.GetCurSel(), 1); // the row that the keyboard is at
    Key(Qt::Key_Down);
    Key(Qt::Key_Space);
    EXPECT_EQ(Selected(), (Rows{2, 3}));
    int rows[4] = {};
    EXPECT_EQ(m_list.GetSelItems(4, rows), 2);
    EXPECT_EQ(rows[1], 3);
    EXPECT_EQ(m_list.GetSelItems(1, rows), 1);
    EXPECT_EQ(m_list.SetSel(-1, FALSE), LB_OKAY);
    EXPECT_EQ(m_list.GetSelCount(), 0);
    EXPECT_EQ(m_list.SelItemRange(TRUE, 8, 20), LB_OKAY);
    EXPECT_EQ(Selected(), (Rows{8, 9}));
    EXPECT_EQ(m_list.SetCurSel(2), LB_ERR);
}

TEST_F(ListBox, ExtendedSelectionByMouse) {
    Create(LBS_EXTENDEDSEL, 10);
    Click(1);
    EXPECT_EQ(Selected(), Rows{1});
    Click(3, Qt::ShiftModifier);
    EXPECT_EQ(Selected(), (Rows{1, 2, 3}));
    Click(2, Qt::ControlModifier);
    EXPECT_EQ(Selected(), (Rows{1, 3}));
    Click(4, Qt::ControlModifier);
    EXPECT_EQ(Selected(), (Rows{1, 3, 4}));
    Click(0);
    EXPECT_EQ(Selected(), Rows{0});
    QTest::mousePress(m_list.GetWidget(), Qt::LeftButton, {}, PlaceOf(1));
    QTest::mouseMove(m_list.GetWidget(), PlaceOf(3));
    QTest::mouseMove(m_list.GetWidget(), PlaceOf(2));
    EXPECT_EQ(Selected(), (Rows{1, 2}));
    QTest::mouseRelease(m_list.GetWidget(), Qt::LeftButton, {}, PlaceOf(2));
}

TEST_F(ListBox, ExtendedSelectionByKeyboard) {
    Create(LBS_EXTENDEDSEL, 10);
    Click(2);
    Key(Qt::Key_Down, Qt::ShiftModifier);
    Key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(Selected(), (Rows{2, 3, 4}));
    Key(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(Selected(), (Rows{2, 3}));
    Key(Qt::Key_Down, Qt::ControlModifier);
    Key(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(Selected(), (Rows{2, 3}));
    EXPECT_EQ(m_list.GetCaretIndex(), 5);
    Key(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(Selected(), (Rows{2, 3, 5}));
    Key(Qt::Key_Down);
    EXPECT_EQ(Selected(), Rows{6});
}

TEST_F(ListBox, OnlyVisibleRowsAreDrawnWithTheirState) {
    Create(LBS_EXTENDEDSEL, 1000);
    EXPECT_EQ(m_list.measured, 1);
    m_list.SetSel(1);
    m_list.SetFocus();
    const QImage image = m_list.GetWidget()->grab().toImage();
    EXPECT_EQ(m_list.drawn.size(), 5U);
    EXPECT_EQ(m_list.drawn[1].itemState, ODS_SELECTED | ODS_FOCUS);
    EXPECT_EQ(m_list.drawn[2].itemState, 0U);
    EXPECT_EQ(m_list.drawn[2].rcItem.top, 40);
    EXPECT_EQ(m_list.drawn[2].hwndItem, m_list.m_hWnd);
    EXPECT_EQ(image.pixel(10, 45), qRgb(0, 102, 0));
    m_list.EnableWindow(FALSE);
    m_list.GetWidget()->grab();
    EXPECT_NE(m_list.drawn[1].itemState & ODS_DISABLED, 0U);
}

TEST_F(ListBox, ScrollsByBarWheelAndMessage) {
    Create(0, 4);
    CRect client;
    m_list.GetClientRect(client);
    EXPECT_EQ(client.right, 200); // no bar yet, and the style says so
    EXPECT_EQ(m_list.GetStyle() & WS_VSCROLL, 0U);
    for (int i = 4; i < 100; ++i)
        m_list.AddString("more");
    m_list.GetClientRect(client);
    EXPECT_EQ(client.right, 200 - GetSystemMetrics(SM_CXVSCROLL));
    EXPECT_NE(m_list.GetStyle() & WS_VSCROLL, 0U);
    m_list.SendMessage(WM_VSCROLL, SB_LINEDOWN);
    EXPECT_EQ(m_list.GetTopIndex(), 1);
    m_list.SendMessage(WM_VSCROLL, SB_PAGEDOWN);
    EXPECT_EQ(m_list.GetTopIndex(), 6);
    AfxPumpMessages(0);
    auto* bar = m_list.GetWidget()->findChild<QScrollBar*>();
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->value(), 6);
    EXPECT_EQ(bar->maximum(), 95);
    bar->triggerAction(QAbstractSlider::SliderToMaximum);
    EXPECT_EQ(m_list.GetTopIndex(), 95);
    bar->setSliderPosition(30); // as when the thumb is dragged
    EXPECT_EQ(m_list.GetTopIndex(), 30);
    EXPECT_EQ(bar->value(), 30);
    m_list.SetTopIndex(50);
    EXPECT_EQ(bar->value(), 50);
    CRect rect;
    EXPECT_EQ(m_list.GetItemRect(52, rect), LB_OKAY);
    EXPECT_EQ(rect.top, 40);
    BOOL outside = FALSE;
    EXPECT_EQ(m_list.ItemFromPoint(CPoint(5, 45), outside), 52U);
    EXPECT_FALSE(outside);
    while (m_list.GetCount() > 3)
        m_list.DeleteString(0);
    EXPECT_EQ(m_list.GetTopIndex(), 0);
    EXPECT_EQ(m_list.GetStyle() & WS_VSCROLL, 0U);
    m_list.SetTopIndex(9);
    EXPECT_EQ(m_list.GetTopIndex(), 0);
}

TEST_F(ListBox, VariableHeights) {
    ASSERT_TRUE(m_list.CreateEx(0, "LISTBOX", "",
                                WS_CHILD | WS_VISIBLE | LBS_OWNERDRAWVARIABLE | LBS_HASSTRINGS,
                                CRect(0, 0, 200, 100), &m_frame, kListId));
    for (int i = 0; i < 9; ++i)
        m_list.AddString("x");
    EXPECT_EQ(m_list.measured, 9);
    CRect rect;
    m_list.GetItemRect(3, rect); // after 20, 30 and 40
    EXPECT_EQ(rect, CRect(0, 90, 200, 110));
    m_list.SetCurSel(8);
    m_list.GetItemRect(8, rect);
    EXPECT_LE(rect.bottom, 100);
    EXPECT_EQ(m_list.SetItemHeight(8, 50), LB_OKAY);
    EXPECT_EQ(m_list.GetItemHeight(8), 50);
    EXPECT_EQ(m_list.SetItemHeight(8, 0), LB_ERR);
}

TEST_F(ListBox, ReorderingTakesSelectionAndCaretAlong) {
    Create(LBS_EXTENDEDSEL, 5);
    m_list.SetSel(0);
    m_list.SetSel(3);
    m_list.SetItemData(3, 33);
    const std::vector<DWORD> order{4, 3, 2, 1, 0};
    EXPECT_TRUE(ListBoxReorder(m_list, order));
    EXPECT_EQ(Selected(), (Rows{1, 4}));
    EXPECT_EQ(Text(1), "row 3");
    EXPECT_EQ(m_list.GetItemData(1), 33U);
    EXPECT_EQ(m_list.GetCaretIndex(), 1);
    EXPECT_FALSE(ListBoxReorder(m_list, std::vector<DWORD>{0, 0, 1, 2, 3}));
    EXPECT_FALSE(ListBoxReorder(m_frame, order));
    EXPECT_TRUE(ListBoxSetRowText(m_list, 1, "changed"));
    EXPECT_EQ(Selected(), (Rows{1, 4}));
    EXPECT_STREQ(ListBoxRowText(m_list, 1), "changed");
    EXPECT_EQ(ListBoxRowText(m_list, 5), nullptr);
}

// Each bar takes room that may make the other one needed; below the height of a bar there is no
// place for rows beside one.
TEST_F(ListBox, BothScrollBarsSettleAtEverySize) {
    Create(WS_HSCROLL, 2);
    const int bar = GetSystemMetrics(SM_CYHSCROLL);
    for (const int extent : {0, 100, 110}) {
        m_list.SendMessage(LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(extent));
        for (int height = 0; height < 3 * kRowHeight + bar; ++height)
            for (int width = 100 - bar; width < 100 + 2 * bar; width += 3) {
                m_list.SetWindowPos(nullptr, 0, 0, width, height, SWP_NOZORDER | SWP_NOMOVE);
                CRect client;
                m_list.GetClientRect(client);
                const bool fits = 2 * kRowHeight <= client.Height() || client.Height() <= 0;
                const bool isWide = extent <= client.Width() || client.Width() <= 0;
                ASSERT_TRUE(fits || (m_list.GetStyle() & WS_VSCROLL) != 0)
                    << extent << ": " << width << " x " << height;
                ASSERT_TRUE(isWide || (m_list.GetStyle() & WS_HSCROLL) != 0)
                    << extent << ": " << width << " x " << height;
                ASSERT_TRUE(height < 2 * kRowHeight + bar || (m_list.GetStyle() & WS_VSCROLL) == 0)
                    << extent << ": " << width << " x " << height;
            }
    }
}

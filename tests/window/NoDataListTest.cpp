// The list box without data: a number of rows and their selection.
#include "tests/window/WindowFixture.h"
#include "vnbytstr/window/ListBox.h"

#include <QScrollBar>

#include <climits>
#include <random>
#include <set>

namespace {

constexpr int kRowHeight = 20;
constexpr DWORD kStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY;

class DrawnList : public CListBox {
public:
    std::set<UINT> drawn;
    int measured = 0;

    void DrawItem(LPDRAWITEMSTRUCT item) override { drawn.insert(item->itemID); }
    void MeasureItem(LPMEASUREITEMSTRUCT item) override {
        ++measured;
        item->itemHeight = kRowHeight;
    }
    BOOL Make(CWnd& parent, DWORD style) {
        return CreateEx(0, "LISTBOX", "", kStyle | style, CRect(0, 0, 200, 100), &parent, 1);
    }
    std::set<UINT> Draw() {
        drawn.clear();
        GetWidget()->grab();
        return drawn;
    }
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(GetWidget(), key, modifiers);
    }
};

class NoDataList : public WindowTest<RecordingWnd> {
protected:
    DrawnList m_list;
};

/// Everything that a list box tells about selection and place.
std::vector<LRESULT> StateOf(const CListBox& list) {
    std::vector<LRESULT> state;
    for (const UINT message : {LB_GETCOUNT, LB_GETCURSEL, LB_GETCARETINDEX, LB_GETANCHORINDEX,
                               LB_GETTOPINDEX, LB_GETSELCOUNT})
        state.push_back(list.SendMessage(message));
    for (int row = -1; row <= list.GetCount(); ++row) {
        CRect rect;
        state.push_back(list.SendMessage(LB_GETSEL, static_cast<WPARAM>(row)));
        state.push_back(list.GetItemRect(row, rect));
        state.push_back(rect.top);
        state.push_back(rect.bottom);
    }
    return state;
}

} // namespace

TEST_F(NoDataList, HasACountAndNoTexts) {
    ASSERT_TRUE(m_list.Make(m_frame, LBS_OWNERDRAWFIXED | LBS_NODATA));
    EXPECT_EQ(m_list.SetCount(3), LB_OKAY);
    EXPECT_EQ(m_list.AddString("ignored"), 3);
    EXPECT_EQ(m_list.InsertString(0, "ignored"), 0);
    EXPECT_EQ(m_list.InsertString(9, "ignored"), LB_ERR);
    EXPECT_EQ(m_list.DeleteString(4), 4);
    EXPECT_EQ(m_list.DeleteString(4), LB_ERR);
    EXPECT_EQ(m_list.FindString(-1, "i"), LB_ERR);
    EXPECT_EQ(m_list.FindStringExact(-1, ""), LB_ERR);
    EXPECT_EQ(m_list.SelectString(-1, ""), LB_ERR);
    EXPECT_EQ(m_list.SetItemData(0, 5), LB_ERR);
    EXPECT_EQ(m_list.SendMessage(LB_SETITEMDATA, static_cast<WPARAM>(-1), 5), LB_ERR);
    EXPECT_EQ(m_list.GetItemData(0), 0U);
    EXPECT_STREQ(ListBoxRowText(m_list, 0), "");
    EXPECT_FALSE(ListBoxSetRowText(m_list, 0, "text"));
    EXPECT_FALSE(ListBoxReorder(m_list, std::vector<DWORD>{3, 2, 1, 0}));
    EXPECT_EQ(ListBoxAddRows(m_list, "a", 2, 1), LB_ERR);
    EXPECT_EQ(m_list.SetCount(-1), LB_ERR);
    EXPECT_EQ(m_list.SendMessage(LB_SETCOUNT, WPARAM{INT_MAX} + 1), LB_ERR);
    EXPECT_EQ(m_list.GetCount(), 4);
    m_list.ResetContent();
    EXPECT_EQ(m_list.GetCount(), 0);
    EXPECT_EQ(m_list.GetCaretIndex(), -1);
}

TEST_F(NoDataList, OtherStylesHaveNoCountToSet) {
    const DWORD others[] = {LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_NODATA,
                            LBS_OWNERDRAWFIXED | LBS_SORT | LBS_NODATA, LBS_NODATA,
                            LBS_OWNERDRAWFIXED};
    for (const DWORD style : others) {
        DrawnList list;
        ASSERT_TRUE(list.Make(m_frame, style));
        EXPECT_EQ(list.SetCount(5), LB_ERR) << style;
        EXPECT_EQ(list.AddString("text"), 0);
        list.DestroyWindow();
    }
}

TEST_F(NoDataList, AllRowsAreAsHighAsTheFirst) {
    ASSERT_TRUE(m_list.Make(m_frame, LBS_OWNERDRAWVARIABLE | LBS_NODATA));
    EXPECT_EQ(m_list.measured, 0);
    m_list.SetCount(1'000'000);
    m_list.SetCount(2'000'000);
    EXPECT_EQ(m_list.measured, 1);
    EXPECT_EQ(m_list.GetItemHeight(1'999'999), kRowHeight);
    EXPECT_EQ(m_list.Draw(), (std::set<UINT>{0, 1, 2, 3, 4}));
    EXPECT_EQ(m_list.SetItemHeight(5, 25), LB_OKAY); // of all
    EXPECT_EQ(m_list.GetItemHeight(0), 25);
}

TEST_F(NoDataList, KeepsSelectionAndPlaceWhileRowsComeAndGo) {
    ASSERT_TRUE(m_list.Make(m_frame, LBS_OWNERDRAWFIXED | LBS_NODATA | LBS_EXTENDEDSEL));
    m_list.SetCount(1'000'000);
    EXPECT_EQ(m_list.SelItemRange(TRUE, 700'000, 999'999), LB_OKAY);
    m_list.SendMessage(LB_SETCARETINDEX, 800'000);
    m_list.SetTopIndex(799'998);
    AfxPumpMessages(50);
    m_list.Draw();
    m_list.drawn.clear();
    m_list.SetCount(1'000'100);
    AfxPumpMessages(50);
    EXPECT_TRUE(m_list.drawn.empty()); // nothing in view has changed
    EXPECT_EQ(m_list.GetSelCount(), 300'000);
    EXPECT_EQ(m_list.GetSel(1'000'050), 0);
    EXPECT_EQ(m_list.GetCaretIndex(), 800'000);
    EXPECT_EQ(m_list.GetTopIndex(), 799'998);
    m_list.SetCount(750'000);
    EXPECT_EQ(m_list.GetSelCount(), 50'000);
    EXPECT_EQ(m_list.GetCaretIndex(), 749'999);
    EXPECT_EQ(m_list.GetTopIndex(), 749'995);
    EXPECT_EQ(m_list.Draw(), (std::set<UINT>{749'995, 749'996, 749'997, 749'998, 749'999}));
    m_list.SetCount(1'000'000);
    EXPECT_EQ(m_list.GetSelCount(), 50'000); // rows that are new are not selected
    EXPECT_EQ(ListBoxNextSelected(m_list, 0), 700'000);
    EXPECT_EQ(ListBoxNextSelected(m_list, 750'000), -1);
    m_list.SetCount(0);
    EXPECT_EQ(m_list.GetCaretIndex(), -1);
    EXPECT_EQ(m_list.GetTopIndex(), 0);
    EXPECT_TRUE(m_list.Draw().empty());
}

TEST_F(NoDataList, AsManyRowsAsAnIntCounts) {
    ASSERT_TRUE(m_list.Make(m_frame, LBS_OWNERDRAWFIXED | LBS_NODATA | LBS_EXTENDEDSEL));
    EXPECT_EQ(m_list.SetCount(INT_MAX), LB_OKAY);
    EXPECT_EQ(m_list.AddString("one more"), LB_ERRSPACE);
    m_list.SetFocus();
    m_list.Key(Qt::Key_End);
    EXPECT_EQ(m_list.GetCaretIndex(), INT_MAX - 1);
    EXPECT_EQ(m_list.GetTopIndex(), INT_MAX - 5);
    m_list.Key(Qt::Key_PageDown);
    m_list.Key(Qt::Key_Down);
    EXPECT_EQ(m_list.GetCaretIndex(), INT_MAX - 1);
    EXPECT_EQ(m_list.Draw().size(), 5U);
    AfxPumpMessages(0);
    auto* bar = m_list.GetWidget()->findChild<QScrollBar*>();
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->maximum(), INT_MAX - 5);
    bar->setSliderPosition(INT_MAX / 2);
    EXPECT_EQ(m_list.GetTopIndex(), INT_MAX / 2);
    m_list.Key(Qt::Key_Home, Qt::ShiftModifier);
    EXPECT_EQ(m_list.GetSelCount(), INT_MAX);
    BOOL outside = FALSE;
    EXPECT_EQ(m_list.ItemFromPoint({5, 45}, outside), 2U);
    EXPECT_EQ(m_list.SendMessage(LB_INITSTORAGE, 10), LRESULT{INT_MAX} + 10);
}

/// The same keys, clicks and messages to a list with data and to one without.
TEST_F(NoDataList, BehavesAsAListWithData) {
    for (const DWORD selection : {DWORD{0}, LBS_MULTIPLESEL, LBS_EXTENDEDSEL}) {
        DrawnList lists[2];
        ASSERT_TRUE(lists[0].Make(m_frame, LBS_OWNERDRAWFIXED | selection));
        ASSERT_TRUE(lists[1].Make(m_frame, LBS_OWNERDRAWFIXED | selection | LBS_NODATA));
        std::mt19937 random(3);
        const auto below = [&random](int end) {
            return static_cast<int>(random() % static_cast<unsigned>(end));
        };
        const Qt::Key keys[] = {Qt::Key_Up,   Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown,
                                Qt::Key_Home, Qt::Key_End,  Qt::Key_Space};
        const Qt::KeyboardModifier modifiers[] = {Qt::NoModifier, Qt::ShiftModifier,
                                                  Qt::ControlModifier};
        for (int step = 0; step < 400; ++step) {
            const int what = below(8);
            const Qt::Key key = keys[below(7)];
            const Qt::KeyboardModifier modifier = modifiers[below(3)];
            const QPoint place(30, below(100));
            const int row = below(30) - 1;
            const int other = below(30);
            for (DrawnList& list : lists) {
                switch (what) {
                case 0:
                    list.InsertString(row, nullptr);
                    break;
                case 1:
                    for (int i = 0; i < 3; ++i)
                        list.AddString(nullptr);
                    break;
                case 2:
                    list.DeleteString(static_cast<UINT>(row));
                    break;
                case 3:
                    list.SetSel(row, other % 2);
                    break;
                case 4:
                    list.SelItemRange(other % 2, row, other);
                    break;
                case 5:
                    QTest::mouseClick(list.GetWidget(), Qt::LeftButton, modifier, place);
                    break;
                default:
                    list.Key(key, modifier);
                }
            }
            AfxPumpMessages(0);
            ASSERT_EQ(StateOf(lists[0]), StateOf(lists[1])) << selection << " " << step;
        }
    }
}

TEST_F(NoDataList, GivesAndTakesTexts) {
    ASSERT_TRUE(m_list.Make(m_frame, LBS_OWNERDRAWFIXED | LBS_HASSTRINGS));
    m_list.AddString("text");
    EXPECT_TRUE(ListBoxSetNoData(m_list, TRUE));
    EXPECT_EQ(m_list.GetCount(), 0);
    EXPECT_EQ(m_list.GetStyle() & (LBS_NODATA | LBS_HASSTRINGS), LBS_NODATA);
    EXPECT_EQ(m_list.SetCount(7), LB_OKAY);
    EXPECT_TRUE(ListBoxSetNoData(m_list, FALSE));
    EXPECT_EQ(m_list.SetCount(7), LB_ERR);
    EXPECT_EQ(m_list.AddString("text"), 0);
    EXPECT_EQ(m_list.FindString(-1, "te"), 0);
    EXPECT_FALSE(ListBoxSetNoData(m_frame, TRUE));
}

// Behaviour of lists and header controls where more than one is thinkable.
#include "src/lists/HeadingTracking.h"
#include "tests/lists/ListFixture.h"
#include "vnbytstr/ListRowSource.h"

#include <QLineEdit>
#include <QWindow>

namespace vnbytstr::test {
namespace {

/// Rows of three cells that can be changed.
class Source : public CListRowSource {
public:
    int GetRowCount() override { return 5; }
    void GetCell(int row, int column, std::string& text) override { text = cells[row][column]; }
    bool SetCell(int row, int column, std::string_view text) override {
        cells[row][column] = text;
        return true;
    }
    bool TakesFiles(int) override { return true; }
    std::string cells[5][3] = {{"delta", "Graz", "10"},
                               {"Alpha", "Linz", "9"},
                               {"charlie", "Wien", "100"},
                               {"bravo", "Linz", "-5"},
                               {"echo", "Enns", "9"}};
};

/// Both kinds of rows.
class Settled : public Editing, public testing::WithParamInterface<bool> {
protected:
    void SetUp() override { Remake(0); }
    void Remake(DWORD style, DWORD exStyle = 0) {
        list.reset();
        Make(style, exStyle);
        list->SetEditorType(0, kEditorText);
        list->SetEditorType(2, kEditorNumber);
        source = {};
        if (GetParam())
            list->SetRowSource(&source);
        parent.Take();
    }
    void TearDown() override {
        list.reset();
        Editing::TearDown();
    }
    struct Copyable : Source {
        Copyable() = default;
        Copyable& operator=(const Copyable& other) {
            for (int row = 0; row < 5; ++row)
                for (int column = 0; column < 3; ++column)
                    cells[row][column] = other.cells[row][column];
            return *this;
        }
    };
    Copyable source;
};
INSTANTIATE_TEST_SUITE_P(Rows, Settled, testing::Bool());

TEST_P(Settled, TheValueGoesToTheRowThatIsEdited) {
    for (const DWORD style : {DWORD{0}, LBS_MULTIPLESEL, LBS_EXTENDEDSEL}) {
        Remake(style);
        EditAndType(1, 0, "mine");
        if (style == 0)
            list->SendMessage(LB_SETCURSEL, 3);
        else
            list->SendMessage(LB_SETSEL, TRUE, 0);
        Key(Qt::Key_Return);
        EXPECT_EQ(Column(0), "delta mine charlie bravo echo");
        EditAndType(2, 0, "too");
        list->SendMessage(style == 0 ? LB_SETCURSEL : LB_SETSEL,
                          style == 0 ? static_cast<WPARAM>(-1) : FALSE, -1);
        Key(Qt::Key_Tab); // nothing is selected
        EXPECT_EQ(Column(0), "delta mine too bravo echo");
        EXPECT_TRUE(IsOpenAt(2, 2));
    }
}

TEST_P(Settled, APastedTabOrLineBreakShiftsNothing) {
    list->EditColumn(0, 0);
    list->GetActiveEditor()->SetWindowText("left\tright\r\nbelow\nlast");
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(0, 0), GetParam() ? "left\tright below last" : "left right below last");
    EXPECT_EQ(Cell(0, 1), "Graz");
    list->UpdateStringItem(1, 0, "two\nlines"); // of the program: not changed, not cleaned
    list->EditColumn(1, 0);
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(1, 0), "two\nlines");
    list->onZoom = [](CString& value) {
        value = "a\tb\nc";
        return IDOK;
    };
    list->SetOnlySel(2);
    parent.Take();
    Key(Qt::Key_F2, Qt::ShiftModifier);
    const std::string zoomed = GetParam() ? "a\tb\nc" : "a b\nc"; // it shows lines
    EXPECT_EQ(parent.Take(), Asked{"store 0 " + zoomed});
    EXPECT_EQ(Cell(2, 0), zoomed);
    EXPECT_EQ(Cell(2, 1), "Wien");
    if (GetParam())
        return;
    list->ResetContent();
    list->SetSeparator(";;");
    list->AddStringItems("a", "b", "c");
    list->EditColumn(0, 0);
    list->GetActiveEditor()->SetWindowText("x;;;;y;"); // its end would begin a separator
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(0, 0), "x  y ");
    EXPECT_EQ(Cell(0, 1), "b");
}

TEST_P(Settled, APickOnlyCellKeepsItsValueUntilOneIsPicked) {
    CStringArray strings;
    strings.Add("Linz");
    strings.Add("Wien");
    list->SetEditorStrings(1, strings);
    for (const int type : {kEditorPick, kEditorSortedPick}) {
        list->SetEditorType(1, type);
        list->EditColumn(0, 1); // "Graz" is none of them
        Pump();
        parent.Take();
        Key(Qt::Key_Tab);
        EXPECT_EQ(parent.Take(), (Asked{"store 1 Graz", "closed"}));
        EXPECT_EQ(Cell(0, 1), "Graz");
    }
    list->EditColumn(0, 1);
    list->GetActiveEditor()->SendMessage(CB_SETCURSEL, 1);
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(0, 1), "Wien");
}

TEST_P(Settled, TypingFindsAndTells) {
    int told = 0;
    const auto watch = [&] {
        list->SetPrintInput(TRUE);
        parent.onMessage = [&](UINT message, WPARAM wParam) {
            told += message == WM_COMMAND && HIWORD(wParam) == LBN_SELCHANGE;
        };
    };
    watch();
    Type("b");
    EXPECT_EQ(list->GetFirstSel(), 3);
    EXPECT_EQ(told, 1);
    for (const DWORD style : {LBS_MULTIPLESEL, LBS_EXTENDEDSEL}) {
        Remake(style);
        watch();
        told = 0;
        list->SetOnlySel(0);
        Type("b");
        EXPECT_EQ(list->SendMessage(LB_GETCARETINDEX), 3);
        EXPECT_EQ(list->SendMessage(LB_GETSELCOUNT), 1);
        EXPECT_EQ(list->GetFirstSel(), 0);
        EXPECT_EQ(told, 0); // the selection is the same
    }
    parent.onMessage = nullptr;
}

TEST_P(Settled, ADraggedFileMarksTheRowUnderThePointer) {
    for (const DWORD style : {DWORD{0}, LBS_EXTENDEDSEL}) {
        Remake(style);
        ASSERT_TRUE(list->CreateHeadingsControl(1001));
        CStringArray files;
        files.Add("/data/x");
        COleDataObject data(files);
        list->EditColumn(2, 0);
        list->CellCancel();
        list->SetOnlySel(4); // another one since
        list->m_DropTarget.OnDragEnter(list.get(), &data, 0, CellPoint(2, 0));
        EXPECT_EQ(list->GetFirstSel(), 2);
        if (style != 0)
            list->SendMessage(LB_SETSEL, TRUE, 3);
        list->m_DropTarget.OnDragOver(list.get(), &data, 0, CellPoint(2, 1));
        EXPECT_EQ(list->GetFirstSel(), 2);
        if (style != 0) {
            EXPECT_EQ(list->SendMessage(LB_GETSELCOUNT), 1);
        }
    }
}

TEST_P(Settled, AListThatIsDisabledClosesItsEditor) {
    for (const LRESULT refusal : {0, 1})
        for (const bool asked : {false, true}) {
            Remake(0);
            EditAndType(1, 0, "new");
            parent.Answer(VNM_STOREVALUE, refusal);
            if (asked)
                parent.onAsked = [this, refusal](UINT message) -> LRESULT {
                    if (message == VNM_STOREVALUE)
                        list->EnableWindow(FALSE);
                    return message == VNM_STOREVALUE ? refusal : 0;
                };
            if (asked)
                list->CellEnter(TRUE);
            else
                list->EnableWindow(FALSE);
            Pump();
            EXPECT_FALSE(IsOpen());
            EXPECT_EQ(parent.Take(), (Asked{"store 0 new", "closed"}));
            EXPECT_EQ(Cell(1, 0), refusal != 0 ? "Alpha" : "new");
        }
}

TEST_P(Settled, TheTextStaysAtItsSideWhenAnEditorOpens) {
    const struct {
        DWORD exStyle;
        bool rightAligned;
        bool right; // on the screen
        int alignment = kAlignDefault;
    } cases[] = {{0, false, false},
                 {0, true, true},
                 {WS_EX_LAYOUTRTL, false, true},
                 {WS_EX_LAYOUTRTL, true, false},
                 {0, false, true, kAlignRight},
                 {0, true, false, kAlignLeft}};
    for (const auto& c : cases)
        for (const int type : {kEditorText, kEditorCombo}) {
            if (type == kEditorCombo && c.alignment != kAlignDefault)
                continue; // which follows the list's side alone
            Remake(0, c.exStyle);
            list->SetRightAligned(c.rightAligned);
            list->SetColumnAlignment(0, c.alignment);
            list->SetEditorType(0, type);
            list->EditColumn(1, 0);
            auto* line = list->GetActiveEditor()->GetWidget()->findChild<QLineEdit*>();
            ASSERT_NE(line, nullptr);
            line->setText("i");
            line->setCursorPosition(0);
            line->grab(); // the text is placed when it is drawn
            const int x = line->inputMethodQuery(Qt::ImCursorRectangle).toRect().center().x();
            EXPECT_EQ(x > line->width() / 2, c.right)
                << c.exStyle << ' ' << c.rightAligned << ' ' << type;
            list->CellCancel();
        }
}

// --- header controls -----------------------------------------------------------------------------

/// Stands 30 pixels further right.
class ShiftedHeadings : public CListBoxExHeadings {
public:
    using CListBoxExHeadings::m_pTracking;
    BOOL GetRect(int column, CRect* rect) override {
        const BOOL isInside = CListBoxExHeadings::GetRect(column, rect);
        rect->OffsetRect(30, 0);
        return isInside;
    }
};

TEST_F(Editing, HitTestsFollowTheRectangles) {
    ShiftedHeadings strip;
    strip.SetListBox(list.get());
    ASSERT_TRUE(strip.Create(CRect(), &parent, 1001));
    list->SetHeadingsControl(&strip);
    list->PositionHeadings();
    strip.FixLastColWidth();
    EXPECT_EQ(list->GetColumnWidth(2), 400 - 232);
    EXPECT_EQ(strip.HitTest({20, 8}), -1);
    EXPECT_EQ(strip.HitTest({35, 8}), 0);
    EXPECT_EQ(strip.SizerHitTest({102, 8}), -1);
    EXPECT_EQ(strip.SizerHitTest({132, 8}), 0);
}

TEST_F(Editing, TheLastHeaderEndsAtTheRightEdge) {
    const auto end = [this] {
        CRect rect, client;
        list->GetHeadings()->GetRect(2, &rect);
        list->GetHeadings()->GetClientRect(client);
        return rect.right - client.right;
    };
    ASSERT_TRUE(list->CreateHeadingsControl(1001)); // the list was painted before
    EXPECT_EQ(end(), -1);
    EXPECT_EQ(list->GetColumnWidth(2), 198);
    list->SetColumnWidth(0, 50);
    EXPECT_EQ(list->GetColumnWidth(2), 248);
    list->SetColumnWidth(2, 10);
    EXPECT_EQ(list->GetColumnWidth(2), 248);
    CListBoxExHeadings other;
    ASSERT_TRUE(other.Create(CRect(0, 0, 300, 20), &parent, 1002));
    other.SetListBox(list.get());
    list->SetHeadingsControl(&other);
    EXPECT_EQ(list->GetColumnWidth(2), 148);
    other.SetListBox(nullptr);
}

TEST_F(Editing, ASecondHeaderControlReplacesTheFirst) {
    ASSERT_TRUE(list->CreateHeadingsControl(1001));
    ASSERT_TRUE(list->CreateHeadingsControl(1002));
    EXPECT_EQ(parent.GetDlgItem(1001), nullptr);
    EXPECT_EQ(parent.GetDlgItem(1002), list->GetHeadings());
    EXPECT_TRUE(list->GetHeadings()->IsWindowVisible());
}

TEST_F(Editing, ListAndHeaderControlEndInAnyOrder) {
    for (const bool listFirst : {false, true}) {
        SetUp();
        auto used = std::make_unique<CListBoxExHeadings>();
        auto before = std::make_unique<CListBoxExHeadings>(); // used until the other one came
        for (auto* strip : {before.get(), used.get()}) {
            strip->SetListBox(list.get());
            ASSERT_TRUE(strip->Create(CRect(0, 0, 400, 20), &parent, 1001));
            list->SetHeadingsControl(strip);
        }
        if (listFirst) {
            list.reset();
            Mouse(*before, QEvent::MouseButtonPress, {102, 8});
            Mouse(*used, QEvent::MouseButtonPress, {40, 8});
            Pump();
        } else {
            used.reset();
            before.reset();
            EXPECT_EQ(list->GetHeadings(), nullptr);
            list->MoveWindow(20, 80, 300, 150);
            list->SetColumnWidth(0, 70);
            Pump();
        }
    }
}

TEST_F(Editing, HeadersStandOverRightAlignedColumns) {
    for (const DWORD exStyle : {DWORD{0}, WS_EX_LAYOUTRTL})
        for (const bool aligned : {false, true}) {
            Make(WS_VSCROLL, exStyle);
            ASSERT_TRUE(list->CreateHeadingsControl(1001));
            list->SetRightAligned(aligned);
            for (int rows : {1, 40}) {
                while (list->GetCount() < rows)
                    list->AddStringItems("more", "", "");
                Pump();
                CRect heading;
                list->GetHeadings()->GetRect(1, &heading);
                list->GetHeadings()->MapWindowPoints(list.get(), heading);
                // Both are 1 pixel in the list's border.
                EXPECT_EQ(heading.left, 101) << exStyle << aligned << rows;
                EXPECT_EQ(heading.Width(), 100);
            }
        }
}

// --- the rest ------------------------------------------------------------------------------------

class SortingList : public TestList {
public:
    using CListBoxEx::SetSortValues;
    SSortItem* SortInternal(int column) override {
        SSortItem* items = CListBoxEx::SortInternal(column);
        first = items != nullptr ? items[0].m_strValue : CString("none");
        return items;
    }
    CString first;
};

TEST_F(Editing, AnOverrideOfTheSortGetsTheValues) {
    SortingList sorting;
    ASSERT_TRUE(sorting.Create("LISTBOX", "", WS_CHILD | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS,
                               CRect(0, 0, 10, 10), &parent, 5));
    sorting.SetNumColumns(1);
    sorting.AddStringItems("b");
    sorting.AddStringItems("a");
    EXPECT_TRUE(sorting.Sort(0));
    EXPECT_EQ(sorting.first, "a");
    sorting.SetSortValues(FALSE);
    EXPECT_TRUE(sorting.Sort(0));
    EXPECT_EQ(sorting.first, "");
    delete[] sorting.SortInternal(0); // called alone it has them
    EXPECT_EQ(sorting.first, "a");
}

TEST_F(Editing, ThePointerGoesThroughATip) {
    for (int row = 0; row < 5; ++row)
        list->SetItemTip(row, row == 4 ? "" : "tip");
    list->SetDataTip(CellPoint(1, 0));
    EXPECT_TRUE(list->IsTipShown());
    int tips = 0;
    for (QWidget* top : QApplication::topLevelWidgets())
        if (top->inherits("QTipLabel") && top->isVisible()) {
            ++tips;
            EXPECT_TRUE(top->testAttribute(Qt::WA_TransparentForMouseEvents));
            EXPECT_TRUE(top->windowHandle()->flags() & Qt::WindowTransparentForInput);
        }
    EXPECT_EQ(tips, 1);
    list->SetDataTip(CellPoint(4, 0));
    EXPECT_FALSE(list->IsTipShown()); // an empty one
}

} // namespace
} // namespace vnbytstr::test

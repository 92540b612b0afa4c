// A list of a source: what it asks for, and that it behaves as one with texts.
#include "tests/lists/SourceFixture.h"

#include "tests/support/TestSystem.h"

#include <climits>

namespace vnbytstr::test {
namespace {

TEST_F(RowSource, LooksAndAnswersAsTextsDo) {
    TestSystem system;
    const ScopedSystem scope(system);
    DWORD tick = 0;
    for (const DWORD style : kSelections) {
        for (const DWORD direction : {DWORD{0}, WS_EX_LAYOUTRTL}) {
            Make(style | WS_VSCROLL, direction);
            list->SetColumnWidth(1, 20); // too narrow for its texts
            list->SetPrintInput(TRUE);
            std::vector<std::string> answers[2];
            std::vector<QImage> pictures[2];
            for (const int way : {0, 1}) {
                if (way == 1) {
                    ASSERT_TRUE(list->SetRowSource(&source));
                }
                const auto note = [&](const std::string& answer) {
                    answers[way].push_back(answer);
                };
                list->SetFocus();
                pictures[way].push_back(Draw());
                for (const int row : {3, 1, 99})
                    list->SetOnlySel(row);
                pictures[way].push_back(Draw());
                list->SendMessage(LB_SETSEL, TRUE, 4);
                note(std::string(list->GetSelectionText(TRUE)));
                for (const char* typed : {"c", "E", "x", "\xC3\x84"}) {
                    system.SetTick(tick += 2000);
                    for (const char* at = typed; *at != '\0'; ++at)
                        list->SendMessage(WM_CHAR, static_cast<unsigned char>(*at), 1);
                    note(std::to_string(list->SendMessage(LB_GETCARETINDEX)) + Selection());
                }
                Click(CellPoint(2, 0), Qt::LeftButton, Qt::ShiftModifier);
                Click(CellPoint(3, 0), Qt::RightButton);
                Key(Qt::Key_Up, Qt::ShiftModifier);
                note(Selection() + std::to_string(list->GetFirstSel()));
                pictures[way].push_back(Draw());
                int row = 0, column = 0;
                for (const CPoint point : {CellPoint(3, 2), CPoint(5, 150), CPoint(105, 3)}) {
                    list->HitTest(point, row, column);
                    note(std::to_string(row) + "," + std::to_string(column));
                }
                CString first, third;
                for (const int at : {-1, 0, 4, 5})
                    note(std::to_string(list->GetStringItems(at, &first, nullptr, &third)) +
                         std::string(first + "," + third) + Cell(at, 1) + Cell(at, 3));
                list->FitAllColumns();
                note(std::to_string(list->GetColumnWidth(0)));
                pictures[way].push_back(Draw());
                list->SetColumnWidth(0, 100);
                list->SetColumnWidth(1, 20);
                list->SetColumnWidth(2, 100);
                list->SendMessage(LB_SETSEL, FALSE, -1);
                list->SendMessage(LB_SETCURSEL, static_cast<WPARAM>(-1));
                list->SendMessage(LB_SETCARETINDEX, 0);
            }
            EXPECT_EQ(answers[0], answers[1]) << style;
            for (std::size_t i = 0; i < pictures[0].size(); ++i)
                EXPECT_EQ(pictures[0][i], pictures[1][i]) << style << " " << i;
        }
    }
}

TEST_F(RowSource, OnlyCellsInViewAreAskedFor) {
    TestSource many(kMany);
    Make(WS_VSCROLL | WS_HSCROLL);
    list->SetNumColumns(50);
    for (int column = 0; column < 50; ++column)
        list->SetColumnWidth(column, 100);
    list->EnableSideScroll();
    list->SetRowSource(&many);
    Draw();
    many.Reset();
    Draw();
    EXPECT_EQ(*many.askedRows.begin(), 0);
    EXPECT_EQ(static_cast<int>(many.askedRows.size()), Visible());
    EXPECT_EQ(many.askedColumns, (std::set<int>{0, 1, 2, 3}));
    EXPECT_EQ(many.asked, Visible() * 4);
    Key(Qt::Key_End);
    list->ShowColumn(49);
    Draw();
    many.Reset();
    Draw();
    EXPECT_EQ(*many.askedRows.rbegin(), kMany - 1);
    EXPECT_LE(static_cast<int>(many.askedRows.size()), Visible());
    EXPECT_EQ(*many.askedColumns.begin(), 46);
    EXPECT_EQ(Cell(kMany - 1, 49), std::to_string(kMany - 1) + ".49");
    int row = 0, column = 0;
    list->HitTest({300, 5}, row, column);
    EXPECT_EQ(row, Top());
    EXPECT_GE(column, 48);
}

TEST_F(RowSource, AsManyRowsAsAnIntCounts) {
    TestSource many(INT_MAX);
    Make(WS_VSCROLL | LBS_EXTENDEDSEL);
    list->SetRowSource(&many);
    list->SetEditorType(0, kEditorText);
    EXPECT_EQ(list->GetCount(), INT_MAX);
    list->StartEditing(INT_MAX - 1, 0);
    EXPECT_TRUE(IsOpenAt(INT_MAX - 1, 0));
    EXPECT_EQ(EditorText(), std::to_string(INT_MAX - 1) + ".0");
    EXPECT_LT(EditorRect().top, 200);
    list->SendMessage(LB_SETTOPINDEX, 0);
    list->MoveWindow(kListLeft, kListTop, 380, 190); // the editor is moved far away
    EXPECT_TRUE(IsOpen());
    list->CellCancel();
    list->SendMessage(LB_SETSEL, TRUE, -1);
    EXPECT_EQ(list->SendMessage(LB_GETSELCOUNT), INT_MAX);
    list->AutoFitCol(0);
    EXPECT_LE(many.asked, 3000);
    Draw();
}

TEST_F(RowSource, RowsComeAndGo) {
    for (const DWORD style : kSelections) {
        Make(WS_VSCROLL | style);
        TestSource many(1'000'000);
        list->SetRowSource(&many);
        list->SetOnlySel(900'000);
        const int top = Top();
        Draw();
        many.count += 100;
        EXPECT_EQ(list->GetCount(), 1'000'000); // not told yet
        many.Reset();
        list->RowsChanged();
        Draw();
        EXPECT_EQ(list->GetCount(), 1'000'100);
        EXPECT_EQ(list->GetFirstSel(), 900'000);
        EXPECT_EQ(Top(), top);
        list->StartEditing(900'000, 0);
        many.count = 900'000; // and nobody tells the list: nothing beyond is asked for
        EXPECT_EQ(list->GetCount(), 900'000);
        EXPECT_EQ(Cell(900'000, 0), "");
        EXPECT_FALSE(list->UpdateStringItem(900'000, 0, "x"));
        EXPECT_EQ(Selection(), "");
        many.Reset();
        Draw();
        Draw();
        EXPECT_EQ(list->SendMessage(LB_GETCOUNT), 900'000); // seen when it was drawn
        EXPECT_EQ(list->GetFirstSel(), -1);
        EXPECT_EQ(*many.askedRows.rbegin(), 899'999);
        many.count = 0;
        list->RowsChanged();
        EXPECT_EQ(list->GetCount(), 0);
        Draw();
        many.count = 3;
        list->RowsChanged();
        EXPECT_EQ(Top(), 0);
        EXPECT_EQ(list->GetFirstSel(), -1);
        EXPECT_EQ(Cell(2, 1), "2.1");
        list->SetOnlySel(1);
        list->ResetContent(); // other rows
        EXPECT_EQ(list->GetCount(), 3);
        EXPECT_EQ(list->GetFirstSel(), -1);
        list->SetRowSource(nullptr);
    }
}

TEST_F(RowSource, OneRowIsDrawnAgain) {
    list->SetRowSource(&source);
    Draw();
    Pump();
    source.Reset();
    source.rows[3][1] = "Ulm";
    list->RowChanged(3);
    list->RowChanged(77);
    Pump();
    EXPECT_EQ(source.askedRows, std::set<int>{3});
}

TEST_F(RowSource, FittingAsksForSome) {
    Make(WS_VSCROLL);
    TestSource many(kMany);
    list->SetRowSource(&many);
    list->AutoFitCol(0);
    EXPECT_LE(many.asked, 1200);
    const int narrow = list->GetColumnWidth(0);
    list->SendMessage(LB_SETTOPINDEX, kMany - 10);
    many.onGet = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); };
    many.Reset();
    list->FitAllColumns();
    EXPECT_LE(many.asked, 3 * Visible() + 60); // those in view, others as time allows
    EXPECT_EQ(*many.askedRows.rbegin(), kMany - 1);
    EXPECT_GE(list->GetColumnWidth(0), narrow);
}

TEST_F(RowSource, SeparatorsInTextsMoveNoColumns) {
    const auto drawn = [this](const char* separator, const std::string& text) {
        list->SetSeparator(separator);
        source.rows[1][0] = text;
        list->RowChanged(1);
        return Draw();
    };
    list->SetRowSource(&source);
    const QImage plain = drawn("\t", "a b");
    EXPECT_EQ(drawn("\t", "a\tb"), plain);
    EXPECT_EQ(drawn("\t", std::string("a\0b", 3)), plain);
    EXPECT_EQ(drawn("xy", "axb"), drawn("\t", "axb"));
    EXPECT_EQ(drawn("qq", "bq"), drawn("\t", "b ")); // would end in the separator's beginning
    EXPECT_EQ(drawn(" ", "a b"), drawn("\t", "a_b"));
    source.rows[1][0] = "a\tb";
    EXPECT_EQ(Cell(1, 0), "a\tb"); // only what is drawn
}

TEST_F(RowSource, WhatASourceNeedNotHave) {
    class Least : public CListRowSource {
        int GetRowCount() override { return 2; }
        void GetCell(int row, int, std::string& text) override { text = row == 0 ? "one" : "Two"; }
    } least;
    list->SetNumColumns(0);
    list->SetRowSource(&least);
    list->SetPrintInput(TRUE);
    EXPECT_EQ(Cell(1, 0), "Two");
    EXPECT_FALSE(list->UpdateStringItem(1, 0, "x"));
    EXPECT_FALSE(list->Sort(0));
    EXPECT_FALSE(list->GetDragDrop(0));
    EXPECT_EQ(list->GetEditSubType(0), 1);
    EXPECT_EQ(list->GetEditDataType(0), 0);
    EXPECT_EQ(list->GetFileName(0), nullptr);
    list->AddFileName(0, "ignored");
    list->SetFocus();
    Type("t");
    EXPECT_EQ(list->GetFirstSel(), 1);
    list->SourceSorted(0, kSortedDescending);
    EXPECT_EQ(list->GetFirstSel(), -1); // it does not know where the row is
    Draw();
}

} // namespace
} // namespace vnbytstr::test

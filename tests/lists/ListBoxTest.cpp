#include "tests/lists/ListFixture.h"

#include "tests/support/TestSystem.h"

#include <random>
#include <set>

namespace vnbytstr::test {
namespace {

class ListBox : public ListFixture {};

TEST_F(ListBox, RowsAreJoinedAndTakenApart) {
    EXPECT_EQ(list->InsertStringItems(1, "x", nullptr, "7"), 1);
    EXPECT_EQ(Cell(1, 0) + "|" + Cell(1, 1) + "|" + Cell(1, 2), "x||7");
    EXPECT_TRUE(list->UpdateStringItem(1, 1, "Rom"));
    CString name, number;
    EXPECT_TRUE(list->GetStringItems(1, &name, nullptr, &number));
    EXPECT_STREQ(name + number, "x7");
    EXPECT_EQ(Cell(1, 1), "Rom");
    char raw[32] = "";
    list->SendMessage(LB_GETTEXT, 1, reinterpret_cast<LPARAM>(raw));
    EXPECT_STREQ(raw, "x\tRom\t7");

    EXPECT_FALSE(list->UpdateStringItem(99, 0, "no"));
    EXPECT_FALSE(list->UpdateStringItem(1, 3, "no"));
    EXPECT_FALSE(list->GetStringItem(-1, 0, name));
    EXPECT_TRUE(name.IsEmpty());

    list->SetNumColumns(0);
    list->ResetContent();
    EXPECT_EQ(list->AddStringItems("whole\trow", "ignored"), 0);
    EXPECT_EQ(Cell(0, 0), "whole\trow");
}

TEST_F(ListBox, TheSeparatorIsAChoice) {
    list->ResetContent();
    list->SetSeparator(nullptr);
    EXPECT_STREQ(list->GetSeparator(), "\t");
    EXPECT_STREQ(list->CleanValue("a\tb\t"), "a b ");
    list->SetSeparator("\x1F");
    list->AddStringItems("tab\there", "b", "c");
    EXPECT_EQ(Cell(0, 0), "tab\there");
    EXPECT_EQ(Cell(0, 2), "c");
}

TEST_F(ListBox, TheSelection) {
    EXPECT_FALSE(list->HasSel());
    EXPECT_EQ(list->GetFirstSel(), -1);
    list->SetOnlySel(3);
    EXPECT_EQ(list->GetFirstSel(), 3);
    list->SetOnlySel(99);
    EXPECT_EQ(list->GetFirstSel(), 3);
    Click(CellPoint(1, 0), Qt::RightButton);
    EXPECT_EQ(list->GetFirstSel(), 1);

    Make(LBS_EXTENDEDSEL);
    list->SendMessage(LB_SETSEL, TRUE, 1);
    list->SendMessage(LB_SETSEL, TRUE, 3);
    EXPECT_EQ(list->GetFirstSel(), 1);
    Click(CellPoint(3, 0), Qt::RightButton); // selected already: the selection stays
    EXPECT_EQ(list->SendMessage(LB_GETSELCOUNT), 2);
    list->SetOnlySel(2);
    EXPECT_EQ(list->SendMessage(LB_GETSELCOUNT), 1);
    EXPECT_EQ(list->GetFirstSel(), 2);
}

TEST_F(ListBox, WidthsAreComputedOnceWhenTheListIsSeen) {
    Make(WS_VSCROLL);
    list->MoveWindow(0, 60, 0, 0);
    list->SetNumColumns(3);
    list->SetColumnWidth(0, 100);
    list->SetFractionalColumnWidth(1, 25);
    list->StartEditing(0, 0);
    Pump();
    EXPECT_EQ(list->GetColumnWidth(1), 0); // no room yet
    list->MoveWindow(0, 60, 300, 50);
    Pump();
    parent.GetWidget()->grab();
    CRect client;
    list->GetClientRect(client);
    const int usable = client.Width() + GetSystemMetrics(SM_CXVSCROLL) - 1; // the bar's, too
    const int quarter = (usable * 25 + 50) / 100;
    EXPECT_EQ(list->GetColumnWidth(1), quarter);
    EXPECT_EQ(list->GetColumnWidth(2), (usable - 100 - quarter) / 2); // not the whole rest
    list->SetColumnWidth(2, 0);
    parent.GetWidget()->grab();
    EXPECT_EQ(list->GetColumnWidth(2), 0);
}

TEST_F(ListBox, SortsAlternateAndKeepTheSelection) {
    list->SetOnlySel(2); // charlie
    EXPECT_TRUE(list->Sort(0));
    EXPECT_EQ(Column(0), "Alpha bravo charlie delta echo"); // case does not matter
    EXPECT_EQ(list->GetFirstSel(), 2);
    EXPECT_EQ(list->GetSortState(), kSortedAscending);
    EXPECT_TRUE(list->Sort(0));
    EXPECT_EQ(Column(0), "echo delta charlie bravo Alpha");
    EXPECT_TRUE(list->Sort(2)); // another column starts ascending; numbers as numbers
    EXPECT_EQ(Column(0), "bravo echo Alpha delta charlie"); // equal ones as they stood
    EXPECT_TRUE(list->Sort(2));
    EXPECT_EQ(Column(0), "charlie delta Alpha echo bravo"); // and exactly reversed
    EXPECT_EQ(list->GetSortState(), kSortedDescending);
    EXPECT_EQ(list->GetFirstSel(), 0);
    EXPECT_FALSE(list->Sort(3));
    EXPECT_FALSE(list->Sort(-1));
    list->ResetContent();
    EXPECT_EQ(list->GetSortState(), kNotSorted);
    EXPECT_TRUE(list->Sort(0)); // an empty list is sorted
    list->SetNumColumns(3);
    EXPECT_EQ(list->GetSortColumn(), -1);
    EXPECT_EQ(list->GetSortState(), kNotSorted);

    Make(LBS_SORT);
    EXPECT_FALSE(list->Sort(0));
    EXPECT_EQ(list->SortInternal(0), nullptr);

    Make(LBS_MULTIPLESEL);
    for (const int row : {0, 1})
        list->SendMessage(LB_SETSEL, TRUE, row);
    list->Sort(0);
    EXPECT_GT(list->SendMessage(LB_GETSEL, 0), 0); // Alpha
    EXPECT_GT(list->SendMessage(LB_GETSEL, 3), 0); // delta
    EXPECT_EQ(list->SendMessage(LB_GETSELCOUNT), 2);
}

TEST_F(ListBox, SortInternalTellsWhereRowsCameFrom) {
    list->SetOnlySel(1);
    const std::unique_ptr<SSortItem[]> items(list->SortInternal(0));
    ASSERT_NE(items, nullptr);
    EXPECT_STREQ(items[0].m_strValue, "Alpha");
    EXPECT_EQ(items[0].m_nIndex, 1);
    EXPECT_EQ(items[0].m_nSelected, 1);
    EXPECT_EQ(items[1].m_nIndex, 3);
    EXPECT_EQ(items[1].m_nSelected, 0);
}

TEST_F(ListBox, WhatBelongsToARowGoesAlong) {
    EXPECT_EQ(list->GetFileName(3), nullptr);
    list->AddFileName(3, "/tmp/c");
    list->SetDragDrop(3, TRUE);
    list->SetEditSubType(3, 3);
    list->SetEditDataType(3, kDataBlob);
    EXPECT_EQ(list->GetFileName(4), nullptr);
    EXPECT_EQ(list->GetFileName(1000), nullptr);
    EXPECT_EQ(list->GetEditSubType(1), 1); // between rows that were set
    EXPECT_EQ(list->GetEditSubType(4), 1);
    EXPECT_EQ(list->GetEditDataType(0), 0);

    const auto at = [this](int row) {
        return list->GetDragDrop(row) && list->GetEditSubType(row) == 3 &&
               list->GetEditDataType(row) == kDataBlob &&
               CString(list->GetFileName(row)) == CString("/tmp/c");
    };
    list->InsertStringItems(0, "new", "", "");
    EXPECT_TRUE(at(4));
    EXPECT_FALSE(list->GetDragDrop(3));
    list->SendMessage(LB_DELETESTRING, 1);
    EXPECT_TRUE(at(3));
    list->Sort(0); // Alpha bravo charlie echo new
    EXPECT_TRUE(at(1));
    list->Sort(0);
    EXPECT_TRUE(at(3));
    list->SendMessage(LB_DELETESTRING, 3);
    for (int row = 0; row < 4; ++row) {
        EXPECT_FALSE(list->GetDragDrop(row)) << row;
        EXPECT_EQ(list->GetFileName(row), nullptr) << row;
    }

    list->SetDragDrop(0, TRUE);
    list->SetEditDataType(0, kDataBlob);
    list->SetDragDrop(99, TRUE); // ignored
    EXPECT_FALSE(list->GetDragDrop(99));
    list->ResetContent();
    list->AddStringItems("a", "b", "c");
    EXPECT_FALSE(list->GetDragDrop(0));
    EXPECT_EQ(list->GetEditDataType(0), 0);
}

TEST_F(ListBox, LargeObjectsAreShownByTheirKind) {
    const auto shown = [this](const char* value, int type) {
        list->SetEditDataType(0, static_cast<short>(type));
        CString text(value);
        list->GetDisplayString(text, 0);
        return text;
    };
    EXPECT_STREQ(shown("bytes", 0), "bytes");
    for (const char* kept : {"-", "+", ""}) // null, default
        EXPECT_STREQ(shown(kept, kDataBlob), kept);
    std::set<std::string> kinds;
    for (const int kind : {404, 408, 412, 960, 964, 968})
        kinds.insert(std::string(shown("bytes", kind)));
    EXPECT_EQ(kinds.size(), 6u);
    EXPECT_EQ(kinds.count("bytes"), 0u);
    EXPECT_EQ(shown("bytes", 404), shown("bytes", 988));
}

TEST_F(ListBox, TypingFindsARow) {
    TestSystem system;
    const ScopedSystem scope(system);
    system.SetTick(10'000);
    Type("c"); // off by default
    list->SendMessage(LB_SETCURSEL, static_cast<WPARAM>(-1));
    list->SetPrintInput(TRUE);
    list->AddStringItems("Ägypten", "", "");
    list->AddStringItems("cherry", "", "");
    Type("c");
    EXPECT_EQ(list->GetFirstSel(), 2); // charlie
    Type("h");
    EXPECT_EQ(list->GetFirstSel(), 6); // the next row with "ch" after the selection
    system.SetTick(11'001);
    Type("b");
    EXPECT_EQ(list->GetFirstSel(), 3);
    system.SetTick(20'000);
    Type("zz");
    EXPECT_EQ(list->GetFirstSel(), 3); // nothing found: nothing changes
    system.SetTick(30'000);
    for (const char ch : std::string("Ä")) // a character of two bytes comes as two messages
        list->SendMessage(WM_CHAR, static_cast<unsigned char>(ch), 1);
    EXPECT_EQ(list->GetFirstSel(), 5);
}

TEST_F(ListBox, EnablingReadOnlyAndAlignment) {
    ASSERT_TRUE(list->CreateHeadingsControl(1001));
    EXPECT_TRUE(list->EnableWindow(FALSE));
    EXPECT_FALSE(list->GetHeadings()->IsWindowEnabled());
    EXPECT_TRUE(list->EnableWindow(TRUE));
    EXPECT_TRUE(list->GetHeadings()->IsWindowEnabled());
    list->SetReadOnly(TRUE);
    EXPECT_FALSE(list->IsWindowEnabled());
    list->SetReadOnly(FALSE);
    EXPECT_TRUE(list->IsWindowEnabled());

    list->SetRightAligned(TRUE);
    EXPECT_EQ(list->GetExStyle() & 0x7000, 0x7000u);
    list->SetRightAligned(FALSE);
    EXPECT_EQ(list->GetExStyle() & 0x7000, 0u);
}

TEST_F(ListBox, TheSelectionAsText) {
    Make(LBS_EXTENDEDSEL);
    list->UpdateStringItem(1, 1, "a \"b\"\n");
    list->SendMessage(LB_SETSEL, TRUE, 1);
    list->SendMessage(LB_SETSEL, TRUE, 4);
    EXPECT_STREQ(list->GetSelectionText(TRUE),
                 "Name\tCity\tNumber\r\nAlpha\t\"a \"\"b\"\"\n\"\t9\r\necho\tEnns\t9\r\n");
    SetClipboardText("before");
    Key(Qt::Key_C, Qt::ControlModifier); // off by default
    CString text;
    GetClipboardText(text);
    EXPECT_STREQ(text, "before");
    list->EnableCopy();
    Key(Qt::Key_C, Qt::ControlModifier);
    GetClipboardText(text);
    EXPECT_EQ(text, list->GetSelectionText(TRUE));
}

TEST_F(ListBox, FittingMakesRoomForHeadingAndValues) {
    list->UpdateStringItem(3, 0, "a name that is very much longer than the others");
    list->AutoFitCol(0);
    const int wide = list->GetColumnWidth(0);
    EXPECT_GT(wide, 200);
    list->UpdateStringItem(3, 0, "b");
    list->AutoFitCol(0);
    EXPECT_LT(list->GetColumnWidth(0), 100);
    list->SetColumnName(0, "A heading that is longer than all of the values");
    list->AutoFitCol(0);
    EXPECT_GT(list->GetColumnWidth(0), 200);
    list->AutoFitCol(7);
    list->FitAllColumns();
    EXPECT_LT(list->GetColumnWidth(1), 100);

    list->SetColumnName(0, "n");
    for (int i = 0; i < 3000; ++i)
        list->AddStringItems("x", "y", "z");
    list->UpdateStringItem(2500, 0, "a name that is very much longer than the others");
    list->AutoFitCol(0); // found among many, though it is not visible
    EXPECT_EQ(list->GetColumnWidth(0), wide);
}

TEST_F(ListBox, ManyColumnsAndHugeValues) {
    list->SetNumColumns(1000);
    std::string row;
    for (int i = 0; i < 1000; ++i)
        row += "v" + std::to_string(i) + "\t";
    list->ResetContent();
    list->SendMessage(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row.c_str()));
    EXPECT_EQ(Cell(0, 999), "v999");
    const std::string huge(100'000'000, 'x');
    EXPECT_TRUE(list->UpdateStringItem(0, 1, huge.c_str()));
    parent.GetWidget()->grab();
    list->AutoFitCol(1);
    EXPECT_EQ(Cell(0, 1).size(), huge.size());
    EXPECT_EQ(Cell(0, 999), "v999");
}

TEST_F(ListBox, WithoutAWindowNothingHappens) {
    TestList unmade;
    unmade.SetNumColumns(2);
    EXPECT_EQ(unmade.AddStringItems("a", "b"), LB_ERR);
    EXPECT_EQ(unmade.GetCount(), 0);
    EXPECT_EQ(unmade.GetFirstSel(), -1);
    EXPECT_FALSE(unmade.Sort(0));
    EXPECT_FALSE(unmade.CreateHeadingsControl(5));
    unmade.StartEditing(0, 0);
    unmade.CellCancel();
    unmade.StopEditing();
    unmade.ResetContent();
    unmade.AutoFitCol(0);
    unmade.SetRightAligned(TRUE);
    EXPECT_FALSE(unmade.EnableWindow(TRUE));
    EXPECT_FALSE(unmade.LoadColumnInfo(65'000, nullptr)); // no such string
    int row = 0, column = 0;
    unmade.HitTest({1, 1}, row, column);
    EXPECT_EQ(row, -1);
}

TEST_F(ListBox, EachRowKeepsItsTooltip) {
    list->ResetContent();
    list->ResetTips();
    std::mt19937 random(5);
    for (int i = 0; i < 40; ++i) {
        const int at = static_cast<int>(random() % static_cast<unsigned>(list->GetCount() + 1));
        const std::string name = std::to_string(random() % 1000);
        list->InsertStringItems(at, name.c_str(), "", "");
        list->SetItemTip(at, name.c_str());
        if (i % 9 == 8)
            list->Sort(0);
        for (int row = 0; row < list->GetCount(); ++row)
            ASSERT_EQ(Cell(row, 0), std::string(list->GetItemTip(list->GetItemIndex(row))));
    }
    list->SetDataTip({10, RowHeight() / 2});
    EXPECT_TRUE(list->IsTipShown());
    list->SetDataTip({10, 190 + 10 * RowHeight() * 40});
    EXPECT_FALSE(list->IsTipShown());
    list->AddStringItems("without tooltip", "", "");
    list->SetDataTip({10, RowHeight() / 2});
    EXPECT_FALSE(list->IsTipShown()); // one row has none: no row shows one
    list->SetItemTip(500, "no such row");
    EXPECT_EQ(list->GetItemTip(-1), CString());
}

} // namespace
} // namespace vnbytstr::test

// A list whose rows a source supplies: what it asks for, and that it behaves as one with texts.
#include "tests/lists/ListFixture.h"

#include "tests/support/TestSystem.h"
#include "vnbytstr/ListRowSource.h"

#include <QAccessible>
#include <QAccessibleInterface>
#include <QImage>

#include <algorithm>
#include <climits>
#include <mutex>
#include <numeric>
#include <set>
#include <thread>

namespace vnbytstr::test {
namespace {

/// The fixture's five rows, or any number of rows made up; records what it is asked for.
class TestSource : public CListRowSource {
public:
    TestSource() = default;
    explicit TestSource(int madeUp) : count(madeUp) {}

    int GetRowCount() override { return count >= 0 ? count : static_cast<int>(rows.size()); }
    void GetCell(int row, int column, std::string& text) override {
        EXPECT_TRUE(text.empty());
        ASSERT_TRUE(row >= 0 && row < GetRowCount()) << row;
        ++asked;
        askedRows.insert(row);
        askedColumns.insert(column);
        if (count < 0)
            text = rows[Index(row)][Index(column)];
        else
            text = std::to_string(row) + "." + std::to_string(column);
        if (onGet)
            onGet();
    }
    bool SetCell(int row, int column, std::string_view text) override {
        stored.push_back(std::to_string(row) + "," + std::to_string(column) + ":" +
                         std::string(text));
        if (onSet && !onSet())
            return false;
        rows[Index(row)][Index(column)] = text;
        return true;
    }
    ESortAnswer SortRows(int column, bool ascending) override {
        sorts.push_back((ascending ? "up " : "down ") + std::to_string(column));
        if (sortAnswer == ESortAnswer::Sorted)
            SortNow(column, ascending);
        return sortAnswer;
    }
    void SortNow(int column, bool ascending) {
        order.resize(rows.size());
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
            return rows[Index(ascending ? a : b)][Index(column)] <
                   rows[Index(ascending ? b : a)][Index(column)];
        });
        auto sorted = rows;
        for (std::size_t i = 0; i < rows.size(); ++i)
            sorted[i] = rows[Index(order[i])];
        rows.swap(sorted);
    }
    int GetSortedRow(int before) override {
        const auto found = std::find(order.begin(), order.end(), before);
        return found != order.end() ? static_cast<int>(found - order.begin()) : -1;
    }
    bool TakesFiles(int row) override { return row == 1; }
    short GetEditSubType(int row) override { return row == 1 ? kEditorFile : 1; }
    short GetEditDataType(int row) override { return row == 2 ? kDataBlob : 0; }
    bool GetFileName(int row, std::string& name) override {
        name = row == 1 ? fileName : "";
        return row == 1;
    }
    void SetFileName(int, std::string_view name) override { fileName = name; }

    /// Forgets what was asked.
    void Reset() {
        asked = 0;
        askedRows.clear();
        askedColumns.clear();
    }
    static std::size_t Index(int at) { return static_cast<std::size_t>(at); }

    std::vector<std::vector<std::string>> rows;
    int count = -1;
    int asked = 0;
    std::set<int> askedRows;
    std::set<int> askedColumns;
    std::vector<std::string> stored;
    std::vector<std::string> sorts;
    std::vector<int> order;
    std::string fileName = "/tmp/of-row-1";
    ESortAnswer sortAnswer = ESortAnswer::Sorted;
    std::function<void()> onGet;
    std::function<bool()> onSet;
};

class RowSource : public ListFixture {
protected:
    void SetUp() override {
        ListFixture::SetUp();
        for (const auto& row : kRows)
            source.rows.push_back({row[0], row[1], row[2]});
    }
    QImage Draw() {
        Pump();
        return parent.GetWidget()->grab().toImage();
    }
    int Top() { return static_cast<int>(list->SendMessage(LB_GETTOPINDEX)); }
    int Visible() {
        CRect client;
        list->GetClientRect(client);
        return (client.Height() + RowHeight() - 1) / RowHeight();
    }
    std::string Selection() { return std::string(list->GetSelectionText(FALSE)); }

    TestSource source; ///< of the fixture's rows
};

constexpr DWORD kSelections[] = {0, LBS_MULTIPLESEL, LBS_EXTENDEDSEL};
constexpr int kMany = 10'000'000;

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

TEST_F(RowSource, AnEditorStaysWithItsRow) {
    Make(WS_VSCROLL);
    TestSource many(100);
    list->SetRowSource(&many);
    list->SetEditorType(0, kEditorText);
    list->SendMessage(LB_SETTOPINDEX, 50);
    EditAndType(55, 0, "typed");
    many.count = 57; // the last rows now end at the bottom: the view scrolls
    list->RowsChanged();
    EXPECT_LT(Top(), 50);
    EXPECT_EQ(EditorRect().top, (55 - Top()) * RowHeight());
    many.count = 55; // its row is gone
    list->RowsChanged();
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(parent.Take(), Asked{});
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

/// Rows that take a millisecond each: the search must leave the list in between.
TEST_F(RowSource, TypingSearchesInPieces) {
    list->SetRowSource(&source);
    list->SetPrintInput(TRUE);
    source.rows.assign(400, {"same", "", ""});
    source.rows[350][0] = "wanted";
    source.onGet = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); };
    list->RowsChanged();
    list->SendMessage(WM_SETREDRAW, FALSE);
    list->SetOnlySel(360);
    source.Reset();
    list->SendMessage(WM_CHAR, 'w', 1);
    EXPECT_EQ(list->GetFirstSel(), 360);
    EXPECT_LE(source.asked, 100);
    for (int i = 0; i < 200 && list->GetFirstSel() == 360; ++i)
        Pump();
    EXPECT_EQ(list->GetFirstSel(), 350);          // round the end
    EXPECT_LE(source.asked, 391 + 6 * Visible()); // each row once, and what was drawn

    // A search that the user left.
    list->SendMessage(WM_CHAR, 'x', 1);
    list->SetOnlySel(5);
    source.Reset();
    for (int i = 0; i < 5; ++i)
        Pump();
    EXPECT_EQ(source.asked, 0);
    EXPECT_EQ(list->GetFirstSel(), 5);
    // A search in a source that is taken away, and one that ends nowhere.
    list->SendMessage(WM_CHAR, 'y', 1);
    source.onGet = nullptr;
    for (int i = 0; i < 5; ++i)
        Pump();
    EXPECT_EQ(list->GetFirstSel(), 5);
    list->SendMessage(WM_CHAR, 'z', 1);
    list->SetRowSource(nullptr);
    Pump();
}

TEST_F(RowSource, EditorsStoreInTheSource) {
    list->SetRowSource(&source);
    list->SetEditorType(0, kEditorText);
    list->SetEditorType(2, kEditorNumber);
    EditAndType(3, 0, "new");
    Key(Qt::Key_Return);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(source.stored, (std::vector<std::string>{"3,0:new"}));
    EXPECT_EQ(parent.Take(), (Asked{"store 0 new", "closed"}));
    EXPECT_EQ(Cell(3, 0), "new");

    EditAndType(4, 2, "17");
    source.onSet = [this] { // as a message box does
        parent.SetFocus();
        return false;
    };
    source.stored.clear();
    Key(Qt::Key_Tab);
    EXPECT_EQ(source.stored.size(), 1U);
    EXPECT_TRUE(IsOpenAt(4, 2)); // refused: it stays, with its text
    list->GetActiveEditor()->SetFocus();
    source.onSet = [] { return false; };
    EXPECT_EQ(EditorText(), "17");
    EXPECT_EQ(Cell(4, 2), "9");
    Key(Qt::Key_Escape);
    EXPECT_FALSE(IsOpen());

    list->SetOnlySel(0);
    int shown = 0;
    list->onZoom = [&](CString& value) {
        value = "zoomed";
        return ++shown < 3 ? IDOK : IDCANCEL; // refused: shown again
    };
    Key(Qt::Key_F2, Qt::ShiftModifier);
    EXPECT_EQ(list->zooms, (std::vector<std::string>{"0,0:delta", "0,0:zoomed", "0,0:zoomed"}));
    EXPECT_FALSE(list->UpdateStringItem(0, 0, "x"));

    source.onSet = [this] { // takes the row away, and itself
        source.rows.resize(2);
        list->RowsChanged();
        return false;
    };
    EditAndType(4, 0, "gone");
    Key(Qt::Key_Return);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(list->GetCount(), 2);
    source.onSet = [this] {
        list->SetRowSource(nullptr);
        return true;
    };
    EditAndType(0, 0, "last");
    Key(Qt::Key_Return);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(list->GetCount(), 0);

    list->SetRowSource(&source);
    source.onSet = [this] {
        list.reset();
        return true;
    };
    EditAndType(1, 2, "5");
    Key(Qt::Key_Return);
    EXPECT_EQ(list, nullptr);
}

TEST_F(RowSource, SourcesSortThemselves) {
    Make(LBS_EXTENDEDSEL);
    ASSERT_TRUE(list->CreateHeadingsControl(1001));
    list->EnableSort();
    list->SetRowSource(&source);
    EXPECT_EQ(list->SortInternal(0), nullptr);
    EXPECT_FALSE(list->Sort(3));
    list->SendMessage(LB_SETSEL, TRUE, 2); // charlie
    list->SendMessage(LB_SETSEL, TRUE, 4); // echo
    Mouse(*list->GetHeadings(), QEvent::MouseButtonPress, {30, 8});
    Mouse(*list->GetHeadings(), QEvent::MouseButtonRelease, {30, 8});
    EXPECT_EQ(Column(0), "Alpha bravo charlie delta echo");
    EXPECT_EQ(list->GetSortState(), kSortedAscending);
    EXPECT_EQ(Selection(), "charlie\tWien\t100\r\necho\tEnns\t9\r\n"); // the same rows
    EXPECT_TRUE(list->Sort(0));
    EXPECT_EQ(list->GetSortState(), kSortedDescending);
    EXPECT_EQ(Selection(), "echo\tEnns\t9\r\ncharlie\tWien\t100\r\n");
    EXPECT_EQ(list->SendMessage(LB_GETCARETINDEX), 0);

    source.sortAnswer = ESortAnswer::NotSorted;
    EXPECT_FALSE(list->Sort(1));
    EXPECT_EQ(list->GetSortColumn(), 0);
    source.sortAnswer = ESortAnswer::Later;
    EXPECT_FALSE(list->Sort(1));
    EXPECT_EQ(list->GetSortColumn(), 0); // not yet
    EXPECT_EQ(Column(0), "echo delta charlie bravo Alpha");
    source.SortNow(1, true);
    list->SourceSorted(1, kSortedAscending);
    EXPECT_EQ(list->GetSortColumn(), 1);
    EXPECT_EQ(Column(1), "Enns Graz Linz Linz Wien");
    EXPECT_EQ(source.sorts, (std::vector<std::string>{"up 0", "down 0", "up 1", "up 1"}));

    // Rows that the source lost sight of, an open editor among them.
    list->SetEditorType(0, kEditorText);
    EditAndType(1, 0, "typed");
    source.order.clear();
    list->SourceSorted(-1, kNotSorted);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(list->GetSortColumn(), -1);
    EXPECT_EQ(list->GetFirstSel(), -1);
    // An editor whose row is known moves with it.
    EditAndType(0, 0, "typed");
    source.SortNow(0, true);
    const int now = source.GetSortedRow(0);
    list->SourceSorted(0, kSortedAscending);
    EXPECT_TRUE(IsOpenAt(now, 0));
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(now, 0), "typed");
}

TEST_F(RowSource, TextsAreRefusedAndCopied) {
    Make(LBS_EXTENDEDSEL);
    list->SetRowSource(&source);
    EXPECT_EQ(list->AddStringItems("a", "b", "c"), LB_ERR);
    EXPECT_EQ(list->InsertStringItems(0, "a", "b", "c"), LB_ERR);
    for (const UINT message : {LB_ADDSTRING, LB_INSERTSTRING, LB_DELETESTRING, LB_FINDSTRING})
        EXPECT_EQ(list->SendMessage(message, 0, reinterpret_cast<LPARAM>("delta")), LB_ERR);
    list->SetItemTip(0, "tip");
    EXPECT_EQ(list->GetItemIndex(0), -1);
    EXPECT_EQ(list->GetCount(), 5);

    TestSource many(kMany);
    list->SetRowSource(&many);
    list->EnableCopy();
    list->SendMessage(LB_SELITEMRANGEEX, 9'000'000, 9'000'001);
    list->SendMessage(LB_SETSEL, TRUE, 7);
    list->SetFocus();
    many.Reset();
    Key(Qt::Key_C, Qt::ControlModifier);
    CString text;
    GetClipboardText(text);
    EXPECT_STREQ(text, "Name\tCity\tNumber\r\n7.0\t7.1\t7.2\r\n"
                       "9000000.0\t9000000.1\t9000000.2\r\n9000001.0\t9000001.1\t9000001.2\r\n");
}

TEST_F(RowSource, ScreenReadersReadTheSource) {
    TestSource many(kMany);
    Make(WS_VSCROLL | LBS_EXTENDEDSEL);
    list->SetRowSource(&many);
    list->SetEditorType(2, kEditorText);
    QAccessibleInterface* root = QAccessible::queryAccessibleInterface(Widget());
    ASSERT_NE(root, nullptr);
    QAccessibleTableInterface* table = root->tableInterface();
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->rowCount(), kMany);
    EXPECT_EQ(root->childCount(), (kMany + 1) * 3);
    QAccessibleInterface* cell = table->cellAt(kMany - 1, 2);
    EXPECT_EQ(cell->text(QAccessible::Name).toStdString(), std::to_string(kMany - 1) + ".2");
    EXPECT_TRUE(cell->state().offscreen);
    EXPECT_TRUE(cell->state().editable);
    EXPECT_TRUE(table->selectRow(kMany - 2));
    EXPECT_TRUE(table->selectRow(5));
    EXPECT_EQ(table->selectedRows(), (QList<int>{5, kMany - 2}));
    EXPECT_EQ(root->child(4)->text(QAccessible::Name).toStdString(), "0.1");
    many.count = 1'000'000'000; // more cells than children can be counted
    list->RowsChanged();
    EXPECT_EQ(root->childCount(), INT_MAX);
    EXPECT_EQ(table->cellAt(999'999'999, 1)->text(QAccessible::Name).toStdString(), "999999999.1");
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

TEST_F(RowSource, WhatBelongsToARowIsAskedFor) {
    list->SetRowSource(&source);
    list->SetDragDrop(0, TRUE);
    list->SetEditSubType(0, kEditorFolder);
    list->SetEditDataType(0, kDataClob);
    EXPECT_FALSE(list->GetDragDrop(0));
    EXPECT_TRUE(list->GetDragDrop(1));
    EXPECT_EQ(list->GetEditSubType(0), 1);
    EXPECT_EQ(list->GetEditSubType(1), kEditorFile);
    EXPECT_EQ(list->GetEditDataType(2), kDataBlob);
    EXPECT_FALSE(list->GetDragDrop(5));
    EXPECT_EQ(list->GetFileName(0), nullptr);
    EXPECT_STREQ(list->GetFileName(1), "/tmp/of-row-1");
    CString value("bytes");
    list->GetDisplayString(value, 2);
    EXPECT_STRNE(value, "bytes");
    list->SetEditorType(0, kEditorText);
    EditAndType(1, 0, "/tmp/other");
    Key(Qt::Key_Return);
    EXPECT_EQ(source.fileName, "/tmp/other");
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

TEST_F(RowSource, ListsAndSourcesEndInAnyOrder) {
    auto ending = std::make_unique<TestSource>();
    TestList second;
    ASSERT_TRUE(second.Create("LISTBOX", "", WS_CHILD | WS_VISIBLE | LBS_OWNERDRAWFIXED,
                              CRect(0, 0, 50, 50), &parent, 7));
    list->SetRowSource(ending.get());
    second.SetRowSource(ending.get());
    second.SetRowSource(ending.get());
    list->SetEditorType(0, kEditorText);
    EditAndType(2, 0, "typed");
    ending.reset();
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(list->GetRowSource(), nullptr);
    EXPECT_EQ(second.GetRowSource(), nullptr);
    EXPECT_EQ(list->GetCount(), 0);
    EXPECT_EQ(list->AddStringItems("text", "again", "1"), 0);
    EXPECT_EQ(Cell(0, 1), "again");
    EXPECT_TRUE(list->Sort(0));
    second.SetRowSource(&source);
    second.DestroyWindow();
    EXPECT_EQ(second.GetRowSource(), nullptr);
    EXPECT_FALSE(second.SetRowSource(&source)); // no window
    list->SetRowSource(&source);
    list.reset();

    Make(LBS_SORT);
    EXPECT_FALSE(list->SetRowSource(&source));
    EXPECT_EQ(list->GetCount(), 5);
    list->RowsChanged(); // without a source: nothing
    list->RowChanged(0);
    list->SourceSorted(0, kSortedAscending);
    EXPECT_EQ(list->GetSortColumn(), -1);
}

/// Rows that a thread adds while they are shown, scrolled and searched.
TEST_F(RowSource, AThreadMayAddRows) {
    class Growing : public CListRowSource {
    public:
        int GetRowCount() override {
            const std::lock_guard lock(m_mutex);
            return static_cast<int>(m_rows.size());
        }
        void GetCell(int row, int column, std::string& text) override {
            const std::lock_guard lock(m_mutex);
            text = m_rows[static_cast<std::size_t>(row)] + "." + std::to_string(column);
        }
        void Add() {
            const std::lock_guard lock(m_mutex);
            m_rows.push_back("row " + std::to_string(m_rows.size()));
        }

    private:
        std::mutex m_mutex;
        std::vector<std::string> m_rows;
    } growing;
    constexpr int kRows = 30'000;
    Make(WS_VSCROLL | LBS_EXTENDEDSEL);
    list->SetRowSource(&growing);
    list->SetPrintInput(TRUE);
    std::thread adding([&growing] {
        for (int i = 0; i < kRows; ++i)
            growing.Add();
    });
    int before = 0;
    while (list->GetCount() < kRows) {
        list->RowsChanged();
        EXPECT_GE(list->GetCount(), before);
        before = list->GetCount();
        list->SendMessage(LB_SETTOPINDEX, static_cast<WPARAM>(before / 2));
        list->SendMessage(WM_CHAR, 'r', 1);
        parent.GetWidget()->grab();
        Pump();
    }
    adding.join();
    EXPECT_EQ(Cell(kRows - 1, 2), "row 29999.2");
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

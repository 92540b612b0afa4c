// A list of a source: typing, sorting, threads, and who ends first.
#include "tests/lists/SourceFixture.h"

#include "tests/support/TestSystem.h"

#include <mutex>
#include <thread>

namespace vnbytstr::test {
namespace {

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

} // namespace
} // namespace vnbytstr::test

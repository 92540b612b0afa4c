// The filter of a list: which rows are shown, what belongs to them, and the fields to type in.
#include "tests/lists/ListFixture.h"

#include "vnbytstr/ListRowSource.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <random>

namespace vnbytstr::test {
namespace {

class Filtered : public ListFixture {
protected:
    /// Numbers without the filter of the selected rows.
    std::string Selected() {
        std::string text;
        for (int row = ListBoxNextSelected(list->m_hWnd, 0); row >= 0;
             row = ListBoxNextSelected(list->m_hWnd, row + 1))
            text += std::to_string(list->GetUnfilteredRow(row)) + " ";
        return text;
    }
};

TEST_F(Filtered, ShowsTheRowsThatMatch) {
    EXPECT_TRUE(list->SetColumnFilter(1, "LIN"));
    EXPECT_EQ(Column(0), "Alpha bravo");
    EXPECT_EQ(list->GetUnfilteredCount(), 5);
    EXPECT_EQ(list->GetUnfilteredRow(1), 3);
    EXPECT_EQ(list->GetUnfilteredRow(2), -1);
    EXPECT_EQ(list->GetFilteredRow(3), 1);
    EXPECT_EQ(list->GetFilteredRow(2), -1);
    EXPECT_TRUE(list->SetColumnFilter(2, "<0")); // numbers: the column's type
    EXPECT_EQ(Column(0), "bravo");
    EXPECT_TRUE(list->SetColumnFilter(1, ""));
    EXPECT_EQ(Column(0), "bravo");
    EXPECT_TRUE(list->SetColumnFilter(2, "9..100"));
    EXPECT_EQ(Column(0), "delta Alpha charlie echo");
    EXPECT_EQ(list->GetColumnFilter(2), CString("9..100"));
    EXPECT_FALSE(list->SetColumnFilter(3, "x"));
    EXPECT_TRUE(list->ClearFilter());
    EXPECT_EQ(Column(0), "delta Alpha charlie bravo echo");
    EXPECT_FALSE(list->IsFiltered());
    list->SetColumnFilter(0, "a");
    list->SetNumColumns(3); // other columns: no conditions
    EXPECT_FALSE(list->IsFiltered());
    EXPECT_EQ(list->GetCount(), 5);
}

TEST_F(Filtered, RowsKeepWhatBelongsToThem) {
    // Against a model, while rows come, go, change and are sorted.
    struct Entry {
        std::string name;
        int number;
        short type;
        std::string file;
    };
    list->ResetContent();
    std::mt19937 random(11);
    std::vector<Entry> model;
    const auto make = [&](int i) {
        return Entry{std::string(1, static_cast<char>('a' + random() % 4)) +
                         static_cast<char>('a' + random() % 4),
                     i, static_cast<short>(i % 7), i % 3 == 0 ? "/f" + std::to_string(i) : ""};
    };
    const auto adorn = [&](int row, const Entry& entry) {
        list->SetEditDataType(row, entry.type);
        if (!entry.file.empty())
            list->AddFileName(row, entry.file.c_str());
    };
    std::string condition;
    const auto matches = [&](const Entry& entry) {
        return entry.name.find(condition) != std::string::npos;
    };
    int next = 0;
    for (; next < 40; ++next) {
        model.push_back(make(next));
        adorn(list->AddStringItems(model.back().name.c_str(), std::to_string(next).c_str(), ""),
              model.back());
    }
    for (int turn = 0; turn < 300; ++turn) {
        const int count = list->GetCount();
        const int row = count > 0 ? static_cast<int>(random() % static_cast<unsigned>(count)) : 0;
        const int place = std::max(0, list->GetUnfilteredRow(row));
        switch (random() % 6) {
        case 0: // with another beginning, narrower, wider, or none
            condition = random() % 3 == 0 ? "" : std::string(1, static_cast<char>('a' + turn % 4));
            if (random() % 2 == 0 && !condition.empty())
                condition += 'b';
            list->SetColumnFilter(0, condition.c_str());
            break;
        case 1:
            model.push_back(make(next));
            adorn(list->AddStringItems(model.back().name.c_str(), std::to_string(next).c_str(), ""),
                  model.back());
            ++next;
            break;
        case 2: {
            const Entry entry = make(next);
            adorn(
                list->InsertStringItems(row, entry.name.c_str(), std::to_string(next).c_str(), ""),
                entry);
            model.insert(count > 0 ? model.begin() + place : model.end(), entry);
            ++next;
            break;
        }
        case 3:
            if (count > 0) {
                list->SendMessage(LB_DELETESTRING, static_cast<WPARAM>(row));
                model.erase(model.begin() + place);
            }
            break;
        case 4:
            if (turn % 5 == 0) {
                list->Sort(0);
                const bool isDown = list->GetSortState() == kSortedDescending;
                if (isDown)
                    std::reverse(model.begin(), model.end());
                std::stable_sort(model.begin(), model.end(), [&](const Entry& a, const Entry& b) {
                    return isDown ? a.name > b.name : a.name < b.name;
                });
            }
            break;
        default:
            Pump(); // rows added are filtered
            break;
        }
        if (turn % 3 != 0)
            continue;
        Pump();
        list->RefreshFilter();
        int shown = 0;
        for (std::size_t i = 0; i < model.size(); ++i) {
            ASSERT_EQ(list->GetFilteredRow(static_cast<int>(i)), matches(model[i]) ? shown : -1)
                << turn << ' ' << i << ' ' << condition;
            if (!matches(model[i]))
                continue;
            ASSERT_EQ(Cell(shown, 1), std::to_string(model[i].number));
            ASSERT_EQ(list->GetEditDataType(shown), model[i].type);
            const char* file = list->GetFileName(shown);
            ASSERT_EQ(std::string(file != nullptr ? file : ""), model[i].file);
            ++shown;
        }
        ASSERT_EQ(list->GetCount(), shown);
        ASSERT_EQ(list->GetUnfilteredCount(), static_cast<int>(model.size()));
    }
}

TEST_F(Filtered, SelectionFollowsItsRows) {
    list->SetOnlySel(3);
    list->SetColumnFilter(1, "linz");
    EXPECT_EQ(list->GetFirstSel(), 1);
    list->SetColumnFilter(1, "graz");
    EXPECT_EQ(list->GetFirstSel(), -1);
    list->ClearFilter();
    EXPECT_EQ(list->GetFirstSel(), -1);
    Make(LBS_EXTENDEDSEL);
    for (const int row : {0, 1, 3})
        list->SendMessage(LB_SETSEL, TRUE, row);
    list->SetColumnFilter(1, "linz");
    EXPECT_EQ(Selected(), "1 3 ");
    list->SendMessage(LB_SETSEL, FALSE, -1);
    list->SendMessage(LB_SETSEL, TRUE, 1);
    list->ClearFilter();
    EXPECT_EQ(Selected(), "3 ");
}

TEST_F(Filtered, AnOpenEditorIsStoredFirst) {
    list->SetEditorType(0, kEditorText);
    EditAndType(0, 0, "zebra");
    parent.Answer(VNM_STOREVALUE, 1);
    EXPECT_FALSE(list->SetColumnFilter(0, "a"));
    EXPECT_TRUE(IsOpenAt(0, 0));
    EXPECT_EQ(list->GetCount(), 5);
    parent.Answer(VNM_STOREVALUE, 0);
    EXPECT_TRUE(list->SetColumnFilter(0, "zeb"));
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Column(0), "zebra");
    // An edited row stays; rows added meanwhile wait for the editor.
    EditAndType(0, 0, "yak");
    list->AddStringItems("zebu", "", "");
    list->AddStringItems("ibex", "", "");
    Pump();
    EXPECT_TRUE(IsOpenAt(0, 0));
    Key(Qt::Key_Return);
    Pump();
    EXPECT_EQ(Column(0), "zebu");
    EXPECT_EQ(list->GetUnfilteredCount(), 7);
    // A parent that destroys the list when it is asked.
    EditAndType(0, 0, "gone");
    parent.OnStore([this] { list.reset(); });
    list->SetColumnFilter(0, "x");
    EXPECT_EQ(list, nullptr);
}

TEST_F(Filtered, TipsAndResettingKnowAllRows) {
    list->ResetContent();
    for (int row = 0; row < 3; ++row) {
        list->AddStringItems(kRows[row][0], kRows[row][1], kRows[row][2]);
        list->SetItemTip(row, (std::string("tip of ") + kRows[row][0]).c_str());
    }
    list->SetColumnFilter(0, "charlie");
    list->SetDataTip({20, 4});
    EXPECT_TRUE(list->IsTipShown());
    EXPECT_EQ(list->GetItemTip(list->GetItemIndex(list->GetUnfilteredRow(0))),
              CString("tip of charlie"));
    list->Sort(0);
    EXPECT_EQ(Column(0), "charlie");
    EXPECT_EQ(list->GetItemTip(list->GetItemIndex(list->GetUnfilteredRow(0))),
              CString("tip of charlie"));
    list->ResetContent();
    EXPECT_EQ(list->GetUnfilteredCount(), 0);
    list->AddStringItems("charlie 2", "", "");
    list->AddStringItems("other", "", "");
    Pump();
    EXPECT_EQ(Column(0), "charlie 2"); // the condition is still there
    list->ClearFilter();
    EXPECT_EQ(Column(0), "charlie 2 other");
}

// --- rows of a source ----------------------------------------------------------------------------

/// Rows "i.column"; can be slow, and sort by reversing.
class Numbers : public CListRowSource {
public:
    explicit Numbers(int rows) : count(rows) {}
    int GetRowCount() override { return count; }
    void GetCell(int row, int column, std::string& text) override {
        EXPECT_TRUE(row >= 0 && row < count) << row;
        if (onGet)
            onGet();
        text = std::to_string(isReversed ? count - 1 - row : row) + "." + std::to_string(column);
    }
    bool SetCell(int row, int, std::string_view text) override {
        stored = std::to_string(row) + ":" + std::string(text);
        return true;
    }
    ESortAnswer SortRows(int, bool) override {
        isReversed = !isReversed;
        return ESortAnswer::Sorted;
    }
    int GetSortedRow(int before) override { return count - 1 - before; }
    bool FilterRows(const CRowFilter& filter) override {
        asked = filter.GetCondition(0);
        return isFiltering;
    }

    int count;
    bool isReversed = false;
    bool isFiltering = false;
    std::string asked;
    std::string stored;
    std::function<void()> onGet;
};

TEST_F(Filtered, RowsOfASourceAreFoundInParts) {
    Numbers source(30000);
    ASSERT_TRUE(list->SetRowSource(&source));
    list->SetOnlySel(1234);
    int looked = 0;
    source.onGet = [&looked] { // as slow as a source on a disk
        if (++looked % 100 == 0)
            QTest::qSleep(1);
    };
    list->SetColumnFilter(0, "34.0");
    EXPECT_FALSE(list->IsFilterDone());
    int parts = 0;
    int before = list->GetCount();
    EXPECT_LT(before, 300);
    while (!list->IsFilterDone() && parts < 10000) {
        AfxPumpMessages(1);
        ++parts;
        EXPECT_GE(list->GetCount(), before); // rows are shown as they are found
        before = list->GetCount();
    }
    EXPECT_GT(parts, 2);
    EXPECT_EQ(list->GetCount(), 300);
    EXPECT_EQ(Cell(12, 1), "1234.1");
    EXPECT_EQ(list->GetUnfilteredRow(12), 1234);
    EXPECT_EQ(list->GetFirstSel(), 12);
    // Longer: only the rows found are looked at.
    looked = 0;
    list->SetColumnFilter(0, "234.0");
    EXPECT_LE(looked, 400);
    EXPECT_EQ(list->GetCount(), 30);
    EXPECT_EQ(Selected(), "1234 ");
    // A longer one before the first has ended takes up where that was.
    list->SetColumnFilter(0, "4.0");
    EXPECT_FALSE(list->IsFilterDone());
    list->SetColumnFilter(0, "34.0");
    while (!list->IsFilterDone())
        AfxPumpMessages(1);
    EXPECT_EQ(list->GetCount(), 300);
    EXPECT_EQ(Selected(), "1234 ");
    list->ClearFilter();
    EXPECT_EQ(list->GetCount(), 30000);
    EXPECT_EQ(list->GetFirstSel(), 1234);
}

TEST_F(Filtered, TheSourceKeepsItsNumbers) {
    Numbers source(1000);
    ASSERT_TRUE(list->SetRowSource(&source));
    list->SetEditorType(0, kEditorText);
    list->SetColumnFilter(0, "77.");
    EXPECT_EQ(list->GetCount(), 10); // 77, 177 ...
    list->SetOnlySel(3);
    EXPECT_TRUE(list->UpdateStringItem(3, 0, "x"));
    EXPECT_EQ(source.stored, "377:x");
    source.count = 1500; // at the end
    list->RowsChanged();
    EXPECT_EQ(list->GetCount(), 15);
    EXPECT_EQ(Selected(), "377 ");
    EXPECT_TRUE(list->Sort(0)); // the source reverses its rows
    EXPECT_EQ(list->GetCount(), 15);
    EXPECT_EQ(Cell(0, 0), "1477.0");
    EXPECT_EQ(Selected(), std::to_string(1499 - 377) + " ");
    // An editor stays with its row.
    list->EditColumn(5, 0);
    const std::string edited = EditorText();
    source.isReversed = false;
    list->SourceSorted(0, kSortedAscending);
    ASSERT_TRUE(IsOpen());
    EXPECT_EQ(Cell(list->m_nCurRow, 0), edited);
    list->CellCancel();
    source.count = 500;
    list->RowsChanged();
    EXPECT_EQ(list->GetCount(), 5);
    list->RowChanged(400); // not shown
    list->ResetContent();
    EXPECT_EQ(list->GetCount(), 5);
    list->RefreshFilter();
    EXPECT_EQ(list->GetCount(), 5);
    // Typing looks at the shown rows only.
    list->SetPrintInput(TRUE);
    list->SendMessage(LB_SETCURSEL, static_cast<WPARAM>(-1));
    list->SetFocus();
    Type("3");
    EXPECT_EQ(Cell(list->GetFirstSel(), 0), "377.0");
    EXPECT_TRUE(list->SetRowSource(nullptr));
    EXPECT_EQ(list->GetCount(), 0);
}

TEST_F(Filtered, ASourceMayFilterByItself) {
    Numbers source(100);
    source.isFiltering = true;
    ASSERT_TRUE(list->SetRowSource(&source));
    source.onGet = [&source] { source.stored = "asked"; };
    list->SetColumnFilter(0, "5");
    EXPECT_EQ(source.asked, "5");
    EXPECT_EQ(source.stored, "");
    source.count = 3;
    list->ResetContent();
    EXPECT_EQ(list->GetCount(), 3);
    EXPECT_EQ(list->GetUnfilteredRow(2), 2);
    source.count = 100;
    list->ClearFilter();
    EXPECT_EQ(source.asked, "");
    EXPECT_EQ(list->GetCount(), 100);
}

// --- the filter row ------------------------------------------------------------------------------

class FilterRow : public Filtered {
protected:
    void SetUp() override {
        ListFixture::SetUp();
        ASSERT_TRUE(list->CreateHeadingsControl(1001));
        ASSERT_TRUE(list->EnableFilterRow());
        Pump();
    }
    CRect Place(CWnd* window) {
        CRect rect;
        window->GetWindowRect(rect);
        parent.ScreenToClient(rect);
        return rect;
    }
    CListFilterRow& Row() { return *list->GetFilterRow(); }
};

TEST_F(FilterRow, StandsBetweenHeadersAndList) {
    const CRect rows = Place(list.get()), fields = Place(&Row()),
                header = Place(list->GetHeadings());
    EXPECT_EQ(rows.top, kListTop + Row().GetDesiredHeight());
    EXPECT_EQ(rows.bottom, kListTop + 200);
    EXPECT_EQ(fields.bottom, rows.top);
    EXPECT_EQ(header.bottom, fields.top);
    EXPECT_EQ(list->GetHeadersHeight(), rows.top - header.top);
    for (int column = 0; column < 3; ++column) {
        CRect heading;
        ASSERT_NE(Row().GetField(column), nullptr);
        list->GetHeadings()->GetRect(column, &heading);
        const CRect field = Place(Row().GetField(column));
        EXPECT_EQ(field.left, header.left + heading.left);
        EXPECT_NEAR(field.right, header.left + heading.right, 1);
    }
    list->SetColumnWidth(0, 150);
    EXPECT_EQ(Place(Row().GetField(1)).left, header.left + 2 + 150);
    list->MoveWindow(20, 80, 300, 100);
    EXPECT_EQ(Place(&Row()).bottom, 80);
    list->ShowWindow(SW_HIDE);
    EXPECT_FALSE(Row().GetWidget()->isVisible());
    list->ShowWindow(SW_SHOW);
    EXPECT_TRUE(list->EnableFilterRow(FALSE));
    EXPECT_EQ(list->GetFilterRow(), nullptr);
    EXPECT_EQ(Place(list.get()).top, Place(list->GetHeadings()).bottom);
}

TEST_F(FilterRow, FiltersWhileTyping) {
    Row().FocusField(1);
    Type("l");
    EXPECT_EQ(Column(0), "Alpha bravo");
    Key(Qt::Key_Tab);
    Type("<");
    EXPECT_FALSE(list->IsColumnFilterValid(2));
    EXPECT_EQ(Column(0), "Alpha bravo"); // not complete
    Type("0");
    EXPECT_EQ(Column(0), "bravo");
    Key(Qt::Key_Escape);
    EXPECT_EQ(Column(0), "Alpha bravo");
    Key(Qt::Key_Escape);
    EXPECT_EQ(CWnd::GetFocus(), list.get());
    list->ClearFilter();
    CString text;
    Row().GetField(1)->GetWindowText(text);
    EXPECT_TRUE(text.IsEmpty());
    Row().FocusField(0);
    Key(Qt::Key_Down);
    EXPECT_EQ(CWnd::GetFocus(), list.get());
    list->SetColumnFilter(0, "echo");
    Row().GetField(0)->GetWindowText(text);
    EXPECT_EQ(text, CString("echo"));
}

TEST_F(FilterRow, AParentMayEndTheListWhileItIsTypedInto) {
    list->SetEditorType(0, kEditorText);
    for (const bool all : {false, true}) {
        if (list == nullptr) {
            Make(0);
            list->SetEditorType(0, kEditorText);
            list->CreateHeadingsControl(1001);
            list->EnableFilterRow();
        }
        list->EditColumn(0, 0);
        parent.OnStore([this, all] {
            if (all)
                list.reset();
            else
                list->DestroyWindow();
        });
        CEdit* field = Row().GetField(1);
        field->SetWindowText("x"); // without the focus, so that the filter closes the editor
        Pump();
        if (list != nullptr) {
            EXPECT_EQ(list->GetSafeHwnd(), nullptr);
            list.reset();
        }
        parent.onAsked = nullptr;
    }
}

TEST_F(FilterRow, FieldsAreMadeForColumnsInView) {
    list->SetNumColumns(500);
    for (int column = 0; column < 500; ++column)
        list->SetColumnWidth(column, 50);
    Pump();
    EXPECT_NE(Row().GetField(3), nullptr);
    EXPECT_EQ(Row().GetField(100), nullptr);
}

} // namespace
} // namespace vnbytstr::test

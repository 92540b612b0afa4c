// Finding a text in the cells: the way from hit to hit against a plain model, marks, searches that
// take long.
#include "src/lists/CellSearch.h"
#include "src/lists/ListColors.h"
#include "tests/lists/SourceFixture.h"

#include <optional>

namespace vnbytstr::test {
namespace {

using detail::CellSearch;
using detail::TextPart;

TEST(CellSearch, FindsInCells) {
    const ScopedCodePage utf8(65001);
    using Parts = std::vector<TextPart>;
    const struct {
        const char* text;
        unsigned flags;
        const char* cell;
        Parts hits;
    } cases[] = {
        {"an", 0, "banana", {{1, 3}, {3, 5}}},
        {"ana", 0, "banana", {{1, 4}}}, // none within another
        {"AN", 0, "banana", {{1, 3}, {3, 5}}},
        {"AN", kFindMatchCase, "banAna AN", {{7, 9}}},
        {"banana", kFindWholeCell, "Banana", {{0, 6}}},
        {"banana", kFindWholeCell | kFindMatchCase, "Banana", {}},
        {"banan", kFindWholeCell, "banana", {}},
        {"ÄR", 0, "Bär", {{1, 4}}},
        {"ÄR", kFindMatchCase, "Bär", {}},
        {"är", kFindMatchCase, "Bär", {{1, 4}}},
        {"", 0, "text", {}},
        {"", kFindWholeCell, "", {}},
        {"longer", 0, "long", {}},
    };
    for (const auto& c : cases) {
        const CellSearch search(c.text, c.flags);
        EXPECT_EQ(search.Hits(c.cell, 10), c.hits) << c.text << " in " << c.cell;
        EXPECT_EQ(search.IsIn(c.cell), !c.hits.empty());
    }
    EXPECT_EQ(CellSearch("a", 0).Hits("aaaa", 2).size(), 2U);
    // The second byte of a character of two is no letter of its own.
    const ScopedCodePage japanese(932);
    EXPECT_FALSE(CellSearch("A", kFindMatchCase).IsIn("\x83\x41"));
    EXPECT_FALSE(CellSearch("a", 0).IsIn("\x83\x41"));
    EXPECT_TRUE(CellSearch("A", kFindMatchCase)
                    .IsIn("\x83\x41"
                          "A"));
}

TEST(ListColors, MarksAreSeenAndLeaveTheTextLegible) {
    const struct {
        COLORREF background, text;
    } rows[] = {{RGB(255, 255, 255), RGB(0, 0, 0)},      {RGB(240, 240, 240), RGB(0, 0, 0)},
                {RGB(27, 30, 32), RGB(252, 252, 252)},   {RGB(48, 140, 198), RGB(255, 255, 255)},
                {RGB(0, 0, 0), RGB(255, 255, 255)},      {RGB(255, 255, 255), RGB(150, 150, 150)},
                {RGB(255, 255, 0), RGB(0, 0, 0)},        {RGB(42, 130, 218), RGB(0, 0, 0)},
                {RGB(128, 128, 128), RGB(255, 255, 255)}};
    for (const auto& row : rows)
        for (const COLORREF accent : {RGB(48, 140, 198), RGB(255, 255, 255), RGB(0, 0, 0)}) {
            const COLORREF mark = detail::MarkColor(row.background, row.text, accent);
            EXPECT_GE(detail::Contrast(mark, row.background), 1.15) << std::hex << row.background;
            EXPECT_GE(detail::Contrast(mark, row.text),
                      std::min(4.5, 0.75 * detail::Contrast(row.background, row.text)))
                << std::hex << row.background;
            EXPECT_NE(detail::StripeColor(row.background, row.text), row.background);
        }
    EXPECT_NEAR(detail::Contrast(RGB(0, 0, 0), RGB(255, 255, 255)), 21, 0.01);
}

class Find : public RowSource {
protected:
    using Hit = std::pair<int, int>;

    void SetUp() override {
        RowSource::SetUp();
        parent.onMessage = [this](UINT message, WPARAM wParam) {
            if (message == WM_COMMAND && HIWORD(wParam) == LBN_SELCHANGE)
                ++told;
            if (message == VNM_FINDENDED)
                ended = static_cast<EFindResult>(wParam);
            if (message == VNM_FINDCOUNTED)
                counted = static_cast<int>(wParam);
        };
    }
    void TearDown() override {
        parent.onMessage = nullptr;
        RowSource::TearDown();
    }
    Hit Current() {
        return {static_cast<int>(list->SendMessage(LB_GETCARETINDEX)), list->GetFoundColumn()};
    }
    /// Waits for the end of a search.
    EFindResult Wait(EFindResult result) {
        if (result != kFindSearching)
            return result;
        ended.reset();
        while (!ended)
            AfxPumpMessages(1);
        return *ended;
    }

    int told = 0;
    std::optional<EFindResult> ended;
    std::optional<int> counted;
};

/// Takes long enough by the number of its rows.
class Numbers : public CListRowSource {
public:
    int GetRowCount() override { return count; }
    void GetCell(int row, int column, std::string& text) override {
        text = std::to_string(row) + "." + std::to_string(column);
    }
    int count = 2'000'000;
};

TEST_F(Find, GoesFromHitToHitAsAModelDoes) {
    const char* const texts[] = {"l", "li", "9", "a", "zzz", "Linz"};
    for (const bool withSource : {false, true})
        for (const DWORD style : kSelections)
            for (const bool rearranged : {false, true}) {
                Make(style | WS_VSCROLL);
                if (withSource) {
                    ASSERT_TRUE(list->SetRowSource(&source));
                }
                std::vector<int> columns = {0, 1, 2};
                if (rearranged) {
                    columns = {2, 0}; // Linz is hidden
                    ASSERT_TRUE(list->SetColumnOrder(std::array{2, 1, 0}));
                    ASSERT_TRUE(list->HideColumn(1));
                }
                for (const char* const text : texts) {
                    SCOPED_TRACE(text);
                    std::vector<Hit> hits;
                    for (int row = 0; row < 5; ++row)
                        for (const int column : columns)
                            if (CellSearch(text, 0).IsIn(Cell(row, column)))
                                hits.emplace_back(row, column);
                    list->SetOnlySel(0);
                    const EFindResult first = list->FindText(text);
                    if (hits.empty()) {
                        EXPECT_EQ(first, kFindNone);
                        EXPECT_EQ(list->FindNext(), kFindNone);
                        EXPECT_EQ(list->FindPrevious(), kFindNone);
                        continue;
                    }
                    EXPECT_EQ(first, kFindHit);
                    const auto count = static_cast<int>(hits.size());
                    int at = 0;
                    for (const int step : {1, 1, 1, -1, -1, -1, -1, 1}) {
                        EXPECT_EQ(Current(), hits[static_cast<std::size_t>(at)]);
                        const int next = at + step;
                        at = (next + count) % count;
                        EXPECT_EQ(step > 0 ? list->FindNext() : list->FindPrevious(),
                                  next == at ? kFindHit : kFindWrapped);
                    }
                    EXPECT_EQ(Current(), hits[static_cast<std::size_t>(at)]);
                }
            }
}

TEST_F(Find, BeginsAtTheCurrentCellAndSelectsAsAClickDoes) {
    Make(LBS_EXTENDEDSEL | WS_VSCROLL);
    list->SetOnlySel(2);
    EXPECT_EQ(list->FindText("l"), kFindHit); // charlie
    EXPECT_EQ(told, 0);                       // the row was selected
    EXPECT_EQ(list->FindText("li"), kFindHit);
    EXPECT_EQ(Current(), Hit(2, 0));
    EXPECT_EQ(list->FindText("linz"), kFindHit); // no longer a hit: the next one
    EXPECT_EQ(Current(), Hit(3, 1));
    EXPECT_EQ(told, 1);
    EXPECT_EQ(list->GetFirstSel(), 3);
    EXPECT_EQ(list->SendMessage(LB_GETSELCOUNT), 1);
    // The user goes elsewhere: from there, the row itself included forwards.
    Click(CellPoint(1, 2));
    EXPECT_EQ(list->GetFoundColumn(), -1);
    EXPECT_EQ(list->FindNext(), kFindHit);
    EXPECT_EQ(Current(), Hit(1, 1));
    Click(CellPoint(3, 0));
    EXPECT_EQ(list->FindPrevious(), kFindHit);
    EXPECT_EQ(Current(), Hit(1, 1));
    EXPECT_EQ(list->FindText("LINZ", kFindMatchCase), kFindNone);
    EXPECT_EQ(list->FindText("lin", kFindWholeCell), kFindNone);
    EXPECT_EQ(list->FindText(nullptr), kFindNone);
    // The one with the focus, of several selected rows, becomes the only one.
    list->SetOnlySel(1);
    list->SendMessage(LB_SETSEL, TRUE, 3);
    told = 0;
    EXPECT_EQ(list->FindText("bravo"), kFindHit);
    EXPECT_EQ(list->SendMessage(LB_GETSELCOUNT), 1);
    EXPECT_EQ(told, 1);
    // Several rows selected by clicks stay so.
    Make(LBS_MULTIPLESEL);
    for (const int row : {0, 4})
        list->SendMessage(LB_SETSEL, TRUE, row);
    EXPECT_EQ(list->FindText("wien"), kFindWrapped);
    EXPECT_EQ(Current(), Hit(2, 1));
    EXPECT_EQ(list->SendMessage(LB_GETSELCOUNT), 2);
}

TEST_F(Find, CountsAndFollowsRowsAndFilter) {
    list->FindText("9", kFindCount);
    EXPECT_EQ(list->GetFindCount(), -1);
    Pump();
    EXPECT_EQ(counted, 2);
    EXPECT_EQ(list->GetFindCount(), 2);
    counted.reset();
    list->SetColumnFilter(0, "alpha");
    Pump();
    EXPECT_EQ(counted, 1);
    list->ClearFilter();
    Pump();
    EXPECT_EQ(counted, 2);
    list->ClearFind();
    EXPECT_EQ(list->GetFindCount(), -1);
    EXPECT_EQ(list->FindNext(), kFindNone);
    // A source that gets more rows.
    TestSource many(1000);
    list->SetRowSource(&many);
    list->FindText("7.1", kFindCount | kFindWholeCell);
    Pump();
    EXPECT_EQ(counted, 1);
    list->FindText("7.1", kFindCount);
    Pump();
    EXPECT_EQ(counted, 100);
    many.count = 1020;
    list->RowsChanged();
    Pump();
    EXPECT_EQ(counted, 102);
    // Without column 0, which has this text.
    list->FindText("7.0", kFindCount | kFindSkipFirst);
    Pump();
    EXPECT_EQ(counted, 0);
}

TEST_F(Find, LongSearchesLeaveTheListInBetween) {
    Numbers many;
    Make(WS_VSCROLL);
    list->SetRowSource(&many);
    list->SetOnlySel(5);
    EXPECT_EQ(list->FindText("1999999.2"), kFindSearching);
    EXPECT_EQ(list->GetFirstSel(), 5); // until it is found
    EXPECT_EQ(Wait(kFindSearching), kFindHit);
    EXPECT_EQ(Current(), Hit(1'999'999, 2));
    EXPECT_GT(Top(), 1'999'000);
    EXPECT_EQ(Wait(list->FindNext()), kFindWrapped); // the only one
    EXPECT_EQ(Current(), Hit(1'999'999, 2));
    EXPECT_EQ(Wait(list->FindText("x")), kFindNone);
    // The user goes elsewhere, the next search begins, the rows go, the list goes.
    list->SetOnlySel(7);
    ASSERT_EQ(list->FindText("1999998.1"), kFindSearching);
    list->SetOnlySel(8);
    EXPECT_EQ(Wait(kFindSearching), kFindStopped);
    EXPECT_EQ(list->GetFirstSel(), 8);
    ASSERT_EQ(list->FindPrevious(), kFindWrapped); // quick, from the end
    EXPECT_EQ(Current(), Hit(1'999'998, 1));
    ASSERT_EQ(list->FindText("500000.1"), kFindSearching);
    many.count = 10;
    list->RowsChanged();
    Pump();
    EXPECT_LT(list->GetFirstSel(), 10);
    many.count = 2'000'000;
    list->RowsChanged();
    ASSERT_EQ(list->FindText("1999998.1", kFindCount), kFindSearching);
    list.reset();
    Pump();
}

TEST_F(Find, AnOpenEditorIsStoredFirst) {
    list->SetEditorType(0, kEditorText);
    EditAndType(0, 0, "linz");
    EXPECT_EQ(list->FindText("linz"), kFindHit);
    EXPECT_EQ(Current(), Hit(0, 0));
    EXPECT_FALSE(IsOpen());
    EditAndType(0, 0, "refused");
    parent.Answer(VNM_STOREVALUE, 1);
    EXPECT_EQ(list->FindNext(), kFindStopped);
    EXPECT_TRUE(IsOpenAt(0, 0));
    parent.onAsked = nullptr;
    list->CellCancel();
}

/// What is drawn differently in a cell, as a part of its width; empty: nothing.
class Marks : public Find, public ::testing::WithParamInterface<bool> {
protected:
    QImage DrawCell(int row, int column) {
        Pump();
        CRect area(column * 100, row * RowHeight(), column * 100 + 100, (row + 1) * RowHeight());
        list->MapWindowPoints(&parent, area);
        const int left = GetParam() ? parent.GetWidget()->width() - area.right : area.left;
        return parent.GetWidget()->grab(QRect(left, area.top, 100, RowHeight())).toImage();
    }
    static std::optional<std::pair<int, int>> Difference(const QImage& a, const QImage& b) {
        int left = a.width(), right = -1;
        for (int x = 0; x < a.width(); ++x)
            for (int y = 0; y < a.height(); ++y)
                if (a.pixel(x, y) != b.pixel(x, y)) {
                    left = std::min(left, x);
                    right = std::max(right, x);
                }
        return right < 0 ? std::nullopt : std::optional(std::pair(left, right));
    }
};

TEST_P(Marks, StandBehindTheHits) {
    Make(0, GetParam() ? WS_EX_LAYOUTRTL : 0);
    const auto widthOf = [this](const char* text) {
        CClientDC dc(list.get());
        return dc.GetTextExtent(text).cx;
    };
    list->UpdateStringItem(1, 1, "WWWW needle");
    list->UpdateStringItem(2, 1, "a long text before the needle that is cut off");
    const QImage before[] = {DrawCell(1, 1), DrawCell(2, 1), DrawCell(3, 1)};
    list->FindText("needle", kFindMatchCase);
    list->SetOnlySel(4);
    const auto hit = Difference(before[0], DrawCell(1, 1));
    ASSERT_TRUE(hit);
    // A text is read from left to right in a mirrored list, too.
    const int textLeft = GetParam() ? 100 - 4 - widthOf("WWWW needle") : 4;
    EXPECT_NEAR(hit->first, textLeft + widthOf("WWWW "), 1);
    EXPECT_NEAR(hit->second, textLeft + widthOf("WWWW needle"), 2);
    const auto cut = Difference(before[1], DrawCell(2, 1));
    ASSERT_TRUE(cut); // at the ellipsis
    EXPECT_GT(cut->first, 60);
    EXPECT_FALSE(Difference(before[2], DrawCell(3, 1)));
    list->ClearFind();
    EXPECT_FALSE(Difference(before[0], DrawCell(1, 1)));
    // In a selected row, at the right of the column, and in a list without columns.
    list->SetColumnAlignment(1, kAlignRight);
    list->SetOnlySel(1);
    const QImage selected = DrawCell(1, 1);
    list->FindText("needle");
    const auto marked = Difference(selected, DrawCell(1, 1));
    ASSERT_TRUE(marked);
    EXPECT_NEAR(marked->second - marked->first, widthOf("needle"), 3);
    list->ResetContent();
    list->SetNumColumns(0);
    list->AddStringItems("plain needle");
    list->SetOnlySel(-1);
    list->ClearFind();
    const QImage plain = DrawCell(0, 0);
    list->FindText("needle");
    list->SendMessage(LB_SETCURSEL, static_cast<WPARAM>(-1));
    const auto inPlain = Difference(plain, DrawCell(0, 0));
    ASSERT_TRUE(inPlain);
    EXPECT_NEAR(inPlain->second - inPlain->first, widthOf("needle"), 3);
}

INSTANTIATE_TEST_SUITE_P(All, Marks, ::testing::Bool());

} // namespace
} // namespace vnbytstr::test

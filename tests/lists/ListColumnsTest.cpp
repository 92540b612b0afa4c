#include "src/lists/ListColumns.h"
#include "src/lists/ColumnView.h"
#include "src/lists/RowText.h"
#include "src/lists/TypeAhead.h"
#include "tests/lists/ColumnsOf.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

using namespace vnbytstr::detail;
using vnbytstr::test::ColumnsOf;

namespace {

std::vector<int> Widths(const std::vector<SListColumn>& columns) {
    std::vector<int> widths;
    for (const SListColumn& column : columns)
        widths.push_back(column.m_nWidth);
    return widths;
}

TEST(RowText, ValuesAreWhatLiesBetweenSeparators) {
    const struct {
        const char* row;
        const char* separator;
        int column;
        const char* value;
    } cases[] = {
        {"a\tb\tc", "\t", 0, "a"},  {"a\tb\tc", "\t", 2, "c"}, {"a\tb\tc", "\t", 3, ""},
        {"a\tb\tc", "\t", -1, ""},  {"\t\tc", "\t", 1, ""},    {"", "\t", 0, ""},
        {"a", "\t", 0, "a"},        {"a\t", "\t", 1, ""},      {"a::b::c", "::", 1, "b"},
        {"a:b::c", "::", 0, "a:b"}, {"a\tb", "", 0, "a\tb"},   {"a\tb", "", 1, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CellText(c.row, c.separator, c.column), c.value) << c.row << ' ' << c.column;
}

TEST(RowText, ReplacingKeepsAllOtherValues) {
    const struct {
        const char* row;
        int column;
        const char* value;
        const char* result;
    } cases[] = {
        {"a\tb\tc", 0, "x", "x\tb\tc"},
        {"a\tb\tc", 1, "", "a\t\tc"},
        {"a\tb\tc", 2, "x", "a\tb\tx"},
        {"a", 2, "x", "a\t\tx"},
        {"", 0, "x", "x"},
        {"", 1, "x", "\tx"},
        {"a\tb\tc\td", 1, "x", "a\tx\tc\td"}, // more values than columns
        {"a\tb\t", 1, "x", "a\tx\t"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ReplaceCell(c.row, "\t", c.column, c.value), c.result) << c.row;
}

TEST(ListColumns, WidthsFollowTheRule) {
    const struct {
        const char* name;
        std::vector<int> widths;
        std::vector<int> percents;
        int usable;
        std::vector<int> expected;
    } cases[] = {
        {"equal shares", {0, 0, 0}, {}, 300, {100, 100, 100}},
        {"the divisor counts fixed columns", {100, 0, 0}, {}, 400, {100, 100, 100}},
        {"percent, then the rest", {0, 0, 60}, {50, 0, 0}, 200, {100, 20, 60}},
        {"percent only", {0, 0}, {30, 70}, 200, {60, 140}},
        {"percents beyond the client", {0, 0, 0}, {80, 80, 0}, 100, {80, 80, 50}},
        {"fixed width beats percent", {40, 0}, {50, 0}, 200, {40, 80}},
        {"percent rounds half up", {0, 0}, {25, 75}, 10, {3, 8}},
        {"shares truncate", {0, 0, 0}, {}, 100, {33, 33, 33}},
        {"exactly full", {100, 0}, {}, 100, {100, 0}},
        {"no column", {}, {}, 100, {}},
    };
    for (const auto& c : cases) {
        auto columns = ColumnsOf(c.widths);
        ComputeWidths(columns, c.percents, c.usable);
        EXPECT_EQ(Widths(columns), c.expected) << c.name;
    }
}

TEST(ListColumns, HitTestsUseTheRunningSum) {
    const auto columns = ColumnsOf({10, 0, 20});
    const struct {
        int x;
        int column;
    } across[] = {{-5, 0}, {0, 0}, {9, 0}, {10, 2}, {29, 2}, {30, -1}, {INT_MAX, -1}};
    for (const auto& c : across)
        EXPECT_EQ(ColumnView(columns).At(c.x), c.column) << c.x;

    const struct {
        int y, top, height, count, row;
    } down[] = {{0, 5, 16, 100, 5},
                {15, 5, 16, 100, 5},
                {16, 5, 16, 100, 6},
                {16, 5, 16, 6, -1},
                {-1, 5, 16, 100, -1},
                {5, 0, 0, 100, -1},
                {INT_MAX, INT_MAX, 1, INT_MAX, -1}};
    for (const auto& c : down)
        EXPECT_EQ(RowAt(c.y, c.top, c.height, c.count), c.row) << c.y << ' ' << c.height;
}

TEST(ListColumns, HugeWidthsStayWithinInt) {
    const auto columns = ColumnsOf({INT_MAX, INT_MAX, 5});
    const ColumnView view(columns);
    EXPECT_EQ(view.WidthBefore(3), INT_MAX);
    EXPECT_EQ(view.At(INT_MAX - 1), 0);
    EXPECT_EQ(view.Place(2), (PixelSpan{INT_MAX, INT_MAX}));
    EXPECT_EQ(view.Place(3), PixelSpan{});
}

TEST(ListColumns, ColumnInformationIsChecked) {
    const struct {
        const char* text;
        int count;
        bool good;
        const char* stored;
    } cases[] = {
        {"Name\n80\nAge\n30\n", 2, true, "Name=80 Age=30 "},
        {"Name\n80\nAge\n30", 2, true, "Name=80 Age=30 "},
        {"\n80", 1, true, "=80 "},
        {"Name\n80px\n", 1, true, "Name=80 "}, // as atoi reads it
        {"A\n1\nB\n2\n", 1, true, "A=1 "},     // more than asked for
        {"Name", 1, false, ""},
        {"Name\n", 1, false, "Name"},
        {"Name\n80", 2, false, "Name"}, // only the last width may lack its line feed
        {"Name\n80\n", 2, false, "Name=80 "},
        {"Name\n80\nAge\n0\n", 2, false, "Name=80 Age"},
        {"Name\n-3\n", 1, false, "Name"},
        {"Name\nwide\n", 1, false, "Name"},
        {"Name\n99999999999999999999\n", 1, false, "Name"},
        {"", 1, false, ""},
        {"", 0, true, ""},
    };
    for (const auto& c : cases) {
        std::string stored;
        const bool good = ReadColumnInformation(
            c.text, c.count, [&](int, std::string_view heading) { stored += heading; },
            [&](int, int width) { stored += "=" + std::to_string(width) + " "; });
        EXPECT_EQ(good, c.good) << c.text;
        EXPECT_EQ(stored, c.stored) << c.text;
    }
}

TEST(ListColumns, ARowIsLaidOutColumnByColumn) {
    const struct {
        const char* row;
        int right, offset, spacing;
        const char* drawn;
    } cases[] = {
        {"a\tb\tc", 200, 2, 0, "a@4-54 b@54-94 c@94-124 "},
        {"a\tb\tc\td", 200, 2, 0, "a@4-54 b@54-94 c@94-124 "},
        {"a", 200, 2, 0, "a@4-54 "},
        {"", 200, 2, 0, ""},
        {"a\t", 200, 2, 0, "a@4-54 "}, // nothing remains to be drawn
        {"\tb", 200, 2, 0, "@4-54 b@54-94 "},
        {"a\tb", 60, 2, 0, "a@4-54 b@54-58 "}, // cut at the edge
        {"a\tb", 52, 0, 0, "a@2-52 "},
        {"a\tb", 200, 2, 6, "a@4-48 b@54-94 "},
    };
    for (const auto& c : cases) {
        auto columns = ColumnsOf({50, 40, 30});
        columns[0].m_nSpacing = c.spacing;
        std::string drawn;
        LayOutRow(columns, c.row, "\t", {2, c.right}, c.offset, [&](const DrawnCell& cell) {
            drawn += std::string(cell.text) + "@" + std::to_string(cell.span.left) + "-" +
                     std::to_string(cell.span.right) + " ";
        });
        EXPECT_EQ(drawn, c.drawn) << c.row << ' ' << c.right;
    }
}

TEST(ListColumns, TheNextEditableCell) {
    auto columns = ColumnsOf({10, 10, 10, 10});
    columns[1].m_nEditorType = kEditorText;
    columns[3].m_nEditorType = kEditorPick;
    const struct {
        CellAddress from;
        bool forward;
        CellAddress found;
    } cases[] = {
        {{0, 0}, true, {0, 1}},  {{0, 1}, true, {0, 1}},
        {{0, 2}, true, {0, 3}},  {{0, 4}, true, {1, 1}}, // goes on in the next row
        {{2, 4}, true, {}},      {{3, 0}, true, {}},
        {{1, 2}, false, {1, 1}}, {{1, 0}, false, {}}, // never to the row before
        {{1, -1}, false, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(FindEditable(ColumnView(columns), c.from, c.forward, 3).value_or(CellAddress{}),
                  c.found)
            << c.from.row << ',' << c.from.column;
    EXPECT_FALSE(FindEditable(ColumnView(ColumnsOf({10, 10})), {0, 0}, true, 3));
}

TEST(TypeAhead, APauseOfMoreThanASecondStartsAgain) {
    CString text;
    DWORD last = 0;
    AddTyped(text, last, 5000, "a");
    AddTyped(text, last, 6000, "b"); // exactly 1000 later
    EXPECT_STREQ(text, "ab");
    AddTyped(text, last, 7001, "c");
    EXPECT_STREQ(text, "c");
    last = 0xFFFFFFF0;
    AddTyped(text, last, 100, "d"); // the tick count wraps
    EXPECT_STREQ(text, "cd");
}

} // namespace

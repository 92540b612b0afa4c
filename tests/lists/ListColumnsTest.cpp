#include "src/lists/ListColumns.h"
#include "src/lists/RowText.h"
#include "src/lists/TypeAhead.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

using namespace vnbytstr::detail;

namespace {

std::vector<SListColumn> OfWidths(std::initializer_list<int> widths) {
    std::vector<SListColumn> columns(widths.size());
    std::size_t i = 0;
    for (const int width : widths)
        columns[i++].m_nWidth = width;
    return columns;
}

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
        std::vector<SListColumn> columns(c.widths.size());
        for (std::size_t i = 0; i < columns.size(); ++i)
            columns[i].m_nWidth = c.widths[i];
        ComputeWidths(columns, c.percents, c.usable);
        EXPECT_EQ(Widths(columns), c.expected) << c.name;
    }
}

TEST(ListColumns, HitTestsUseTheRunningSum) {
    const auto columns = OfWidths({10, 0, 20});
    const struct {
        int x;
        int column;
    } across[] = {{-5, 0}, {0, 0}, {9, 0}, {10, 2}, {29, 2}, {30, -1}, {INT_MAX, -1}};
    for (const auto& c : across)
        EXPECT_EQ(ColumnAt(columns, c.x), c.column) << c.x;

    EXPECT_EQ(RowAt(0, 5, 16, 100), 5);
    EXPECT_EQ(RowAt(15, 5, 16, 100), 5);
    EXPECT_EQ(RowAt(16, 5, 16, 100), 6);
    EXPECT_EQ(RowAt(16, 5, 16, 6), -1);
    EXPECT_EQ(RowAt(-1, 5, 16, 100), -1);
    EXPECT_EQ(RowAt(5, 0, 0, 100), -1);
    EXPECT_EQ(RowAt(INT_MAX, INT_MAX, 1, INT_MAX), -1);
}

TEST(ListColumns, HugeWidthsStayWithinInt) {
    const auto columns = OfWidths({INT_MAX, INT_MAX, 5});
    EXPECT_EQ(WidthBefore(columns, 3), INT_MAX);
    EXPECT_EQ(ColumnAt(columns, INT_MAX - 1), 0);
    EXPECT_EQ(CellSpan(columns, 2), (PixelSpan{INT_MAX, INT_MAX}));
    EXPECT_EQ(CellSpan(columns, 0, 100), (PixelSpan{0, 100}));
    EXPECT_TRUE(CellSpan(columns, 1, 100).IsEmpty());
    EXPECT_EQ(CellSpan(columns, 3), PixelSpan{});
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

std::string LaidOut(const std::vector<SListColumn>& columns, const char* row, PixelSpan area,
                    int offset) {
    std::string result;
    LayOutRow(columns, row, "\t", area, offset, [&](const DrawnCell& cell) {
        result += std::string(cell.text) + "@" + std::to_string(cell.span.left) + "-" +
                  std::to_string(cell.span.right) + " ";
    });
    return result;
}

TEST(ListColumns, ARowIsLaidOutColumnByColumn) {
    auto columns = OfWidths({50, 40, 30});
    EXPECT_EQ(LaidOut(columns, "a\tb\tc", {2, 200}, 2), "a@4-54 b@54-94 c@94-124 ");
    EXPECT_EQ(LaidOut(columns, "a\tb\tc\td", {2, 200}, 2), "a@4-54 b@54-94 c@94-124 ");
    EXPECT_EQ(LaidOut(columns, "a", {2, 200}, 2), "a@4-54 ");
    EXPECT_EQ(LaidOut(columns, "", {2, 200}, 2), "");
    EXPECT_EQ(LaidOut(columns, "a\t", {2, 200}, 2), "a@4-54 "); // nothing remains to be drawn
    EXPECT_EQ(LaidOut(columns, "\tb", {2, 200}, 2), "@4-54 b@54-94 ");
    EXPECT_EQ(LaidOut(columns, "a\tb", {2, 60}, 2), "a@4-54 b@54-58 "); // cut at the edge
    EXPECT_EQ(LaidOut(columns, "a\tb", {2, 52}, 0), "a@2-52 ");
    columns[0].m_nSpacing = 6;
    EXPECT_EQ(LaidOut(columns, "a\tb", {2, 200}, 2), "a@4-48 b@54-94 ");
}

TEST(ListColumns, TheNextEditableCell) {
    auto columns = OfWidths({10, 10, 10, 10});
    columns[1].m_nEditorType = kEditorText;
    columns[3].m_nEditorType = kEditorPick;
    const auto find = [&](int row, int column, bool forward) {
        return FindEditable(columns, {row, column}, forward, 3).value_or(CellAddress{});
    };
    EXPECT_EQ(find(0, 0, true), (CellAddress{0, 1}));
    EXPECT_EQ(find(0, 2, true), (CellAddress{0, 3}));
    EXPECT_EQ(find(0, 4, true), (CellAddress{1, 1})); // wraps to the next row
    EXPECT_EQ(find(2, 4, true), CellAddress{});       // not past the last
    EXPECT_EQ(find(3, 0, true), CellAddress{});
    EXPECT_EQ(find(1, 2, false), (CellAddress{1, 1}));
    EXPECT_EQ(find(1, 0, false), CellAddress{}); // never to the row before
    EXPECT_EQ(find(1, -1, false), CellAddress{});
    columns[1].m_nEditorType = columns[3].m_nEditorType = kEditorNone;
    EXPECT_EQ(find(0, 0, true), CellAddress{});
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

#include "src/lists/HeadingGeometry.h"
#include "src/lists/HeadingTracking.h"
#include "tests/lists/ColumnsOf.h"

#include <gtest/gtest.h>

using namespace vnbytstr::detail;
using vnbytstr::test::ColumnsOf;

namespace {

HeadingRects RectsOf(const HeadingGeometry& geometry) {
    return [&geometry](int column, HeadingRect& rect) { return geometry.GetRect(column, rect); };
}

TEST(HeadingGeometry, RectanglesAreSideBySide) {
    const auto columns = ColumnsOf({50, 40, 200});
    const struct {
        int column, width, shift;
        bool inside;
        int left, right;
    } cases[] = {
        {0, 200, 0, true, 2, 52}, {2, 200, 0, true, 92, 199}, // at most the client's right edge - 1
        {2, 93, 0, true, 92, 92}, {2, 92, 0, false, 92, 91},  {1, 200, 60, true, -8, 32},
        {3, 200, 0, false, 0, 0}, {-1, 200, 0, false, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.column << ' ' << c.width << ' ' << c.shift);
        HeadingRect rect;
        EXPECT_EQ(
            HeadingGeometry(ColumnView(columns, c.shift), c.width, 20).GetRect(c.column, rect),
            c.inside);
        EXPECT_EQ(rect.left, c.left);
        EXPECT_EQ(rect.right, c.right);
        EXPECT_EQ(rect.top, c.column == 0 || c.right > 0 ? 1 : 0);
        EXPECT_EQ(rect.bottom, c.right > 0 ? 20 : 0);
    }
}

TEST(HeadingGeometry, HitTestAgreesWithTheRectangles) {
    const auto columns = ColumnsOf({7, 0, 30, 1, 90, 50});
    for (const int width : {0, 1, 2, 40, 100, 130, 300})
        for (const int shift : {0, 20}) {
            const HeadingGeometry geometry(ColumnView(columns, shift), width, 20);
            for (int x = -3; x < width + 3; ++x) {
                int expected = -1;
                for (int i = 0; i < 6 && expected < 0; ++i) {
                    HeadingRect rect;
                    if (geometry.GetRect(i, rect) && x >= rect.left && x < rect.right)
                        expected = i;
                }
                EXPECT_EQ(HeadingAt(6, RectsOf(geometry), x, 5), expected)
                    << width << ' ' << shift << ' ' << x;
            }
            EXPECT_EQ(HeadingAt(6, RectsOf(geometry), 10, 0), -1);
            EXPECT_EQ(HeadingAt(6, RectsOf(geometry), 10, 20), -1);
        }
}

TEST(HeadingGeometry, DividersAreGrabbedFromFiveLeftToThreeRight) {
    const auto three = ColumnsOf({50, 100, 48}); // dividers at 52 and 152, the last has none
    const auto one = ColumnsOf({50});
    const auto wide = ColumnsOf({60, 300, 50, 10});
    const auto closed = ColumnsOf({50, 0, 50});
    const auto four = ColumnsOf({60, 60, 60, 60});
    const struct {
        Columns columns;
        int width, shift, x, column;
    } cases[] = {
        {three, 200, 0, 46, -1},  {three, 200, 0, 47, 0},   {three, 200, 0, 55, 0},
        {three, 200, 0, 56, -1},  {three, 200, 0, 146, -1}, {three, 200, 0, 147, 1},
        {three, 200, 0, 155, 1},  {three, 200, 0, 156, -1}, {three, 200, 0, 199, -1},
        {four, 100, 120, 62, 2}, // scrolled
        {four, 100, 120, 56, -1}, {one, 100, 0, 52, -1},    {{}, 100, 0, 2, -1},
        {wide, 100, 0, 99, 1},   // a column that ends outside is grabbed at the edge
        {closed, 200, 0, 52, 1}, // width 0 can be widened again
    };
    for (const auto& c : cases) {
        const HeadingGeometry geometry(ColumnView(c.columns, c.shift), c.width, 20);
        const int count = static_cast<int>(c.columns.size());
        EXPECT_EQ(DividerAt(count, RectsOf(geometry), c.width, c.x), c.column)
            << c.columns.size() << ": " << c.x << ' ' << c.shift;
    }
}

TEST(HeadingGeometry, NarrowHeadersHaveFewerLines) {
    const struct {
        int width;
        bool frame;
        int upper;
        bool lower;
    } cases[] = {
        {0, false, 0, false}, {1, true, 0, false}, {2, true, 2, false}, {3, true, 3, true}};
    for (const auto& c : cases) {
        const HeadingLines lines = LayOutHeading({5, 1, 5 + c.width, 20}, false);
        EXPECT_EQ(lines.hasFrame, c.frame) << c.width;
        EXPECT_EQ(lines.upperPoints, c.upper) << c.width;
        EXPECT_EQ(lines.hasLower, c.lower) << c.width;
    }
    for (const bool pressed : {false, true}) { // the text moves by a pixel
        const HeadingRect text = LayOutHeading({5, 1, 40, 20}, pressed).text;
        EXPECT_EQ(text.left, 6 + pressed);
        EXPECT_EQ(text.top, 3 + pressed);
        EXPECT_EQ(text.right, 37 + pressed);
        EXPECT_EQ(text.bottom, 20 + pressed);
    }
}

TEST(HeadingTracking, ResizingFollowsThePointerAtItsGrabOffset) {
    HeadingTracking state;
    state.PressBoundary(1, 100, 97);
    EXPECT_EQ(state.GetPhase(), HeadingTracking::Phase::Resizing);
    EXPECT_EQ(state.sizerPosition, 99);
    EXPECT_EQ(state.grabOffset, 2);
    EXPECT_EQ(state.MoveBoundary(97, 40), 60); // not moved: the old width
    EXPECT_EQ(state.MoveBoundary(107, 40), 70);
    EXPECT_EQ(state.MoveBoundary(0, 40), 0); // never negative
    const auto released = state.Release(-1);
    EXPECT_EQ(released.was, HeadingTracking::Phase::Resizing);
    EXPECT_EQ(released.sortColumn, -1);
    EXPECT_EQ(state.GetPhase(), HeadingTracking::Phase::Idle);
}

TEST(HeadingTracking, APressedHeaderSortsOnlyWhenReleasedOverIt) {
    HeadingTracking state;
    state.PressHeading(2);
    EXPECT_FALSE(state.MoveOver(2));
    EXPECT_TRUE(state.MoveOver(1));
    EXPECT_FALSE(state.MoveOver(-1));
    EXPECT_FALSE(state.pressedLook);
    auto released = state.Release(1);
    EXPECT_EQ(released.sortColumn, -1);
    EXPECT_FALSE(released.hadLook);

    state.PressHeading(2);
    state.MoveOver(-1);
    EXPECT_TRUE(state.MoveOver(2)); // and back
    released = state.Release(2);
    EXPECT_EQ(released.sortColumn, 2);
    EXPECT_TRUE(released.hadLook);
    EXPECT_EQ(state.Release(2).was, HeadingTracking::Phase::Idle);

    state.PressHeading(0);
    EXPECT_EQ(state.Cancel(), HeadingTracking::Phase::HeadingPressed);
    EXPECT_EQ(state.Release(0).sortColumn, -1);
}

} // namespace

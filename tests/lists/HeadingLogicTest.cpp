#include "src/lists/HeadingGeometry.h"
#include "src/lists/HeadingTracking.h"

#include <gtest/gtest.h>

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

TEST(HeadingGeometry, RectanglesStandSideBySide) {
    const auto columns = OfWidths({50, 40, 200});
    const HeadingGeometry geometry(columns, 200, 20);
    HeadingRect rect;
    EXPECT_TRUE(geometry.GetRect(0, rect));
    EXPECT_EQ(rect.left, 2);
    EXPECT_EQ(rect.top, 1);
    EXPECT_EQ(rect.right, 52);
    EXPECT_EQ(rect.bottom, 20);
    EXPECT_TRUE(geometry.GetRect(2, rect));
    EXPECT_EQ(rect.left, 92);
    EXPECT_EQ(rect.right, 199); // at most the client's right edge less one
    EXPECT_FALSE(geometry.GetRect(3, rect));
    EXPECT_FALSE(geometry.GetRect(-1, rect));
    EXPECT_FALSE(HeadingGeometry(columns, 92, 20).GetRect(2, rect));
    EXPECT_TRUE(HeadingGeometry(columns, 93, 20).GetRect(2, rect));
}

TEST(HeadingGeometry, HitTestNeedsThePointInside) {
    const auto columns = OfWidths({50, 0, 40});
    const HeadingGeometry geometry(columns, 200, 20);
    const struct {
        int x, y, column;
    } cases[] = {{2, 1, 0},   {51, 19, 0}, {52, 5, 2},  {91, 5, 2},
                 {92, 5, -1}, {1, 5, -1},  {10, 0, -1}, {10, 20, -1}};
    for (const auto& c : cases)
        EXPECT_EQ(geometry.HitTest(c.x, c.y), c.column) << c.x << ',' << c.y;
}

TEST(HeadingGeometry, HitTestAgreesWithTheRectangles) {
    const auto columns = OfWidths({7, 0, 30, 1, 90, 50});
    for (const int width : {0, 1, 2, 40, 100, 130, 300}) {
        const HeadingGeometry geometry(columns, width, 20);
        for (int x = -3; x < width + 3; ++x) {
            int expected = -1;
            for (int i = 0; i < 6 && expected < 0; ++i) {
                HeadingRect rect;
                if (geometry.GetRect(i, rect) && x >= rect.left && x < rect.right)
                    expected = i;
            }
            EXPECT_EQ(geometry.HitTest(x, 5), expected) << width << ' ' << x;
        }
    }
}

TEST(HeadingGeometry, BoundariesAreGrabbedFromFiveLeftToThreeRight) {
    const auto columns = OfWidths({50, 100, 48});
    const HeadingGeometry geometry(columns, 200, 20); // boundaries at 52 and 152; last at 199
    const struct {
        int x, column;
    } cases[] = {{46, -1},  {47, 0},  {52, 0},  {55, 0},   {56, -1},
                 {146, -1}, {147, 1}, {155, 1}, {156, -1}, {199, -1}};
    for (const auto& c : cases)
        EXPECT_EQ(geometry.SizerHitTest(c.x), c.column) << c.x;
}

TEST(HeadingGeometry, BoundariesAtTheEdges) {
    EXPECT_EQ(HeadingGeometry(OfWidths({50}), 100, 20).SizerHitTest(52), -1);
    EXPECT_EQ(HeadingGeometry({}, 100, 20).SizerHitTest(2), -1);
    // A column that reaches past the strip is grabbed at the strip's edge, the ones behind it are
    // out of reach.
    const auto wide = OfWidths({60, 300, 50, 10});
    EXPECT_EQ(HeadingGeometry(wide, 100, 20).SizerHitTest(99), 1);
    // Of overlapping zones the right one wins: a column of width 0 can be opened again.
    const auto closed = OfWidths({50, 0, 50});
    EXPECT_EQ(HeadingGeometry(closed, 200, 20).SizerHitTest(52), 1);
}

TEST(HeadingGeometry, TheLastColumnEndsAtTheRightEdge) {
    const auto columns = OfWidths({50, 40, 30});
    EXPECT_EQ(HeadingGeometry(columns, 200, 20).FixedLastWidth(), 108);
    EXPECT_EQ(HeadingGeometry(columns, 100, 20).FixedLastWidth(), 8); // narrows too
    EXPECT_EQ(HeadingGeometry(columns, 92, 20).FixedLastWidth(), -1);
    EXPECT_EQ(HeadingGeometry({}, 92, 20).FixedLastWidth(), -1);
}

TEST(HeadingGeometry, NarrowHeadingsLoseTheirLines) {
    EXPECT_FALSE(LayOutHeading({5, 1, 5, 20}, false).hasFrame);
    const HeadingLines one = LayOutHeading({5, 1, 6, 20}, false);
    EXPECT_TRUE(one.hasFrame);
    EXPECT_EQ(one.upperPoints, 0);
    const HeadingLines two = LayOutHeading({5, 1, 7, 20}, false);
    EXPECT_EQ(two.upperPoints, 2);
    EXPECT_FALSE(two.hasLower);
    const HeadingLines all = LayOutHeading({5, 1, 40, 20}, false);
    EXPECT_EQ(all.upperPoints, 3);
    EXPECT_EQ(all.text.left, 6);
    EXPECT_EQ(all.text.right, 37);
    const HeadingLines pressed = LayOutHeading({5, 1, 40, 20}, true);
    EXPECT_EQ(pressed.text.left, 7);
    EXPECT_EQ(pressed.text.top, 4);
    EXPECT_EQ(pressed.text.right, 38);
    EXPECT_EQ(pressed.text.bottom, 21);
}

TEST(HeadingTracking, ResizingFollowsThePointerAtItsGrabOffset) {
    HeadingTracking state;
    state.PressBoundary(1, 100, 97);
    EXPECT_EQ(state.GetPhase(), HeadingTracking::Phase::Resizing);
    EXPECT_EQ(state.sizerPosition, 99);
    EXPECT_EQ(state.grabOffset, 2);
    EXPECT_EQ(state.MoveBoundary(97, 40), 60); // unmoved: the width as it was
    EXPECT_EQ(state.MoveBoundary(107, 40), 70);
    EXPECT_EQ(state.MoveBoundary(0, 40), 0); // never negative
    const auto released = state.Release(-1);
    EXPECT_EQ(released.was, HeadingTracking::Phase::Resizing);
    EXPECT_EQ(released.sortColumn, -1);
    EXPECT_EQ(state.GetPhase(), HeadingTracking::Phase::Idle);
}

TEST(HeadingTracking, APressedHeadingSortsOnlyWhenReleasedOverIt) {
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
}

TEST(HeadingTracking, CancelForgetsThePress) {
    HeadingTracking state;
    state.PressHeading(0);
    EXPECT_EQ(state.Cancel(), HeadingTracking::Phase::HeadingPressed);
    EXPECT_EQ(state.Release(0).sortColumn, -1);
    EXPECT_EQ(state.Cancel(), HeadingTracking::Phase::Idle);
}

} // namespace

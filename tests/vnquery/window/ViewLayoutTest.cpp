#include "examples/vnquery/window/ViewLayout.h"

#include <gtest/gtest.h>
#include <vector>

namespace vnquery {
namespace {

std::vector<LayoutRect> Parts(const ViewLayout& layout) {
    return {layout.databaseLabel, layout.database, layout.open, layout.connect,  layout.sqlLabel,
            layout.sql,           layout.run,      layout.stop, layout.progress, layout.list};
}

/// At every size, with narrow and with long texts: no part of negative size, none over another.
TEST(ViewLayoutTest, NothingOverlaps) {
    for (int width = 0; width <= 2000; width += 37)
        for (int height = 0; height <= 1400; height += 41)
            for (const ViewMeasures& measures : {ViewMeasures{}, ViewMeasures{30, 200, 180, 36}}) {
                const std::vector<LayoutRect> parts = Parts(LayOutView(width, height, measures));
                for (std::size_t i = 0; i < parts.size(); ++i) {
                    ASSERT_GE(parts[i].Width(), 0) << width << " x " << height << ": " << i;
                    ASSERT_GE(parts[i].Height(), 0) << width << " x " << height << ": " << i;
                    for (std::size_t j = 0; j < i; ++j)
                        ASSERT_FALSE(
                            parts[i].left < parts[j].right && parts[j].left < parts[i].right &&
                            parts[i].top < parts[j].bottom && parts[j].top < parts[i].bottom)
                            << width << " x " << height << ": " << i << " over " << j;
                }
            }
}

TEST(ViewLayoutTest, TheResultHasHalfTheHeight) {
    for (int height = 480; height <= 2000; height += 100) {
        const ViewLayout layout = LayOutView(960, height, {});
        EXPECT_EQ(layout.list.bottom, height);
        EXPECT_GE(2 * layout.list.Height(), height) << height;
        EXPECT_EQ(layout.list.right, 960);
    }
}

} // namespace
} // namespace vnquery

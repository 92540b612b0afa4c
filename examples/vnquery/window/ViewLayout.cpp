#include "vnquery/window/ViewLayout.h"

#include <algorithm>

namespace vnquery {

namespace {

constexpr int kGap = 6;
constexpr int kMinField = 80;
constexpr int kMinSqlLines = 3;
constexpr int kMaxSqlLines = 12;

} // namespace

ViewLayout LayOutView(int width, int height, const ViewMeasures& measures) {
    ViewLayout layout;
    const int fieldHeight = measures.line + 8;
    const int buttonWidth = measures.button + 24;
    const int fieldLeft = kGap + measures.label + kGap;
    const int right = std::max(width - kGap, fieldLeft + kMinField + 2 * (kGap + buttonWidth));

    int top = kGap;
    layout.connect = {right - buttonWidth, top, right, top + fieldHeight};
    layout.open = {layout.connect.left - kGap - buttonWidth, top, layout.connect.left - kGap,
                   top + fieldHeight};
    layout.database = {fieldLeft, top, layout.open.left - kGap, top + fieldHeight};
    layout.databaseLabel = {kGap, top + 4, fieldLeft - kGap, top + 4 + measures.line};

    top += fieldHeight + kGap;
    // Room for the two buttons and the progress bar beside the text.
    const int least = std::max(kMinSqlLines * measures.line + 8, 2 * fieldHeight + 2 * kGap + 10);
    const int most = std::max(least, kMaxSqlLines * measures.line + 8);
    const int sqlHeight = std::clamp(height / 4, least, most);
    const int buttonLeft = right - buttonWidth;
    layout.sqlLabel = {kGap, top + 4, fieldLeft - kGap, top + 4 + measures.line};
    layout.sql = {fieldLeft, top, buttonLeft - kGap, top + sqlHeight};
    layout.run = {buttonLeft, top, right, top + fieldHeight};
    layout.stop = {buttonLeft, top + fieldHeight + kGap, right, top + 2 * fieldHeight + kGap};
    layout.progress = {buttonLeft, layout.stop.bottom + kGap, right,
                       layout.stop.bottom + kGap + 10};

    top += sqlHeight + kGap + measures.headings;
    layout.list = {0, top, std::max(width, right + kGap),
                   std::max(height, top + 3 * measures.line)};
    return layout;
}

} // namespace vnquery

#include "src/lists/HeadingTracking.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstdint>

namespace vnbytstr::detail {
namespace {

void Check([[maybe_unused]] const HeadingTracking& state) {
    assert(state.tracking || state.pressedHeading == -1);
    assert(!state.pressedLook || state.GetPhase() == HeadingTracking::Phase::HeadingPressed);
}

} // namespace

void HeadingTracking::PressBoundary(int column, int rectRight, int x) {
    tracking = true;
    pressedLook = false;
    pressedHeading = -1;
    sizingColumn = column;
    sizerPosition = rectRight - 1;
    grabOffset = sizerPosition - x;
    Check(*this);
}

void HeadingTracking::PressHeading(int column) {
    tracking = true;
    pressedLook = true;
    pressedHeading = column;
    Check(*this);
}

int HeadingTracking::MoveBoundary(int x, int columnLeft) {
    const std::int64_t position = std::int64_t{grabOffset} + 1 + x;
    sizerPosition = static_cast<int>(std::clamp<std::int64_t>(position, columnLeft, INT_MAX));
    Check(*this);
    return sizerPosition - columnLeft;
}

bool HeadingTracking::MoveOver(int heading) {
    const bool look = heading == pressedHeading;
    const bool changed = look != pressedLook;
    pressedLook = look;
    Check(*this);
    return changed;
}

HeadingTracking::Released HeadingTracking::Release(int heading) {
    Released released;
    released.was = GetPhase();
    released.hadLook = pressedLook;
    if (released.was == Phase::HeadingPressed && heading == pressedHeading)
        released.sortColumn = pressedHeading;
    Cancel();
    return released;
}

HeadingTracking::Phase HeadingTracking::Cancel() {
    const Phase was = GetPhase();
    tracking = false;
    pressedLook = false;
    pressedHeading = -1;
    Check(*this);
    return was;
}

} // namespace vnbytstr::detail

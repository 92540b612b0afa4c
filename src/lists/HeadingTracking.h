// What a pressed mouse button is doing in a header control: a small state machine without a window.
//
//          PressBoundary                PressHeading
//   Idle ----------------> Resizing        Idle -----------> HeadingPressed
//   Resizing       -- Release, Cancel --> Idle
//   HeadingPressed -- Release, Cancel --> Idle
//
// Invariants:
// 1. pressedHeading is -1 unless the state is HeadingPressed.
// 2. pressedLook is set only in HeadingPressed.
// 3. While Resizing, the divider is at sizerPosition, grabOffset pixels right of the pointer.
#pragma once

namespace vnbytstr::detail {

/// The state.
struct HeadingTracking {
    enum class Phase { Idle, Resizing, HeadingPressed };

    bool tracking = false;    ///< the mouse is captured
    bool pressedLook = false; ///< the pressed header is drawn sunken
    int sizingColumn = -1;
    int sizerPosition = 0; ///< x of the divider being dragged
    int grabOffset = 0;    ///< divider x minus pointer x at the press
    int pressedHeading = -1;

    Phase GetPhase() const {
        if (!tracking)
            return Phase::Idle;
        return pressedHeading < 0 ? Phase::Resizing : Phase::HeadingPressed;
    }

    /// The button went down at `x` on the divider of `column`, whose header ends at `rectRight`.
    void PressBoundary(int column, int rectRight, int x);
    /// The button went down on a header.
    void PressHeading(int column);
    /// Resizing: the pointer moved to `x`. Returns the column's new width, at least 0.
    int MoveBoundary(int x, int columnLeft);
    /// HeadingPressed: the pointer moved to `heading` (or -1). Returns whether the look changed.
    bool MoveOver(int heading);

    /// What a release ended.
    struct Released {
        Phase was = Phase::Idle;
        int sortColumn = -1;  ///< the column to sort by, or -1
        bool hadLook = false; ///< the header was drawn sunken
    };
    /// The button went up over `heading` (or -1).
    Released Release(int heading);
    /// The capture was lost. Returns what was going on.
    Phase Cancel();
};

} // namespace vnbytstr::detail

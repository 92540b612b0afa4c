// What a pressed mouse does in a headings strip: a small state machine without a window.
//
//          PressBoundary                PressHeading
//   Idle ----------------> Resizing        Idle -----------> HeadingPressed
//   Resizing       -- Release, Cancel --> Idle
//   HeadingPressed -- Release, Cancel --> Idle
//
// Invariants:
// 1. pressedHeading is -1 unless the state is HeadingPressed.
// 2. pressedLook is set only in HeadingPressed.
// 3. While Resizing, the boundary lies at sizerPosition and follows the pointer at grabOffset.
#pragma once

namespace vnbytstr::detail {

struct HeadingTracking {
    enum class Phase { Idle, Resizing, HeadingPressed };

    bool tracking = false;
    bool pressedLook = false;
    int sizingColumn = -1;
    int sizerPosition = 0; ///< x of the moving boundary
    int grabOffset = 0;    ///< boundary x minus pointer x at the press
    int pressedHeading = -1;

    Phase GetPhase() const {
        if (!tracking)
            return Phase::Idle;
        return pressedHeading < 0 ? Phase::Resizing : Phase::HeadingPressed;
    }

    void PressBoundary(int column, int rectRight, int x);
    void PressHeading(int column);
    /// Resizing: the pointer is at `x`. Returns the sized column's new width, at least 0.
    int MoveBoundary(int x, int columnLeft);
    /// HeadingPressed: the pointer is over `heading` (-1: none). Whether the look changed.
    bool MoveOver(int heading);

    struct Released {
        Phase was = Phase::Idle;
        int sortColumn = -1; ///< the heading to sort by, or -1
        bool hadLook = false;
    };
    /// The button went up over `heading` (-1: none).
    Released Release(int heading);
    /// The mouse was taken away. Returns what was going on.
    Phase Cancel();
};

} // namespace vnbytstr::detail

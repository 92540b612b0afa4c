// What the user's hand does, wherever in the program.
#pragma once

namespace vnbytstr::detail {

/// A number that changes with each action: a key or button goes down (a key that repeats itself
/// does not count again), a wheel begins to turn, something is dragged into a window. What follows,
/// until the release, belongs to the same action. Main thread only.
unsigned CurrentHandAction();

} // namespace vnbytstr::detail

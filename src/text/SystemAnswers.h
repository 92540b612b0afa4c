// Answers of the system that are asked for once per process.
#pragma once

namespace vnbytstr::detail {

/// What IsDBCSWindows and IsBIDIWindows return; the system is asked at the first call. Threads that
/// race may ask twice.
bool IsDbcsEnabledOnce();
bool IsMiddleEastEnabledOnce();

/// Makes the next call of either ask again. For tests, which install another system.
void ForgetSystemAnswers() noexcept;

} // namespace vnbytstr::detail

// Answers of the system that are asked for once per process.
#pragma once

namespace vnbytstr::detail {

/// What IsDBCSWindows and IsBIDIWindows give; the system is asked at the first call. A race of
/// threads repeats the question.
bool IsDbcsEnabledOnce();
bool IsMiddleEastEnabledOnce();

/// Lets the next call of either ask anew. For tests, which install another system.
void ForgetSystemAnswers() noexcept;

} // namespace vnbytstr::detail

// What a spin button counts: range, position, wrapping, acceleration, and the number as text,
// independent of any window.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vnbytstr::detail {

// Invariant: the position lies in the range.
class SpinCounter {
public:
    int Lower() const { return m_lower; }
    int Upper() const { return m_upper; }
    int Position() const { return m_position; }

    void SetRange(int lower, int upper);
    int SetPosition(int position); ///< clamped to the range; returns the previous one

    bool Contains(int position) const;
    /// How much one step counts after that many seconds, towards the upper (or lower) end.
    int Delta(bool up, int seconds) const;
    /// The position that a step of `delta` leads to: past an end it wraps or stays at the end.
    int After(int delta, bool wrap) const;

    std::string Text(int position, char group) const; ///< group 0: no thousands separators
    std::optional<int> Parse(std::string_view text, char group) const;

private:
    int m_lower = 100;
    int m_upper = 0;
    int m_position = 0;
};

} // namespace vnbytstr::detail

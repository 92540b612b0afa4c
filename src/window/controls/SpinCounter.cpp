#include "src/window/controls/SpinCounter.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

namespace vnbytstr::detail {

namespace {

struct Acceleration {
    int seconds; ///< that the button has been held
    int step;
};
constexpr Acceleration kSteps[] = {{0, 1}, {2, 5}, {5, 20}};

} // namespace

void SpinCounter::SetRange(int lower, int upper) {
    m_lower = lower;
    m_upper = upper;
    SetPosition(m_position);
}

int SpinCounter::SetPosition(int position) {
    const int least = std::min(m_lower, m_upper);
    const int most = std::max(m_lower, m_upper);
    return std::exchange(m_position, std::clamp(position, least, most));
}

bool SpinCounter::Contains(int position) const {
    return position >= std::min(m_lower, m_upper) && position <= std::max(m_lower, m_upper);
}

int SpinCounter::Delta(bool up, int seconds) const {
    int size = 0;
    for (const auto& [after, step] : kSteps)
        if (seconds >= after)
            size = step;
    return up == (m_upper >= m_lower) ? size : -size;
}

int SpinCounter::After(int delta, bool wrap) const {
    const std::int64_t least = std::min(m_lower, m_upper);
    const std::int64_t most = std::max(m_lower, m_upper);
    const std::int64_t next = std::int64_t{m_position} + delta;
    if (next < least)
        return static_cast<int>(wrap ? most : least);
    if (next > most)
        return static_cast<int>(wrap ? least : most);
    return static_cast<int>(next);
}

std::string SpinCounter::Text(int position, char group) const {
    char digits[16];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), position);
    std::string text(digits, end.ptr);
    const std::size_t sign = position < 0 ? 1 : 0;
    if (group != 0)
        for (std::size_t at = text.size(); at > sign + 3;)
            text.insert(at -= 3, 1, group);
    return text;
}

std::optional<int> SpinCounter::Parse(std::string_view text, char group) const {
    std::string digits(text);
    if (group != 0)
        std::erase(digits, group);
    while (!digits.empty() && digits.front() == ' ')
        digits.erase(0, 1);
    while (!digits.empty() && digits.back() == ' ')
        digits.pop_back();
    const char* const begin = digits.data();
    const char* const end = begin + digits.size();
    int value = 0;
    const auto result = std::from_chars(begin, end, value);
    if (result.ec != std::errc() || result.ptr != end || begin == end || !Contains(value))
        return std::nullopt;
    return value;
}

} // namespace vnbytstr::detail

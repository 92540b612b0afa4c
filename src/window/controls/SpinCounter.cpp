#include "src/window/controls/SpinCounter.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

namespace vnbytstr::detail {

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

int SpinCounter::SetBase(int base) {
    return base == 10 || base == 16 ? std::exchange(m_base, base) : 0;
}

void SpinCounter::SetSteps(std::vector<std::pair<unsigned, unsigned>> steps) {
    if (steps.empty())
        return;
    std::stable_sort(steps.begin(), steps.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    m_steps = std::move(steps);
}

bool SpinCounter::Contains(int position) const {
    return position >= std::min(m_lower, m_upper) && position <= std::max(m_lower, m_upper);
}

int SpinCounter::Delta(bool up, int seconds) const {
    unsigned step = m_steps.front().second;
    for (const auto& [after, size] : m_steps)
        if (static_cast<unsigned>(std::max(seconds, 0)) >= after)
            step = size;
    const int size = static_cast<int>(std::min<unsigned>(step, std::numeric_limits<int>::max()));
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
    if (m_base == 16) {
        const auto end = std::to_chars(std::begin(digits), std::end(digits),
                                       static_cast<unsigned>(position), 16);
        std::string text(digits, end.ptr);
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char ch) { return ch >= 'a' ? static_cast<char>(ch - 'a' + 'A') : ch; });
        text.insert(0, text.size() < 4 ? 4 - text.size() : 0, '0');
        return "0x" + text;
    }
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
    const char* begin = digits.data();
    const char* const end = begin + digits.size();
    if (m_base == 16 && digits.size() > 2 && digits[0] == '0' && (digits[1] | 0x20) == 'x')
        begin += 2;
    std::from_chars_result result{};
    int value = 0;
    if (m_base == 16) {
        unsigned bits = 0;
        result = std::from_chars(begin, end, bits, 16);
        value = static_cast<int>(bits);
    } else {
        result = std::from_chars(begin, end, value);
    }
    if (result.ec != std::errc() || result.ptr != end || begin == end || !Contains(value))
        return std::nullopt;
    return value;
}

} // namespace vnbytstr::detail

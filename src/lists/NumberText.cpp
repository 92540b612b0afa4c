#include "src/lists/NumberText.h"

#include <algorithm>

namespace vnbytstr::detail {
namespace {

bool IsDigit(char ch) { return ch >= '0' && ch <= '9'; }
bool IsBlank(char ch) { return ch == ' ' || ch == '\t'; }

/// The exponent after an 'e', false without one. An absurdly large one is cut to kLargest.
bool ReadExponent(std::string_view text, std::int64_t& exponent) {
    constexpr std::int64_t kLargest = 1'000'000'000'000;
    bool isNegative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        isNegative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty() || !std::all_of(text.begin(), text.end(), IsDigit))
        return false;
    exponent = 0;
    for (const char ch : text)
        exponent = std::min(kLargest, exponent * 10 + (ch - '0'));
    if (isNegative)
        exponent = -exponent;
    return true;
}

} // namespace

bool NumberText::Read(std::string_view text) {
    *this = {};
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    int sign = 1;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        sign = text.front() == '-' ? -1 : 1;
        text.remove_prefix(1);
    }
    std::size_t end = 0;
    std::size_t point = std::string_view::npos;
    bool hasDigits = false;
    for (; end < text.size() && (IsDigit(text[end]) || text[end] == '.'); ++end) {
        if (text[end] != '.')
            hasDigits = true;
        else if (point == std::string_view::npos)
            point = end;
        else
            return false;
    }
    std::int64_t exponent = 0;
    if (!hasDigits || (end < text.size() && ((text[end] != 'e' && text[end] != 'E') ||
                                             !ReadExponent(text.substr(end + 1), exponent))))
        return false;
    if (point == std::string_view::npos)
        point = end;
    const std::string_view digits = text.substr(0, end);
    const std::size_t first = digits.find_first_not_of("0.");
    if (first == std::string_view::npos)
        return true; // 0, however it is written
    m_sign = sign;
    m_digits = digits.substr(first);
    m_exponent = exponent + static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first) -
                 (first < point ? 1 : 0);
    return true;
}

int NumberText::CompareDigits(const NumberText& other) const {
    if (m_exponent != other.m_exponent)
        return m_exponent < other.m_exponent ? -1 : 1;
    const auto next = [](std::string_view digits, std::size_t& at) {
        if (at < digits.size() && digits[at] == '.')
            ++at;
        return at < digits.size() ? digits[at++] : '0';
    };
    std::size_t here = 0;
    std::size_t there = 0;
    while (here < m_digits.size() || there < other.m_digits.size()) {
        const char left = next(m_digits, here);
        const char right = next(other.m_digits, there);
        if (left != right)
            return left < right ? -1 : 1;
    }
    return 0;
}

int NumberText::Compare(const NumberText& other) const {
    if (m_sign != other.m_sign)
        return m_sign < other.m_sign ? -1 : 1;
    return m_sign == 0 ? 0 : m_sign * CompareDigits(other);
}

} // namespace vnbytstr::detail

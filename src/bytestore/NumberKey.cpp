#include "src/bytestore/NumberKey.h"

#include "src/os/Word128.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

namespace vnbytstr::detail {

namespace {

/// How an exact value lies to the double nearest to it.
enum Side : char { kBelow = 0, kEqual = 1, kAbove = 2 };

void AppendBigEndian(ULONGLONG value, int bytes, std::string& key) {
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8)
        key.push_back(static_cast<char>(value >> shift));
}

void AppendDouble(double value, Side side, std::string& key) {
    constexpr ULONGLONG kSign = ULONGLONG{1} << 63;
    const auto bits = std::bit_cast<ULONGLONG>(value == 0 ? 0.0 : value);
    AppendBigEndian((bits & kSign) != 0 ? ~bits : bits | kSign, 8, key);
    key.push_back(side);
}

void AppendNaN(std::string& key) {
    AppendBigEndian(~ULONGLONG{0}, 8, key);
    key.push_back(kEqual);
}

/// 0.d1d2d3... times 10 to the exponent, without zeros at either end; no digits for 0.
struct Decimal {
    bool isNegative = false;
    int exponent = 0;
    std::string digits;
};

/// The exponent and the digits, two in a byte, in an order that is that of the numbers among those
/// of one sign.
void AppendDigits(const Decimal& decimal, std::string& key) {
    const std::size_t begin = key.size();
    AppendBigEndian(static_cast<DWORD>(decimal.exponent) ^ 0x80000000u, 4, key);
    for (std::size_t i = 0; i < decimal.digits.size(); i += 2) {
        const int low = i + 1 < decimal.digits.size() ? decimal.digits[i + 1] - '0' : 0;
        key.push_back(static_cast<char>(1 + (decimal.digits[i] - '0') * 10 + low));
    }
    key.push_back('\0');
    if (decimal.isNegative)
        std::transform(key.begin() + static_cast<std::ptrdiff_t>(begin), key.end(),
                       key.begin() + static_cast<std::ptrdiff_t>(begin),
                       [](char byte) { return static_cast<char>(~byte); });
}

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

constexpr int kMaxExponent = 1 << 28; // far beyond what a double has

/// Reads "e-12" at the end of a number; false when it is something else.
bool ReadExponent(std::string_view text, int& exponent) {
    if (text.empty())
        return true;
    if (text.front() != 'e' && text.front() != 'E')
        return false;
    text.remove_prefix(1);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    if (text.empty() || !std::all_of(text.begin(), text.end(), IsDigit))
        return false;
    int value = 0;
    for (const char digit : text)
        value = std::min(value * 10 + (digit - '0'), kMaxExponent / 16);
    exponent += isNegative ? -value : value;
    return true;
}

bool Parse(std::string_view text, Decimal& decimal) {
    while (text.starts_with(' '))
        text.remove_prefix(1);
    while (text.ends_with(' '))
        text.remove_suffix(1);
    decimal.isNegative = text.starts_with('-');
    if (decimal.isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    decimal.digits.clear();
    decimal.exponent = 0;
    bool hasDigits = false, isFraction = false;
    std::size_t at = 0;
    for (; at < text.size(); ++at) {
        const char character = text[at];
        if (character == '.' && !isFraction) {
            isFraction = true;
        } else if (IsDigit(character)) {
            hasDigits = true;
            if (character != '0' || !decimal.digits.empty()) {
                decimal.digits.push_back(character);
                decimal.exponent += isFraction ? 0 : 1;
            } else {
                decimal.exponent -= isFraction ? 1 : 0;
            }
        } else {
            break;
        }
    }
    if (!hasDigits || !ReadExponent(text.substr(at), decimal.exponent))
        return false;
    while (decimal.digits.ends_with('0'))
        decimal.digits.pop_back();
    return true;
}

/// -1, 0 or 1: how the magnitudes compare.
int CompareMagnitudes(const Decimal& left, const Decimal& right) {
    if (left.exponent != right.exponent)
        return left.exponent < right.exponent ? -1 : 1;
    const int order = left.digits.compare(right.digits);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

/// What the double is exactly.
Decimal Exactly(double value) {
    constexpr int kMostDigits = 767;
    std::array<char, kMostDigits + 16> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::scientific, kMostDigits - 1);
    Decimal decimal;
    Parse({text.data(), end.ptr}, decimal);
    return decimal;
}

void AppendAnyDecimal(const Decimal& decimal, std::string& key) {
    // The point stands before the digits, so the exponent of what is read is the decimal's own.
    std::string text = decimal.digits;
    text.insert(0, decimal.isNegative ? "-0." : "0.");
    text += 'e' + std::to_string(decimal.exponent);
    double nearest = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), nearest);
    int order; // of the magnitudes
    if (error == std::errc::result_out_of_range) {
        const bool isLarge = decimal.exponent > 0;
        nearest = isLarge ? std::numeric_limits<double>::infinity() : 0.0;
        nearest = decimal.isNegative ? -nearest : nearest;
        order = isLarge ? -1 : 1;
    } else {
        order = nearest == 0          ? 1
                : std::isinf(nearest) ? -1
                                      : CompareMagnitudes(decimal, Exactly(nearest));
    }
    if (decimal.isNegative)
        order = -order;
    AppendDouble(nearest, order < 0 ? kBelow : order > 0 ? kAbove : kEqual, key);
    if (order != 0)
        AppendDigits(decimal, key);
}

constexpr std::size_t kFewDigits = 18; // fit into 60 bits
constexpr int kFewPlaces = 22;         // 10 to that power is a double, exactly

ULONGLONG DigitsAsInteger(const Decimal& decimal) {
    ULONGLONG value = 0;
    for (const char digit : decimal.digits)
        value = value * 10 + static_cast<unsigned>(digit - '0');
    return value;
}

/// How digits / 10^places lies to `nearest`, a positive double that is the nearest one to it. With
/// few digits and places both sides of the comparison stay below 2^128.
Side SideOf(ULONGLONG digits, int places, double nearest) {
    int exponent;
    const double fraction = std::frexp(nearest, &exponent);
    Word128 left = digits, right = static_cast<ULONGLONG>(std::ldexp(fraction, 53));
    for (int i = 0; i < places; ++i)
        right *= 10;
    left <<= 53 - exponent; // not negative: the quotient of less than 2^53 is below it, too
    return left < right ? kBelow : left > right ? kAbove : kEqual;
}

/// Numbers as columns mostly have them: few digits, few of them after the point.
bool AppendShortDecimal(const Decimal& decimal, std::string& key) {
    static constexpr std::array<double, kFewPlaces + 1> kPowers = {
        1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const int places = static_cast<int>(decimal.digits.size()) - decimal.exponent;
    if (decimal.digits.size() > kFewDigits || places > kFewPlaces ||
        decimal.exponent > static_cast<int>(kFewDigits))
        return false;
    const ULONGLONG digits = DigitsAsInteger(decimal);
    if (places <= 0) {
        auto value = static_cast<LONGLONG>(digits);
        for (int i = places; i < 0; ++i)
            value *= 10;
        AppendIntegerKey(decimal.isNegative ? -value : value, key);
        return true;
    }
    if (digits >> 53 != 0)
        return false;
    const double nearest = static_cast<double>(digits) / kPowers[static_cast<std::size_t>(places)];
    const Side side = SideOf(digits, places, nearest);
    AppendDouble(decimal.isNegative ? -nearest : nearest,
                 decimal.isNegative ? static_cast<Side>(kAbove - side) : side, key);
    if (side != kEqual)
        AppendDigits(decimal, key);
    return true;
}

} // namespace

void AppendRealKey(double value, std::string& key) {
    if (std::isnan(value))
        AppendNaN(key);
    else
        AppendDouble(value, kEqual, key);
}

void AppendIntegerKey(LONGLONG value, std::string& key) {
    const auto nearest = static_cast<double>(value);
    constexpr double kPastAll = 9223372036854775808.0;
    if (nearest != kPastAll && static_cast<LONGLONG>(nearest) == value) {
        AppendDouble(nearest, kEqual, key);
        return;
    }
    AppendDouble(nearest,
                 nearest == kPastAll || value < static_cast<LONGLONG>(nearest) ? kBelow : kAbove,
                 key);
    Decimal decimal;
    Parse(std::to_string(value), decimal);
    AppendDigits(decimal, key);
}

void AppendDecimalKey(std::string_view text, std::string& key) {
    Decimal decimal;
    if (!Parse(text, decimal))
        AppendNaN(key);
    else if (decimal.digits.empty())
        AppendDouble(0, kEqual, key);
    else if (!AppendShortDecimal(decimal, key))
        AppendAnyDecimal(decimal, key);
}

} // namespace vnbytstr::detail

#include "vnquery/result/ColumnSummary.h"

#include "vnquery/tasks/Interruption.h"
#include "vnquery/tasks/Progress.h"

#include <algorithm>
#include <charconv>

namespace vnquery {

namespace {

constexpr int kMaxExponent = 10000;
constexpr std::size_t kDigits = 9; ///< of a part
constexpr long long kPart = 1000000000;

/// A number's digits without sign and point, and the power of ten of the last one.
struct Decimal {
    std::string digits;
    int exponent = 0;
    bool isNegative = false;
};

std::optional<Decimal> Parse(std::string_view text) {
    Decimal number;
    if (text.starts_with('-') || text.starts_with('+')) {
        number.isNegative = text[0] == '-';
        text.remove_prefix(1);
    }
    const std::size_t letter = std::min(text.find_first_of("eE"), text.size());
    if (letter < text.size()) {
        std::string_view exponent = text.substr(letter + 1);
        exponent.remove_prefix(exponent.starts_with('+') ? 1 : 0);
        const char* const end = exponent.data() + exponent.size();
        const auto read = std::from_chars(exponent.data(), end, number.exponent);
        if (read.ec != std::errc() || read.ptr != end || number.exponent > kMaxExponent ||
            number.exponent < -kMaxExponent)
            return {};
    }
    const std::string_view mantissa = text.substr(0, letter);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    number.digits = mantissa.substr(0, point);
    if (point < mantissa.size()) {
        number.digits += mantissa.substr(point + 1);
        number.exponent -= static_cast<int>(mantissa.size() - point - 1);
    }
    if (number.digits.empty() || number.digits.find_first_not_of("0123456789") != std::string::npos)
        return {};
    return number;
}

} // namespace

bool ExactSum::Add(std::string_view text) {
    std::optional<Decimal> number = Parse(text);
    if (!number)
        return false;
    // Zeros at the end, so that the parts begin at multiples of nine digits.
    constexpr int kStep = static_cast<int>(kDigits);
    const int over = ((number->exponent % kStep) + kStep) % kStep;
    number->digits.append(static_cast<std::size_t>(over), '0');
    int place = (number->exponent - over) / kStep;
    std::string_view digits = number->digits;
    for (; !digits.empty(); ++place) {
        const std::size_t count = std::min(digits.size(), kDigits);
        long long part = 0;
        std::from_chars(digits.data() + digits.size() - count, digits.data() + digits.size(), part);
        digits.remove_suffix(count);
        long long& sum = m_parts[place];
        sum += number->isNegative ? -part : part;
        constexpr long long kMost = kPart * kPart;
        if (sum >= kMost || sum <= -kMost) { // far from an overflow
            m_parts[place + 1] += sum / kPart;
            sum %= kPart;
        }
    }
    return true;
}

std::string ExactSum::Get() const {
    if (m_parts.empty())
        return "0";
    const int lowest = std::min(m_parts.begin()->first, 0);
    constexpr int kRoom = 3; // for what is carried
    const int highest = std::max(m_parts.rbegin()->first, 0) + kRoom;
    std::vector<long long> parts;
    // All parts positive; returns what is carried out, which is negative with the sum.
    const auto carry = [&](long long sign) {
        long long over = 0;
        parts.assign(static_cast<std::size_t>(highest - lowest) + 1, 0);
        for (const auto& [place, part] : m_parts)
            parts[static_cast<std::size_t>(place - lowest)] = sign * part;
        for (long long& part : parts) {
            part += over;
            over = part / kPart - (part % kPart < 0 ? 1 : 0);
            part -= over * kPart;
        }
        return over;
    };
    std::string text;
    const bool isNegative = carry(1) < 0;
    if (isNegative)
        carry(-1);
    for (int place = highest; place >= lowest; --place) {
        const std::string part = std::to_string(parts[static_cast<std::size_t>(place - lowest)]);
        text.append(kDigits - part.size(), '0').append(part);
        if (place == 0 && lowest < 0)
            text += '.';
    }
    text.erase(0, std::min(text.find_first_not_of('0'), text.size()));
    if (lowest < 0)
        text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.'))
        text.pop_back();
    if (text.empty() || text[0] == '.')
        text.insert(0, "0");
    return (isNegative ? "-" : "") + text;
}

ColumnSummary Summarise(const ResultSet& result, std::size_t column,
                        const std::map<std::size_t, Value>& changed, std::vector<DWORD> rows,
                        Progress& progress) {
    const auto valueOf = [&](DWORD row) {
        const auto found = changed.find(row);
        return found == changed.end() ? result.GetValue(row, column) : found->second;
    };
    ColumnSummary summary;
    summary.rows = rows.size();
    ExactSum sum;
    for (const DWORD row : rows) {
        const Value value = valueOf(row);
        summary.nulls += value.IsNull();
        if (value.GetType() == Value::Type::Number && sum.Add(value.GetBytes()))
            ++summary.numbers;
        progress.AddRow();
    }
    summary.sum = sum.Get();
    if (summary.nulls == summary.rows)
        return summary;
    if (!result.Sort(column, changed, false, rows,
                     [](ULONGLONG, ULONGLONG) { return !IsInterrupted(); }))
        throw Interrupted();
    summary.minimum = valueOf(rows[summary.nulls]);
    summary.maximum = valueOf(rows.back());
    return summary;
}

} // namespace vnquery

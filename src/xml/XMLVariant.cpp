// Invariants of CXMLVariant:
//   1. m_data is null exactly when m_length is 0.
//   2. m_length is not negative.
//   3. When m_data is not null, m_length bytes and one NUL are in it.
//   4. m_type is one of the kinds.
#include "vnbytstr/XMLVariant.h"

#include "vnbytstr/framework/Exception.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace {

/// Of the thread's locale, asked for in the only way that the C library makes thread-safe.
std::string DecimalSeparator() {
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.1f", 1.5);
    return length > 2 ? std::string(text.data() + 1, static_cast<std::size_t>(length) - 2) : ".";
}

/// A number in decimal digits.
struct Digits {
    template <class Number>
    explicit Digits(Number number) {
        const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
        length = static_cast<LONG>(end - text.data());
    }
    std::array<char, 24> text{};
    LONG length = 0;
};

/// The number that a text is as a whole.
template <class Number>
std::optional<Number> WholeNumber(std::string_view text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional<Number>(number) : std::nullopt;
}

/// Integers are compared exactly, what has a fraction or an exponent as double.
template <class Number>
bool IsSameInteger(std::string_view text, Number number) {
    if (const auto whole = WholeNumber<Number>(text))
        return *whole == number;
    const bool isPlain = text.find_first_not_of("-0123456789") == std::string_view::npos;
    const auto real = isPlain ? std::optional<double>() : WholeNumber<double>(text);
    return real && *real == static_cast<double>(number);
}

} // namespace

CXMLVariant::CXMLVariant(const CXMLVariant& other) { Set(other); }

CXMLVariant::CXMLVariant(CXMLVariant&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)), m_length(std::exchange(other.m_length, 0)),
      m_type(other.m_type) {}

CXMLVariant::~CXMLVariant() { std::free(m_data); }

CXMLVariant& CXMLVariant::operator=(const CXMLVariant& other) {
    if (this != &other)
        Set(other);
    return *this;
}

CXMLVariant& CXMLVariant::operator=(CXMLVariant&& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_length, other.m_length);
    std::swap(m_type, other.m_type);
    return *this;
}

void CXMLVariant::Clear() noexcept {
    std::free(m_data);
    m_data = nullptr;
    m_length = 0;
}

bool CXMLVariant::RedistributeMemory(LONG n) noexcept {
    if (n < 1) {
        Clear();
        return true;
    }
    const auto length = static_cast<std::size_t>(n);
    auto* data = static_cast<char*>(std::realloc(m_data, length + 1));
    if (data == nullptr) {
        Clear();
        return false;
    }
    const auto kept = static_cast<std::size_t>(std::min(m_length, n));
    std::memset(data + kept, 0, length + 1 - kept);
    m_data = data;
    m_length = n;
    Check();
    return true;
}

void CXMLVariant::SetRawData(const char* bytes, LONG n) {
    if (bytes == nullptr || n < 0)
        n = 0;
    const auto length = static_cast<std::size_t>(n);
    const bool isOwn = m_data != nullptr && bytes >= m_data && bytes <= m_data + m_length;
    if (isOwn && n != m_length) {
        const CString copy(bytes, std::min(n, m_length - static_cast<LONG>(bytes - m_data)));
        SetRawData(copy, copy.GetLength());
        return;
    }
    if (n != m_length && !RedistributeMemory(n))
        AfxThrowMemoryException();
    if (n > 0 && m_data != nullptr) {
        std::memmove(m_data, bytes, length);
        m_data[length] = '\0';
    }
    m_type = kRaw;
    Check();
}

void CXMLVariant::Set(const CXMLVariant& value) {
    SetRawData(value.m_data, value.m_length);
    m_type = value.m_type;
}

void CXMLVariant::Set(const CString& value) { SetText(value, value.GetLength()); }

void CXMLVariant::Set(int value) { SetInteger(static_cast<long long>(value)); }

void CXMLVariant::SetInteger(long long value) {
    const Digits digits(value);
    SetRawData(digits.text.data(), digits.length);
    m_type = kInteger;
}

void CXMLVariant::SetInteger(unsigned long long value) {
    const Digits digits(value);
    SetRawData(digits.text.data(), digits.length);
    m_type = kInteger;
}

void CXMLVariant::Set(double value) {
    std::array<char, 400> text{}; // DBL_MAX has 309 digits before the point
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6)
            .ptr;
    SetRawData(text.data(), static_cast<LONG>(end - text.data()));
    m_type = kDouble;
}

void CXMLVariant::Set(bool value) {
    SetRawData(value ? "true" : "false", value ? 4 : 5);
    m_type = kBoolean;
}

void CXMLVariant::Set(void* value) {
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(), text.size(), "0x%" PRIxPTR,
                                     reinterpret_cast<std::uintptr_t>(value));
    SetRawData(text.data(), length);
    m_type = kPointer;
}

int CXMLVariant::ToInt() const noexcept {
    const long value = m_data != nullptr ? std::strtol(m_data, nullptr, 10) : 0;
    return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

DWORD CXMLVariant::ToDWord() const noexcept {
    if (m_data == nullptr)
        return 0;
    const long long value = std::strtoll(m_data, nullptr, 10);
    return static_cast<DWORD>(std::clamp<long long>(value, -0xFFFFFFFFLL, 0xFFFFFFFFLL));
}

long long CXMLVariant::ToLongLong() const noexcept {
    return m_data != nullptr ? std::strtoll(m_data, nullptr, 10) : 0;
}

unsigned long long CXMLVariant::ToULongLong() const noexcept {
    return m_data != nullptr ? std::strtoull(m_data, nullptr, 10) : 0;
}

bool CXMLVariant::IsText(const char* text, LONG length) const noexcept {
    return length == m_length &&
           (length == 0 || std::memcmp(m_data, text, static_cast<std::size_t>(length)) == 0);
}

bool CXMLVariant::IsNumber(long long number) const noexcept {
    return m_data != nullptr && IsSameInteger({m_data, static_cast<std::size_t>(m_length)}, number);
}

bool CXMLVariant::IsNumber(unsigned long long number) const noexcept {
    return m_data != nullptr && IsSameInteger({m_data, static_cast<std::size_t>(m_length)}, number);
}

bool CXMLVariant::IsNumber(double number) const {
    if (m_data == nullptr)
        return false;
    const auto real = WholeNumber<double>({m_data, static_cast<std::size_t>(m_length)});
    return (real && *real == number) || *this == CXMLVariant(number);
}

double CXMLVariant::ToDouble() const {
    if (m_data == nullptr)
        return 0;
    const std::string separator = DecimalSeparator();
    if (separator == ".")
        return std::strtod(m_data, nullptr);
    std::string text(m_data, static_cast<std::size_t>(m_length));
    for (std::size_t at = text.find('.'); at != std::string::npos;
         at = text.find('.', at + separator.size()))
        text.replace(at, 1, separator);
    return std::strtod(text.c_str(), nullptr);
}

bool CXMLVariant::ToBool() const noexcept {
    const std::string_view text(m_data != nullptr ? m_data : "",
                                static_cast<std::size_t>(m_length));
    return !text.empty() && text != "false" && text != "0";
}

void* CXMLVariant::ToPointer() const noexcept {
    if (m_data == nullptr)
        return nullptr;
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(std::strtoull(m_data, nullptr, 16)));
}

void CXMLVariant::Check() const noexcept {
    assert((m_data == nullptr) == (m_length == 0));
    assert(m_length >= 0);
    assert(m_data == nullptr || m_data[m_length] == '\0');
    assert(m_type >= kString && m_type <= kPointer);
}

bool operator==(const CXMLVariant& left, const CXMLVariant& right) noexcept {
    return left.GetLength() == right.GetLength() &&
           (left.IsEmpty() || std::memcmp(left.GetRawData(), right.GetRawData(),
                                          static_cast<std::size_t>(left.GetLength())) == 0);
}

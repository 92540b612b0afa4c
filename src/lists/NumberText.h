// Numbers as texts, compared exactly however many digits they have.
#pragma once

#include <cstdint>
#include <string_view>

namespace vnbytstr::detail {

/// A decimal number in a text, which stays the caller's and must outlive the object; initially 0.
class NumberText {
public:
    /// Reads blanks, a sign, digits with at most one point, an exponent, and blanks. False for
    /// anything else; the number is 0 then.
    bool Read(std::string_view text);
    /// Below 0, 0 or above 0, as this number is less than, equal to or greater than the other.
    int Compare(const NumberText& other) const;

private:
    int CompareDigits(const NumberText& other) const;

    int m_sign = 0;              ///< of the number: -1, 0 or 1
    std::int64_t m_exponent = 0; ///< the first digit's power of ten
    std::string_view m_digits;   ///< from the first digit other than 0; may hold the point
};

} // namespace vnbytstr::detail

// Montgomery's multiplication on digits of 52 bits, for the multiply-and-add instructions of
// AVX-512 IFMA.
#pragma once

#include "src/numbers/WordRows.h"

namespace vnbytstr::detail {

inline constexpr unsigned kDigitBits = 52;
inline constexpr Word64 kDigitMask = (Word64{1} << kDigitBits) - 1;

/// r = a * b / 2^(52 digits) modulo m, all in one digit of 52 bits a word, the least significant
/// first, of `room` words; those from `digits` on are zero. a and b are below 2 m and so is r,
/// which is not reduced further; 4 m is at most 2^(52 digits). `negatedInverse` is that of m modulo
/// 2^52, negated (higher bits do not matter). r may be a or b.
using DigitMultiply = void (*)(Word64* r, const Word64* a, const Word64* b, const Word64* m,
                               Word64 negatedInverse, std::size_t digits);

struct DigitMultiplier {
    DigitMultiply multiply = nullptr; ///< null: none for so many digits
    std::size_t room = 0;             ///< words of a number
};

/// The multiplier for numbers of `digits` digits. Call `multiply` only when Kernel::Avx512 is
/// active.
DigitMultiplier DigitMultiplierAvx512(std::size_t digits) noexcept;

} // namespace vnbytstr::detail

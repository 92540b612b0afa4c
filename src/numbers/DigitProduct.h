// Products of long numbers on digits of 52 bits, for the multiply-and-add instructions of AVX-512
// IFMA.
#pragma once

#include "src/numbers/WordRows.h"

namespace vnbytstr::detail {

/// The lengths (in words) that MultiplyDigitsAvx512 takes. Below the least one the conversion to
/// digits costs more than is won, above the greatest one Karatsuba's method is faster; measured
/// with bench_number.
inline constexpr std::size_t kLeastDigitProduct = 24;
inline constexpr std::size_t kMostDigitProduct = 256;

/// r[0..2n) = a * b, both of n words; faster when they are the same. r overlaps neither. Call it
/// only when Kernel::Avx512 is active.
void MultiplyDigitsAvx512(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept;

} // namespace vnbytstr::detail

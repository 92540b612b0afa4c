// Modular exponentiation on arrays of 64-bit words. Its time depends on the values: not for secrets
// where an attacker can measure it.
#pragma once

#include "src/numbers/DigitMultiply.h"
#include "src/numbers/WordArithmetic.h"

namespace vnbytstr::detail {

/// base ^ exponent modulo `modulus` (not zero), trimmed; leading zero words are allowed everywhere.
/// An exponent of zero gives 1 modulo the modulus, so no words for a modulus of 1.
///
/// Odd moduli: Montgomery's multiplication (P. Montgomery, Modular Multiplication Without Trial
/// Division, Mathematics of Computation 44, 1985) and a sliding window over the exponent (A.
/// Menezes et al., Handbook of Applied Cryptography, 14.85). Even ones: the odd part and the power
/// of two apart, joined by Garner's algorithm (ibid., 14.71).
Words ModularPower(WordSpan base, WordSpan exponent, WordSpan modulus);

/// The same, multiplying in digits of 52 bits whenever `choose` has a multiplier.
Words ModularPower(WordSpan base, WordSpan exponent, WordSpan modulus,
                   DigitMultiplier (*choose)(std::size_t digits) noexcept);

} // namespace vnbytstr::detail

// The inner loops of big numbers: one row of a multiplication. A number is an array of 64-bit
// words, the least significant first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vnbytstr::detail {

using Word64 = std::uint64_t;

/// The loops in use; all give the same results.
struct WordRows {
    /// r[0..n) += a[0..n) * b; returns the word carried out.
    Word64 (*addMultiple)(Word64* r, const Word64* a, std::size_t n, Word64 b) noexcept;
    // Eight words of one operand against all of the other; the eight words of the sum that are
    // being accumulated stay in registers. Null where there is no fast version.

    /// Adds a[0..8) * b[0..8 * eights) to r and the window, which stands for r[0..8) to r[n..n + 8)
    /// while it moves: `window` is added at r[0], r[0..8 * eights) gets the low words of the sum,
    /// `window` the eight above. eights is not 0.
    void (*addEightColumns)(Word64* r, const Word64* a, const Word64* b, std::size_t eights,
                            Word64* window) noexcept;
    /// Finds the multiples u[0..8) that make the low eight words of window + u * m[0..8) zero, m's
    /// inverse modulo 2^64 negated in `inverse`; `window` becomes the eight words above.
    void (*reduceEightColumns)(Word64* window, const Word64* m, Word64* u, Word64 inverse) noexcept;
    /// r[0..16) = a[0..8) squared.
    void (*squareEight)(Word64* r, const Word64* a) noexcept;
    /// r = 2 r + a, of 8 * eights words; nothing is carried out.
    void (*doubleAndAdd)(Word64* r, const Word64* a, std::size_t eights) noexcept;
    /// r = a * b, as MultiplyDigitsAvx512 (DigitProduct.h). Null where there is no fast version.
    void (*multiplyDigits)(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept;
};

/// The ones for the active kernel: with mulx, adcx and adox where the machine has them, else plain.
const WordRows& ActiveWordRows() noexcept;

} // namespace vnbytstr::detail

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
    /// r[0..n) -= a[0..n) * b; returns the word borrowed.
    Word64 (*subMultiple)(Word64* r, const Word64* a, std::size_t n, Word64 b) noexcept;
};

/// The ones for the active kernel: with mulx, adcx and adox where the machine has them, else plain.
const WordRows& ActiveWordRows() noexcept;

} // namespace vnbytstr::detail

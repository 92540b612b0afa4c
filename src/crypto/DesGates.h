// The gates that the S-box circuits are made of, over a type V of one or more 64-bit lanes.
#pragma once

#include <cstdint>

// Everything the bitsliced cipher is made of ends up in one function for each V, and so gets the
// instruction set that function is compiled for.
#define VNBYTSTR_INLINE __attribute__((always_inline)) inline

namespace vnbytstr::detail {

/// What a V has. A type with an instruction for any function of three inputs says so in a
/// specialization and has a static member Ternary<f>(a, b, c): bit 4a + 2b + c of f.
template <class V>
struct DesVector {
    static constexpr bool kTernary = false;
};

/// Which of the circuits: S-box 1 to 8, of ternary gates or not.
template <unsigned Box, bool IsTernary>
struct DesBoxTag {};

template <class V>
VNBYTSTR_INLINE V AndNot(const V& a, const V& b) {
    return a & ~b;
}

template <unsigned F, class V>
VNBYTSTR_INLINE V Ternary(const V& a, const V& b, const V& c) {
    return DesVector<V>::template Ternary<F>(a, b, c);
}

} // namespace vnbytstr::detail

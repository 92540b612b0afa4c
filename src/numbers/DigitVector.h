// Eight digits of 52 bits in a register, for sources that stand between VNBYTSTR_DIGITS_BEGIN and
// VNBYTSTR_DIGITS_END: with AVX-512 IFMA, or simulated where VNBYTSTR_SIMULATE_AVX512 is defined.
#pragma once

#include "src/numbers/DigitMultiply.h"

#if defined(__x86_64__)

#if defined(VNBYTSTR_SIMULATE_AVX512)
#define VNBYTSTR_DIGITS simulated
#define VNBYTSTR_DIGITS_BEGIN
#define VNBYTSTR_DIGITS_END
#else
#include <immintrin.h>
#define VNBYTSTR_DIGITS machine
#if defined(__clang__)
// clang-format off
#define VNBYTSTR_DIGITS_BEGIN \
    _Pragma("clang attribute push(__attribute__((target(\"avx512f,avx512ifma,bmi2\"))), apply_to = function)")
// clang-format on
#define VNBYTSTR_DIGITS_END _Pragma("clang attribute pop")
#else
#define VNBYTSTR_DIGITS_BEGIN                                                                      \
    _Pragma("GCC push_options") _Pragma("GCC target(\"avx512f,avx512ifma,bmi2\")")
#define VNBYTSTR_DIGITS_END _Pragma("GCC pop_options")
#endif
#endif

#define VNBYTSTR_INLINE [[gnu::always_inline]] inline

// Inlined, so that arrays of vectors become registers.
#if defined(__clang__)
#define VNBYTSTR_UNROLL _Pragma("unroll")
#else
#define VNBYTSTR_UNROLL _Pragma("GCC unroll 20")
#endif

VNBYTSTR_DIGITS_BEGIN
namespace vnbytstr::detail::VNBYTSTR_DIGITS {

constexpr std::size_t kLanes = 8;

using Vector = Word64 __attribute__((vector_size(64)));
using UnalignedVector = Word64 __attribute__((vector_size(64), aligned(8), may_alias));
__extension__ using Word128 = unsigned __int128;

// sum + the low, or the high, 52 bits of a * b; only the low 52 bits of a and b count.
#if defined(VNBYTSTR_SIMULATE_AVX512)
VNBYTSTR_INLINE Vector AddLow(Vector sum, Vector a, Vector b) {
    return sum + (((a & kDigitMask) * (b & kDigitMask)) & kDigitMask);
}
VNBYTSTR_INLINE Vector AddHigh(Vector sum, Vector a, Vector b) {
    for (std::size_t i = 0; i < kLanes; ++i)
        sum[i] +=
            static_cast<Word64>(Word128{a[i] & kDigitMask} * (b[i] & kDigitMask) >> kDigitBits);
    return sum;
}
// The lanes above a digit's greatest value, those at it, and adding 1 to some lanes.
VNBYTSTR_INLINE unsigned Above(Vector a) {
    unsigned lanes = 0;
    for (std::size_t i = 0; i < kLanes; ++i)
        lanes |= (a[i] > kDigitMask ? 1u : 0u) << i;
    return lanes;
}
VNBYTSTR_INLINE unsigned Full(Vector a) {
    unsigned lanes = 0;
    for (std::size_t i = 0; i < kLanes; ++i)
        lanes |= (a[i] == kDigitMask ? 1u : 0u) << i;
    return lanes;
}
VNBYTSTR_INLINE Vector Increment(Vector a, unsigned lanes) {
    for (std::size_t i = 0; i < kLanes; ++i)
        a[i] += lanes >> i & 1;
    return a;
}
// Eight lanes of sixteen, from that one on (0 to 7).
template <unsigned First>
VNBYTSTR_INLINE Vector From(Vector low, Vector high) {
    return __builtin_shufflevector(low, high, First, First + 1, First + 2, First + 3, First + 4,
                                   First + 5, First + 6, First + 7);
}
#else
VNBYTSTR_INLINE Vector AddLow(Vector sum, Vector a, Vector b) {
    return (Vector)_mm512_madd52lo_epu64((__m512i)sum, (__m512i)a, (__m512i)b);
}
VNBYTSTR_INLINE Vector AddHigh(Vector sum, Vector a, Vector b) {
    return (Vector)_mm512_madd52hi_epu64((__m512i)sum, (__m512i)a, (__m512i)b);
}
VNBYTSTR_INLINE unsigned Above(Vector a) {
    return _mm512_cmpgt_epu64_mask((__m512i)a, (__m512i)(Vector{} + kDigitMask));
}
VNBYTSTR_INLINE unsigned Full(Vector a) {
    return _mm512_cmpeq_epi64_mask((__m512i)a, (__m512i)(Vector{} + kDigitMask));
}
VNBYTSTR_INLINE Vector Increment(Vector a, unsigned lanes) {
    return (Vector)_mm512_mask_add_epi64((__m512i)a, static_cast<__mmask8>(lanes), (__m512i)a,
                                         (__m512i)(Vector{} + 1));
}
template <unsigned First>
VNBYTSTR_INLINE Vector From(Vector low, Vector high) {
    return (Vector)_mm512_maskz_alignr_epi64(0xFF, (__m512i)high, (__m512i)low, First);
}
#endif

VNBYTSTR_INLINE Vector Load(const Word64* p) {
    return (Vector) * reinterpret_cast<const UnalignedVector*>(p);
}
VNBYTSTR_INLINE void Store(Word64* p, Vector a) {
    *reinterpret_cast<UnalignedVector*>(p) = (UnalignedVector)a;
}

} // namespace vnbytstr::detail::VNBYTSTR_DIGITS
VNBYTSTR_DIGITS_END

#endif

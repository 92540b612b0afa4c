// A test includes this source with VNBYTSTR_SIMULATE_AVX512 defined, to try its logic on a machine
// without AVX-512.
#include "src/crypto/DesKernelVector.h"

#if defined(__x86_64__)

#include <array>
#include <cstring>

#if defined(VNBYTSTR_SIMULATE_AVX512)
#include <simde/x86/avx512/ternarylogic.h>
#else
#include <immintrin.h>
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx512f"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx512f")
#endif
#endif

#include "src/crypto/DesBitslice.h"

namespace vnbytstr::detail {

namespace {

using Vector = std::uint64_t __attribute__((vector_size(64)));

#if defined(VNBYTSTR_SIMULATE_AVX512)
/// One function for all, since the simulation knows the 256 operations one by one.
__attribute__((noinline)) void Simulate(Vector& a, const Vector& b, const Vector& c, int function) {
    a = (Vector)simde_mm512_ternarylogic_epi64((simde__m512i)a, (simde__m512i)b, (simde__m512i)c,
                                               function);
}
#endif

} // namespace

template <>
struct DesVector<Vector> {
    static constexpr bool kTernary = true;
    template <unsigned F>
    VNBYTSTR_INLINE static Vector Ternary(const Vector& a, const Vector& b, const Vector& c) {
#if defined(VNBYTSTR_SIMULATE_AVX512)
        Vector result = a;
        Simulate(result, b, c, static_cast<int>(F));
        return result;
#else
        return (Vector)_mm512_ternarylogic_epi64((__m512i)a, (__m512i)b, (__m512i)c,
                                                 static_cast<int>(F));
#endif
    }
};

void DesRunAvx512(const std::uint8_t* in, std::uint8_t* out, std::size_t groups,
                  const DesKeyMasks& masks, std::uint8_t* previous) {
    DesRun<Vector>(in, out, groups, masks, previous);
}

} // namespace vnbytstr::detail

#if !defined(VNBYTSTR_SIMULATE_AVX512)
#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif
#endif

#endif

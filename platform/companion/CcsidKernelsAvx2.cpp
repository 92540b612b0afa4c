// The kernels' loops for AVX2.
#include "platform/companion/CcsidKernelsInternal.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>

#define VNBYTSTR_AVX2 __attribute__((target("avx2,bmi2")))
#define VNBYTSTR_AVX2_INLINE __attribute__((target("avx2,bmi2"), always_inline)) inline

namespace vnbytstr::detail {

namespace {

VNBYTSTR_AVX2_INLINE __m256i Load(const BYTE* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
VNBYTSTR_AVX2_INLINE void Store(BYTE* p, __m256i value) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), value);
}
/// The 16 bytes at `p` in both halves.
VNBYTSTR_AVX2_INLINE __m256i LoadTwice(const BYTE* p) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

/// table[x] for 32 bytes x: sixteen shuffles by the low four bits of x, and a tree of blends by the
/// high four (a blend looks at the top bit of each byte; shifting 16-bit lanes brings each bit
/// there).
template <unsigned kFirstRow>
VNBYTSTR_AVX2_INLINE __m256i LookUp(const BYTE* table, __m256i x) {
    const __m256i low = _mm256_and_si256(x, _mm256_set1_epi8(0x0F));
    const __m256i bit4 = _mm256_slli_epi16(x, 3), bit5 = _mm256_slli_epi16(x, 2),
                  bit6 = _mm256_slli_epi16(x, 1);
    __m256i quarter[4];
#pragma GCC unroll 4
    for (unsigned i = kFirstRow / 4; i < 4; ++i) {
        const BYTE* rows = table + i * 64;
        const __m256i r0 = _mm256_shuffle_epi8(LoadTwice(rows), low);
        const __m256i r1 = _mm256_shuffle_epi8(LoadTwice(rows + 16), low);
        const __m256i r2 = _mm256_shuffle_epi8(LoadTwice(rows + 32), low);
        const __m256i r3 = _mm256_shuffle_epi8(LoadTwice(rows + 48), low);
        quarter[i] = _mm256_blendv_epi8(_mm256_blendv_epi8(r0, r1, bit4),
                                        _mm256_blendv_epi8(r2, r3, bit4), bit5);
    }
    const __m256i upper = _mm256_blendv_epi8(quarter[2], quarter[3], bit6);
    if constexpr (kFirstRow == 8)
        return upper;
    else
        return _mm256_blendv_epi8(_mm256_blendv_epi8(quarter[0], quarter[1], bit6), upper, x);
}

} // namespace

VNBYTSTR_AVX2 std::size_t MapBytesAvx2(const ByteTable& table, const BYTE* in, BYTE* out,
                                       std::size_t size) noexcept {
    const __m256i gap = _mm256_set1_epi8(static_cast<char>(table.gap));
    const __m256i checked = _mm256_set1_epi8(table.hasGaps ? -1 : 0);
    std::size_t i = 0;
    for (; i + 32 <= size; i += 32) {
        const __m256i mapped = LookUp<0>(table.to.data(), Load(in + i));
        Store(out + i, mapped);
        if (!_mm256_testz_si256(_mm256_cmpeq_epi8(mapped, gap), checked))
            break;
    }
    return i + MapBytesPlain(table, in + i, out + i, size - i);
}

VNBYTSTR_AVX2 KernelStep BytesToUtf8Avx2(const ByteToUtf8Table& table, std::span<const BYTE> in,
                                         std::span<BYTE> out) noexcept {
    return BytesToUtf8Plain(table, in, out);
}
VNBYTSTR_AVX2 KernelStep Utf8ToBytesAvx2(const Utf8ToByteTable& table, std::span<const BYTE> in,
                                         std::span<BYTE> out) noexcept {
    return Utf8ToBytesPlain(table, in, out);
}
VNBYTSTR_AVX2 KernelStep DoubleBytesAvx2(const DoubleByteTable& table, WideForm form,
                                         std::span<const BYTE> in, std::span<BYTE> out) noexcept {
    return DoubleBytesPlain(table, form, in, out);
}

} // namespace vnbytstr::detail

#endif

// The byte-to-byte loop for AVX-512 with VBMI, whose byte permutation looks up 128 entries at once.
//
// A test includes this source with VNBYTSTR_SIMULATE_AVX512 defined, to try its logic on a machine
// without AVX-512.
#include "src/charset/CcsidKernels.h"

#if defined(__x86_64__)

#if defined(VNBYTSTR_SIMULATE_AVX512)
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/avx512/cmpeq.h>
#include <simde/x86/avx512/loadu.h>
#include <simde/x86/avx512/mov.h>
#include <simde/x86/avx512/mov_mask.h>
#include <simde/x86/avx512/permutex2var.h>
#include <simde/x86/avx512/set1.h>
#include <simde/x86/avx512/storeu.h>
#define VNBYTSTR_AVX512
#define MapBytesAvx512 MapBytesSimulated
#else
#include <immintrin.h>
#define VNBYTSTR_AVX512 __attribute__((target("avx512f,avx512bw,avx512vbmi")))
#endif

namespace vnbytstr::detail {

VNBYTSTR_AVX512 std::size_t MapBytesAvx512(const ByteTable& table, const BYTE* in, BYTE* out,
                                           std::size_t size) noexcept {
    const __m512i row0 = _mm512_loadu_si512(table.to.data());
    const __m512i row1 = _mm512_loadu_si512(table.to.data() + 64);
    const __m512i row2 = _mm512_loadu_si512(table.to.data() + 128);
    const __m512i row3 = _mm512_loadu_si512(table.to.data() + 192);
    const __m512i gap = _mm512_set1_epi8(static_cast<char>(table.gap));
    std::size_t i = 0;
    for (; i + 64 <= size; i += 64) {
        const __m512i x = _mm512_loadu_si512(in + i);
        // The permutation goes by the low seven bits, the top one chooses between the halves.
        const __m512i low = _mm512_permutex2var_epi8(row0, x, row1);
        const __m512i high = _mm512_permutex2var_epi8(row2, x, row3);
        const __m512i mapped = _mm512_mask_mov_epi8(low, _mm512_movepi8_mask(x), high);
        _mm512_storeu_si512(out + i, mapped);
        if (table.hasGaps && _mm512_cmpeq_epi8_mask(mapped, gap) != 0)
            break;
    }
    return i + MapBytesPlain(table, in + i, out + i, size - i);
}

} // namespace vnbytstr::detail

#endif

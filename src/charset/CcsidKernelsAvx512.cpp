// The loops of single-byte sets for AVX-512 with VBMI, whose byte permutation looks up 128 entries
// at once, and VBMI2, which packs the bytes wanted in one instruction.
//
// A test includes this source with VNBYTSTR_SIMULATE_AVX512 defined, to try its logic on a machine
// without AVX-512.
#include "src/charset/CcsidKernels.h"

#if defined(__x86_64__)

#include <algorithm>
#include <bit>
#include <numeric>

#if defined(VNBYTSTR_SIMULATE_AVX512)
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/avx512/and.h>
#include <simde/x86/avx512/cmpeq.h>
#include <simde/x86/avx512/cmpgt.h>
#include <simde/x86/avx512/loadu.h>
#include <simde/x86/avx512/mov.h>
#include <simde/x86/avx512/mov_mask.h>
#include <simde/x86/avx512/or.h>
#include <simde/x86/avx512/permutex2var.h>
#include <simde/x86/avx512/permutexvar.h>
#include <simde/x86/avx512/set1.h>
#include <simde/x86/avx512/setzero.h>
#include <simde/x86/avx512/slli.h>
#include <simde/x86/avx512/storeu.h>
#include <simde/x86/avx512/unpackhi.h>
#include <simde/x86/avx512/unpacklo.h>
#define VNBYTSTR_AVX512
#define MapBytesAvx512 MapBytesSimulated
#define BytesToUtf8Avx512 BytesToUtf8Simulated
#define Utf8ToBytesAvx512 Utf8ToBytesSimulated
#else
#include <immintrin.h>
#define VNBYTSTR_AVX512 __attribute__((target("avx512f,avx512bw,avx512vbmi,avx512vbmi2,popcnt")))
#endif

namespace vnbytstr::detail {

namespace {

#if defined(VNBYTSTR_SIMULATE_AVX512)
/// The bytes whose bit is set, without gaps.
__m512i Compress(std::uint64_t mask, __m512i bytes) {
    BYTE all[64], packed[64] = {};
    _mm512_storeu_si512(all, bytes);
    for (std::size_t i = 0, count = 0; i < 64; ++i)
        if (mask >> i & 1)
            packed[count++] = all[i];
    return _mm512_loadu_si512(packed);
}
#else
VNBYTSTR_AVX512 inline __m512i Compress(std::uint64_t mask, __m512i bytes) {
    return _mm512_maskz_compress_epi8(mask, bytes);
}
#endif

/// 256 bytes, looked up by 64 at a time.
struct Rows {
    VNBYTSTR_AVX512 explicit Rows(const BYTE* table)
        : m_row{_mm512_loadu_si512(table), _mm512_loadu_si512(table + 64),
                _mm512_loadu_si512(table + 128), _mm512_loadu_si512(table + 192)} {}
    VNBYTSTR_AVX512 __m512i LookUp(__m512i x) const {
        // The permutation goes by the low seven bits, the top one chooses between the halves.
        const __m512i low = _mm512_permutex2var_epi8(m_row[0], x, m_row[1]);
        const __m512i high = _mm512_permutex2var_epi8(m_row[2], x, m_row[3]);
        return _mm512_mask_mov_epi8(low, _mm512_movepi8_mask(x), high);
    }

private:
    __m512i m_row[4];
};

VNBYTSTR_AVX512 inline __m512i All(unsigned byte) {
    return _mm512_set1_epi8(static_cast<char>(byte));
}

} // namespace

VNBYTSTR_AVX512 std::size_t MapBytesAvx512(const ByteTable& table, const BYTE* in, BYTE* out,
                                           std::size_t size) noexcept {
    const Rows rows(table.to.data());
    const __m512i gap = All(table.gap);
    std::size_t i = 0;
    for (; i + 64 <= size; i += 64) {
        const __m512i mapped = rows.LookUp(_mm512_loadu_si512(in + i));
        _mm512_storeu_si512(out + i, mapped);
        if (table.hasGaps && _mm512_cmpeq_epi8_mask(mapped, gap) != 0)
            break;
    }
    return i + MapBytesPlain(table, in + i, out + i, size - i);
}

VNBYTSTR_AVX512 KernelStep BytesToUtf8Avx512(const ByteToUtf8Table& table, std::span<const BYTE> in,
                                             std::span<BYTE> out) noexcept {
    const Rows firsts(table.first.data());
    const Rows seconds(table.second.data());
    // Unpacking works within quarters: with this order its results are the first and second half.
    static constexpr std::uint64_t kOrder[] = {0, 4, 1, 5, 2, 6, 3, 7};
    const __m512i order = _mm512_loadu_si512(kOrder);
    std::size_t i = 0, o = 0;
    while (in.size() - i >= 64 && out.size() - o >= 128) {
        const __m512i x = _mm512_loadu_si512(in.data() + i);
        if (table.asciiIsAscii && _mm512_movepi8_mask(x) == 0) {
            _mm512_storeu_si512(out.data() + o, x);
            i += 64;
            o += 64;
            continue;
        }
        const __m512i ordered = _mm512_maskz_permutexvar_epi64(0xFF, order, x);
        const __m512i first = firsts.LookUp(ordered);
        const __m512i second = seconds.LookUp(ordered);
        if (_mm512_cmpeq_epi8_mask(second, All(1)) != 0) { // three bytes, or none
            const KernelStep step = BytesToUtf8Avx2(table, in.subspan(i, 64), out.subspan(o));
            i += step.consumed;
            o += step.produced;
            if (step.consumed == 0)
                return {i, o};
            continue;
        }
        for (const __m512i pairs :
             {_mm512_unpacklo_epi8(first, second), _mm512_unpackhi_epi8(first, second)}) {
            const std::uint64_t keep =
                ~_mm512_cmpeq_epi8_mask(pairs, _mm512_setzero_si512()) | 0x5555555555555555;
            _mm512_storeu_si512(out.data() + o, Compress(keep, pairs));
            o += static_cast<std::size_t>(std::popcount(keep));
        }
        i += 64;
    }
    const KernelStep rest = BytesToUtf8Avx2(table, in.subspan(i), out.subspan(o));
    return {i + rest.consumed, o + rest.produced};
}

VNBYTSTR_AVX512 KernelStep Utf8ToBytesAvx512(const Utf8ToByteTable& table, std::span<const BYTE> in,
                                             std::span<BYTE> out) noexcept {
    const Rows latin1(table.latin1.to.data());
    const __m512i gap = All(table.latin1.gap);
    BYTE places[64];
    std::iota(places, places + 64, BYTE{255}); // the place before each; the first has none
    const __m512i before = _mm512_loadu_si512(places);
    std::size_t i = 0, o = 0;
    while (in.size() - i >= 64 && out.size() - o >= 64) {
        const __m512i x = _mm512_loadu_si512(in.data() + i);
        const std::uint64_t high = _mm512_movepi8_mask(x);
        if (table.asciiIsAscii && high == 0) {
            _mm512_storeu_si512(out.data() + o, x);
            i += 64;
            o += 64;
            continue;
        }
        // Sequences of two bytes that begin with C2 or C3: up to U+00FF.
        const std::uint64_t lead =
            _mm512_cmpeq_epi8_mask(_mm512_and_si512(x, All(0xFE)), All(0xC2));
        const std::uint64_t trail = _mm512_cmpgt_epi8_mask(All(0xC0), x);
        // The lowest bit of the byte before a trail byte tells U+00C0 from U+0080.
        const __m512i bit6 = _mm512_and_si512(
            _mm512_slli_epi16(_mm512_maskz_permutexvar_epi8(~std::uint64_t{0}, before, x), 6),
            All(0x40));
        const __m512i code =
            _mm512_or_si512(x, _mm512_mask_mov_epi8(_mm512_setzero_si512(), trail, bit6));
        const __m512i mapped = latin1.LookUp(code);
        const std::uint64_t gaps = table.latin1.hasGaps ? _mm512_cmpeq_epi8_mask(mapped, gap) : 0;
        if (high != (lead | trail) || trail != lead << 1 || (gaps & ~lead) != 0) {
            // With more bytes than these, so that a character cut by their end is known.
            const KernelStep step = Utf8ToBytesAvx2(
                table, in.subspan(i, std::min<std::size_t>(in.size() - i, 128)), out.subspan(o));
            i += step.consumed;
            o += step.produced;
            if (step.consumed == 0)
                return {i, o};
            continue;
        }
        _mm512_storeu_si512(out.data() + o, Compress(~lead, mapped));
        o += static_cast<std::size_t>(std::popcount(~lead));
        i += 64 - (lead >> 63); // the last one may belong to the next block
    }
    const KernelStep rest = Utf8ToBytesAvx2(table, in.subspan(i), out.subspan(o));
    return {i + rest.consumed, o + rest.produced};
}

} // namespace vnbytstr::detail

#endif

// The kernels' loops for AVX2.
#include "src/charset/CcsidKernels.h"

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

/// Shuffle that packs eight 16-bit lanes to bytes: both bytes of the lanes whose bit is set, the
/// low byte of the others.
constexpr std::array<std::array<BYTE, 16>, 256> kPackPairs = [] {
    std::array<std::array<BYTE, 16>, 256> table{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned size = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            table[mask][size++] = static_cast<BYTE>(lane * 2);
            if (mask >> lane & 1)
                table[mask][size++] = static_cast<BYTE>(lane * 2 + 1);
        }
    }
    return table;
}();

/// Shuffle that packs the bytes whose bit is set.
constexpr std::array<std::array<BYTE, 8>, 256> kPackBytes = [] {
    std::array<std::array<BYTE, 8>, 256> table{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned size = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            if (mask >> lane & 1)
                table[mask][size++] = static_cast<BYTE>(lane);
        }
    }
    return table;
}();

VNBYTSTR_AVX2_INLINE BYTE* PutPairs(BYTE* q, __m128i pairs, unsigned mask) {
    const __m128i shuffle =
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(kPackPairs[mask].data()));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(q), _mm_shuffle_epi8(pairs, shuffle));
    return q + 8 + std::popcount(mask);
}

VNBYTSTR_AVX2_INLINE BYTE* PutBytes(BYTE* q, __m128i eight, unsigned mask) {
    const __m128i shuffle =
        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(kPackBytes[mask].data()));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(q), _mm_shuffle_epi8(eight, shuffle));
    return q + std::popcount(mask);
}

/// 32 bytes to UTF-8; null when one of them has not one or two bytes there.
VNBYTSTR_AVX2_INLINE BYTE* BlockToUtf8(const ByteToUtf8Table& table, __m256i x, BYTE* q) {
    const __m256i isHigh = _mm256_cmpgt_epi8(_mm256_setzero_si256(), x);
    __m256i first, second;
    if (table.latin1IsLatin1) {
        const __m256i top = _mm256_and_si256(x, _mm256_set1_epi8(static_cast<char>(0xE0)));
        if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(top, _mm256_set1_epi8(-128))) != 0)
            return nullptr; // 80 to 9F are something else
        // C2 or C3 by bit 6, and 80 with the low six bits.
        const __m256i bit6 = _mm256_and_si256(_mm256_srli_epi16(x, 6), _mm256_set1_epi8(1));
        const __m256i lead = _mm256_or_si256(bit6, _mm256_set1_epi8(static_cast<char>(0xC2)));
        first = _mm256_blendv_epi8(x, lead, x);
        second = _mm256_and_si256(_mm256_and_si256(x, isHigh),
                                  _mm256_set1_epi8(static_cast<char>(0xBF)));
    } else if (table.asciiIsAscii) {
        first = _mm256_blendv_epi8(x, LookUp<8>(table.first.data(), x), x);
        second = _mm256_and_si256(LookUp<8>(table.second.data(), x), isHigh);
    } else {
        first = LookUp<0>(table.first.data(), x);
        second = LookUp<0>(table.second.data(), x);
    }
    if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(second, _mm256_set1_epi8(1))) != 0)
        return nullptr;
    const auto two = ~static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(second, _mm256_setzero_si256())));
    const __m256i low = _mm256_unpacklo_epi8(first, second);
    const __m256i high = _mm256_unpackhi_epi8(first, second);
    q = PutPairs(q, _mm256_castsi256_si128(low), two & 0xFF);
    q = PutPairs(q, _mm256_castsi256_si128(high), two >> 8 & 0xFF);
    q = PutPairs(q, _mm256_extracti128_si256(low, 1), two >> 16 & 0xFF);
    return PutPairs(q, _mm256_extracti128_si256(high, 1), two >> 24);
}

/// 32 bytes of UTF-8 that hold only U+0000 to U+00FF; null when they hold anything else. `taken` is
/// 31 when the last one belongs to the next block.
VNBYTSTR_AVX2_INLINE BYTE* BlockFromUtf8(const Utf8ToByteTable& table, __m256i x, BYTE* q,
                                         std::size_t& taken) {
    const auto high = static_cast<unsigned>(_mm256_movemask_epi8(x));
    const auto lead = static_cast<unsigned>(_mm256_movemask_epi8(
        _mm256_cmpeq_epi8(_mm256_and_si256(x, _mm256_set1_epi8(static_cast<char>(0xFE))),
                          _mm256_set1_epi8(static_cast<char>(0xC2)))));
    const __m256i isTrail = _mm256_cmpgt_epi8(_mm256_set1_epi8(-64), x);
    const auto trail = static_cast<unsigned>(_mm256_movemask_epi8(isTrail));
    if (high != (lead | trail) || trail != lead << 1)
        return nullptr;
    // The lowest bit of the byte before a trail byte tells U+00C0 from U+0080.
    const __m256i before = _mm256_alignr_epi8(x, _mm256_permute2x128_si256(x, x, 0x08), 15);
    const __m256i bit6 = _mm256_and_si256(_mm256_slli_epi16(before, 6), _mm256_set1_epi8(0x40));
    __m256i latin1 = _mm256_or_si256(x, _mm256_and_si256(bit6, isTrail));
    const unsigned keep = ~lead;
    if (table.asciiIsAscii && table.latin1IsLatin1) {
        const __m256i top = _mm256_and_si256(latin1, _mm256_set1_epi8(static_cast<char>(0xE0)));
        if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(top, _mm256_set1_epi8(-128))) != 0)
            return nullptr; // U+0080 to U+009F
    } else {
        latin1 = LookUp<0>(table.latin1.to.data(), latin1);
        const __m256i gap = _mm256_set1_epi8(static_cast<char>(table.latin1.gap));
        const auto gaps =
            static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(latin1, gap)));
        if (table.latin1.hasGaps && (gaps & keep) != 0)
            return nullptr;
    }
    const __m128i front = _mm256_castsi256_si128(latin1);
    const __m128i back = _mm256_extracti128_si256(latin1, 1);
    q = PutBytes(q, front, keep & 0xFF);
    q = PutBytes(q, _mm_srli_si128(front, 8), keep >> 8 & 0xFF);
    q = PutBytes(q, back, keep >> 16 & 0xFF);
    taken = 32 - (lead >> 31);
    return PutBytes(q, _mm_srli_si128(back, 8), keep >> 24);
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

/// A block that the fast loops cannot do is left to the plain ones. They get a few bytes more, so
/// that a character cut by the block's end does not look unknown; it is unknown only when they
/// cannot go on either.
constexpr std::size_t kPlainStretch = 64;

VNBYTSTR_AVX2 KernelStep BytesToUtf8Avx2(const ByteToUtf8Table& table, std::span<const BYTE> in,
                                         std::span<BYTE> out) noexcept {
    std::size_t i = 0, o = 0;
    while (in.size() - i >= 32 && out.size() - o >= 80) {
        const __m256i x = Load(in.data() + i);
        if (table.asciiIsAscii && _mm256_movemask_epi8(x) == 0) {
            Store(out.data() + o, x);
            i += 32;
            o += 32;
        } else if (const BYTE* q = BlockToUtf8(table, x, out.data() + o)) {
            i += 32;
            o = static_cast<std::size_t>(q - out.data());
        } else {
            const KernelStep step = BytesToUtf8Plain(table, in.subspan(i, 32), out.subspan(o));
            i += step.consumed;
            o += step.produced;
            if (step.consumed == 0)
                return {i, o};
        }
    }
    const KernelStep rest = BytesToUtf8Plain(table, in.subspan(i), out.subspan(o));
    return {i + rest.consumed, o + rest.produced};
}

VNBYTSTR_AVX2 KernelStep Utf8ToBytesAvx2(const Utf8ToByteTable& table, std::span<const BYTE> in,
                                         std::span<BYTE> out) noexcept {
    std::size_t i = 0, o = 0;
    while (in.size() - i >= 32 && out.size() - o >= 40) {
        const __m256i x = Load(in.data() + i);
        std::size_t taken = 32;
        if (table.asciiIsAscii && _mm256_movemask_epi8(x) == 0) {
            Store(out.data() + o, x);
            i += 32;
            o += 32;
        } else if (const BYTE* q = BlockFromUtf8(table, x, out.data() + o, taken)) {
            i += taken;
            o = static_cast<std::size_t>(q - out.data());
        } else {
            const std::size_t size = std::min(in.size() - i, kPlainStretch);
            const KernelStep step = Utf8ToBytesPlain(table, in.subspan(i, size), out.subspan(o));
            i += step.consumed;
            o += step.produced;
            if (step.consumed == 0)
                return {i, o};
        }
    }
    const KernelStep rest = Utf8ToBytesPlain(table, in.subspan(i), out.subspan(o));
    return {i + rest.consumed, o + rest.produced};
}

VNBYTSTR_AVX2 KernelStep DoubleBytesAvx2(const DoubleByteTable& table, WideForm form,
                                         std::span<const BYTE> in, std::span<BYTE> out) noexcept {
    std::size_t i = 0, o = 0;
    while (table.asciiIsAscii && in.size() - i >= 32 && out.size() - o >= 64) {
        const __m256i x = Load(in.data() + i);
        if (_mm256_movemask_epi8(x) == 0) {
            const __m256i zero = _mm256_setzero_si256();
            // Unpacking works within halves, so the middle quarters change places first.
            const __m256i y = _mm256_permute4x64_epi64(x, 0xD8);
            if (form == WideForm::Utf8) {
                Store(out.data() + o, x);
            } else if (form == WideForm::LittleEndian) {
                Store(out.data() + o, _mm256_unpacklo_epi8(y, zero));
                Store(out.data() + o + 32, _mm256_unpackhi_epi8(y, zero));
            } else {
                Store(out.data() + o, _mm256_unpacklo_epi8(zero, y));
                Store(out.data() + o + 32, _mm256_unpackhi_epi8(zero, y));
            }
            i += 32;
            o += form == WideForm::Utf8 ? 32 : 64;
        } else {
            const std::size_t size = std::min(in.size() - i, kPlainStretch);
            const KernelStep step =
                DoubleBytesPlain(table, form, in.subspan(i, size), out.subspan(o));
            i += step.consumed;
            o += step.produced;
            if (step.consumed == 0)
                return {i, o};
        }
    }
    const KernelStep rest = DoubleBytesPlain(table, form, in.subspan(i), out.subspan(o));
    return {i + rest.consumed, o + rest.produced};
}

} // namespace vnbytstr::detail

#endif

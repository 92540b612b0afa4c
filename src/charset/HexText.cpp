#include "src/charset/HexText.h"

#include "src/os/CpuKernel.h"

#include <algorithm>
#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#define VNBYTSTR_AVX2 __attribute__((target("avx2")))
#endif

namespace vnbytstr::detail {

namespace {

constexpr char kDigits[2][17] = {"0123456789ABCDEF", "0123456789abcdef"};

const char* DigitsOf(HexCase digits) noexcept { return kDigits[digits == HexCase::Lower ? 1 : 0]; }

constexpr BYTE kNoDigit = 0xFF;

constexpr std::array<BYTE, 256> MakeValues() {
    std::array<BYTE, 256> values{};
    values.fill(kNoDigit);
    for (BYTE value = 0; value < 16; ++value) {
        values[static_cast<BYTE>(kDigits[0][value])] = value;
        values[static_cast<BYTE>(kDigits[1][value])] = value;
    }
    return values;
}
constexpr std::array<BYTE, 256> kValues = MakeValues();

BYTE ValueOf(char digit) noexcept { return kValues[static_cast<BYTE>(digit)]; }

void EncodePlain(std::span<const BYTE> bytes, char* out, const char* digits) noexcept {
    for (BYTE byte : bytes) {
        *out++ = digits[byte >> 4];
        *out++ = digits[byte & 0x0F];
    }
}

/// Decodes up to `pairs` pairs and appends to `done`; false when the text ended.
bool DecodePlain(const char* text, std::size_t length, BYTE* out, std::size_t pairs,
                 HexDecoded& done) noexcept {
    std::size_t at = done.consumed;
    for (; pairs > 0; --pairs) {
        while (at < length && text[at] == ' ')
            ++at;
        if (length - at < 2)
            return false;
        const BYTE high = ValueOf(text[at]);
        const BYTE low = ValueOf(text[at + 1]);
        if ((high | low) > 0x0F)
            return false;
        out[done.produced++] = static_cast<BYTE>(high << 4 | low);
        at += 2;
        done.consumed = at;
    }
    return true;
}

#if defined(__x86_64__)
VNBYTSTR_AVX2 __m256i Load(const void* from) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
VNBYTSTR_AVX2 void Store(void* to, __m256i value) noexcept {
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}
VNBYTSTR_AVX2 __m256i BothLanes(const void* from) noexcept {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(from)));
}

/// From this many bytes on the text goes past the caches: it would not stay there, and memory need
/// not be read before it is overwritten. The text then begins at a multiple of 32.
constexpr std::size_t kPastCaches = std::size_t{8} << 20;

template <bool kIsPastCaches>
VNBYTSTR_AVX2 void Put(char* to, __m256i value) noexcept {
    if constexpr (kIsPastCaches)
        _mm256_stream_si256(reinterpret_cast<__m256i*>(to), value);
    else
        Store(to, value);
}

std::size_t BytesToAligned(const char* out) noexcept {
    return (0 - reinterpret_cast<std::uintptr_t>(out)) % 32;
}

/// Returns how many bytes it wrote the digits of.
template <bool kIsPastCaches>
VNBYTSTR_AVX2 std::size_t EncodeAvx2(std::span<const BYTE> bytes, char* out,
                                     const char* digits) noexcept {
    const __m256i table = BothLanes(digits);
    const __m256i nibble = _mm256_set1_epi8(0x0F);
    std::size_t at = 0;
    for (; bytes.size() - at >= 32; at += 32) {
        // Quarters 0 2 1 3, so that the unpacking within lanes yields consecutive characters.
        const __m256i in = _mm256_permute4x64_epi64(Load(bytes.data() + at), 0xD8);
        const __m256i high =
            _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi16(in, 4), nibble));
        const __m256i low = _mm256_shuffle_epi8(table, _mm256_and_si256(in, nibble));
        Put<kIsPastCaches>(out + 2 * at, _mm256_unpacklo_epi8(high, low));
        Put<kIsPastCaches>(out + 2 * at + 32, _mm256_unpackhi_epi8(high, low));
    }
    if constexpr (kIsPastCaches)
        _mm_sfence();
    return at;
}

/// Where the digits of 32 bytes stand among their 96 characters with blanks: for each of three
/// stores, the place within its 16 bytes of the byte whose high (low) digit a character is, 0x80
/// for none. The first store takes from the first 16 bytes, the last from the others, and the two
/// halves of the middle one from either.
struct SpacedPlaces {
    alignas(32) BYTE high[3][32];
    alignas(32) BYTE low[3][32];
    alignas(32) BYTE blank[3][32];
};
constexpr SpacedPlaces MakeSpacedPlaces() {
    SpacedPlaces places{};
    for (unsigned at = 0; at < 96; ++at) {
        const BYTE byte = static_cast<BYTE>(at / 3 % 16);
        places.high[at / 32][at % 32] = at % 3 == 0 ? byte : BYTE{0x80};
        places.low[at / 32][at % 32] = at % 3 == 1 ? byte : BYTE{0x80};
        places.blank[at / 32][at % 32] = at % 3 == 2 ? BYTE{' '} : BYTE{0};
    }
    return places;
}
constexpr SpacedPlaces kSpaced = MakeSpacedPlaces();

template <unsigned kStore, bool kIsPastCaches>
VNBYTSTR_AVX2 void PutSpaced(char* out, __m256i high, __m256i low) noexcept {
    const __m256i pairs = _mm256_or_si256(_mm256_shuffle_epi8(high, Load(kSpaced.high[kStore])),
                                          _mm256_shuffle_epi8(low, Load(kSpaced.low[kStore])));
    Put<kIsPastCaches>(out + 32 * kStore, _mm256_or_si256(pairs, Load(kSpaced.blank[kStore])));
}

/// Returns how many bytes it wrote the digits of, each followed by a blank; never all of them.
template <bool kIsPastCaches>
VNBYTSTR_AVX2 std::size_t EncodeSpacedAvx2(std::span<const BYTE> bytes, char* out,
                                           const char* digits) noexcept {
    const __m256i table = BothLanes(digits);
    const __m256i nibble = _mm256_set1_epi8(0x0F);
    std::size_t at = 0;
    for (; bytes.size() - at > 32; at += 32) {
        const __m256i in = Load(bytes.data() + at);
        const __m256i high =
            _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi16(in, 4), nibble));
        const __m256i low = _mm256_shuffle_epi8(table, _mm256_and_si256(in, nibble));
        char* const to = out + 3 * at;
        PutSpaced<0, kIsPastCaches>(to, _mm256_permute2x128_si256(high, high, 0x00),
                                    _mm256_permute2x128_si256(low, low, 0x00));
        PutSpaced<1, kIsPastCaches>(to, high, low);
        PutSpaced<2, kIsPastCaches>(to, _mm256_permute2x128_si256(high, high, 0x11),
                                    _mm256_permute2x128_si256(low, low, 0x11));
    }
    if constexpr (kIsPastCaches)
        _mm_sfence();
    return at;
}

/// What DecodeAvx2 looks up for a character: by its low nibble and by its high nibble, which of the
/// ranges digits (1), letters (2) it may belong to, and by the high nibble, what the range adds.
alignas(16) constexpr BYTE kRangeOfLow[16] = {1, 3, 3, 3, 3, 3, 3, 1, 1, 1, 0, 0, 0, 0, 0, 0};
alignas(16) constexpr BYTE kRangeOfHigh[16] = {0, 0, 0, 1, 2, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0};
alignas(16) constexpr BYTE kBaseOfHigh[16] = {0, 0, 0, 0, 9, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0};

/// Decodes pairs without blanks, 32 at a time, as long as there are such; `done` moves on.
VNBYTSTR_AVX2 void DecodeAvx2(const char* text, std::size_t length, BYTE* out,
                              std::size_t outCapacity, HexDecoded& done) noexcept {
    const __m256i rangeOfLow = BothLanes(kRangeOfLow);
    const __m256i rangeOfHigh = BothLanes(kRangeOfHigh);
    const __m256i baseOfHigh = BothLanes(kBaseOfHigh);
    const __m256i nibble = _mm256_set1_epi8(0x0F);
    const __m256i weights = _mm256_set1_epi16(0x0110); // first digit times 16, second times 1
    const __m256i zero = _mm256_setzero_si256();
    HexDecoded so = done; // a local, which the writing through `out` cannot touch
    while (length - so.consumed >= 64 && outCapacity - so.produced >= 32) {
        __m256i words[2];
        __m256i bad = zero;
        for (std::size_t i = 0; i < 2; ++i) {
            const __m256i in = Load(text + so.consumed + 32 * i);
            const __m256i high = _mm256_and_si256(_mm256_srli_epi16(in, 4), nibble);
            // The shuffle gives 0, no range, for a character of 0x80 and above.
            const __m256i range = _mm256_and_si256(_mm256_shuffle_epi8(rangeOfLow, in),
                                                   _mm256_shuffle_epi8(rangeOfHigh, high));
            bad = _mm256_or_si256(bad, _mm256_cmpeq_epi8(range, zero));
            const __m256i value = _mm256_add_epi8(_mm256_and_si256(in, nibble),
                                                  _mm256_shuffle_epi8(baseOfHigh, high));
            words[i] = _mm256_maddubs_epi16(value, weights);
        }
        if (!_mm256_testz_si256(bad, bad))
            break;
        const __m256i packed = _mm256_packus_epi16(words[0], words[1]);
        Store(out + so.produced, _mm256_permute4x64_epi64(packed, 0xD8));
        so.consumed += 64;
        so.produced += 32;
    }
    done = so;
}
#endif

} // namespace

void EncodeHex(std::span<const BYTE> bytes, char* out, HexCase digits) noexcept {
    std::size_t done = 0;
#if defined(__x86_64__)
    if (ActiveKernel() >= Kernel::Avx2) {
        const std::size_t toAligned = BytesToAligned(out);
        if (bytes.size() >= kPastCaches && toAligned % 2 == 0) {
            done = toAligned / 2;
            EncodePlain(bytes.first(done), out, DigitsOf(digits));
            done += EncodeAvx2<true>(bytes.subspan(done), out + toAligned, DigitsOf(digits));
        } else {
            done = EncodeAvx2<false>(bytes, out, DigitsOf(digits));
        }
    }
#endif
    EncodePlain(bytes.subspan(done), out + 2 * done, DigitsOf(digits));
}

void EncodeHexSpaced(std::span<const BYTE> bytes, char* out, HexCase digits) noexcept {
    const char* table = DigitsOf(digits);
    const auto putPlain = [=](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i) {
            out[3 * i] = table[bytes[i] >> 4];
            out[3 * i + 1] = table[bytes[i] & 0x0F];
            if (i + 1 < bytes.size())
                out[3 * i + 2] = ' ';
        }
    };
    std::size_t done = 0;
#if defined(__x86_64__)
    if (ActiveKernel() >= Kernel::Avx2) {
        if (bytes.size() >= kPastCaches) {
            done = BytesToAligned(out) * 11 % 32; // 3 times 11 is 1 modulo 32
            putPlain(0, done);
            done += EncodeSpacedAvx2<true>(bytes.subspan(done), out + 3 * done, table);
        } else {
            done = EncodeSpacedAvx2<false>(bytes, out, table);
        }
    }
#endif
    putPlain(done, bytes.size());
}

HexDecoded DecodeHex(const char* text, std::size_t textLength, BYTE* out,
                     std::size_t outCapacity) noexcept {
    // Of the fast way, after something stopped it.
    [[maybe_unused]] constexpr std::size_t kPairsBetweenTries = 32;
    HexDecoded done;
    while (done.produced < outCapacity && !done.ended) {
        std::size_t pairs = outCapacity - done.produced;
#if defined(__x86_64__)
        if (ActiveKernel() >= Kernel::Avx2) {
            DecodeAvx2(text, textLength, out, outCapacity, done);
            pairs = std::min(outCapacity - done.produced, kPairsBetweenTries);
        }
#endif
        done.ended = !DecodePlain(text, textLength, out, pairs, done);
    }
    return done;
}

} // namespace vnbytstr::detail

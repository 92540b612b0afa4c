#include "src/charset/CharCount.h"

#include "src/os/CpuKernel.h"

#include <bit>
#include <cstdint>

#if defined(__x86_64__)
#include <immintrin.h>
#define VNBYTSTR_AVX2 __attribute__((target("avx2,bmi2,popcnt")))
#endif

namespace vnbytstr::detail {

#if defined(__x86_64__)
namespace {

VNBYTSTR_AVX2 __m256i Load(const char* p) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
VNBYTSTR_AVX2 std::uint32_t Mask(__m256i x) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(x));
}
/// Which bytes are `value` or more; for values of 0x81 and above and bytes of 0x80 and above.
VNBYTSTR_AVX2 std::uint32_t AtLeast(__m256i x, unsigned value) noexcept {
    return Mask(_mm256_cmpgt_epi8(x, _mm256_set1_epi8(static_cast<char>(value - 1))));
}
VNBYTSTR_AVX2 std::uint32_t Equal(__m256i x, unsigned value) noexcept {
    return Mask(_mm256_cmpeq_epi8(x, _mm256_set1_epi8(static_cast<char>(value))));
}

/// Which of 64 bytes are a lead byte's trail byte, given which look like lead bytes. `carry` (0 or
/// 1) says that the first is a trail byte, and becomes the same for the next 64.
///
/// In a run of bytes that look like lead bytes every second one is a trail byte. Adding the run's
/// first bit to the run carries through it and clears it, which parts the runs that begin at even
/// places from those that begin at odd ones; in the former the lead bytes stand at even places, in
/// the latter at odd ones.
std::uint64_t TrailBytes(std::uint64_t candidates, std::uint64_t& carry) noexcept {
    constexpr std::uint64_t kEven = 0x5555555555555555;
    const std::uint64_t runs = candidates & ~carry;
    const std::uint64_t starts = runs & ~(runs << 1);
    const std::uint64_t evenRuns = runs & ~(runs + (starts & kEven));
    const std::uint64_t leads = (evenRuns & kEven) | ((runs ^ evenRuns) & ~kEven);
    const std::uint64_t trails = leads << 1 | carry;
    carry = leads >> 63;
    return trails;
}

VNBYTSTR_AVX2 CharCountStep CountDoubleByteAvx2(std::string_view text,
                                                const LeadRows& leads) noexcept {
    // The row's bit for the high half of 0x80 and above; none for ASCII.
    alignas(16) static constexpr BYTE kRowBit[16] = {0, 0, 0, 0, 0,  0,  0,  0,
                                                     1, 2, 4, 8, 16, 32, 64, 128};
    const __m256i rows = _mm256_broadcastsi128_si256(
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(leads.data())));
    const __m256i bits =
        _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(kRowBit)));
    const __m256i nibble = _mm256_set1_epi8(0x0F);
    const __m256i zero = _mm256_setzero_si256();
    CharCountStep step;
    std::uint64_t carry = 0;
    for (; text.size() - step.bytes >= 64; step.bytes += 64) {
        std::uint64_t candidates = 0;
        for (unsigned half = 0; half < 2; ++half) {
            const __m256i x = Load(text.data() + step.bytes + 32 * half);
            const __m256i row = _mm256_shuffle_epi8(rows, _mm256_and_si256(x, nibble));
            const __m256i bit =
                _mm256_shuffle_epi8(bits, _mm256_and_si256(_mm256_srli_epi16(x, 4), nibble));
            const __m256i none = _mm256_cmpeq_epi8(_mm256_and_si256(row, bit), zero);
            candidates |= std::uint64_t{~Mask(none)} << 32 * half;
        }
        const std::uint64_t trails = TrailBytes(candidates, carry);
        step.chars += 64 - static_cast<unsigned>(std::popcount(trails));
    }
    if (carry != 0 && step.bytes < text.size())
        ++step.bytes; // the trail byte of a character that has been counted
    return step;
}

VNBYTSTR_AVX2 CharCountStep CountUtf8Avx2(std::string_view text) noexcept {
    CharCountStep step;
    while (text.size() - step.bytes >= 32) {
        const __m256i x = Load(text.data() + step.bytes);
        const std::uint32_t high = Mask(x);
        if (high == 0) {
            step.bytes += 32;
            step.chars += 32;
            continue;
        }
        // Unicode, table 3-7: lead bytes C2 to F4, the trail bytes each asks for, and the second
        // bytes that some of them exclude.
        const std::uint32_t ge90 = high & AtLeast(x, 0x90), geA0 = high & AtLeast(x, 0xA0);
        const std::uint32_t geC0 = high & AtLeast(x, 0xC0), geC2 = high & AtLeast(x, 0xC2);
        const std::uint32_t geE0 = high & AtLeast(x, 0xE0), geF0 = high & AtLeast(x, 0xF0);
        const std::uint32_t trails = high & ~geC0;
        const std::uint64_t wanted =
            std::uint64_t{geC2} << 1 | std::uint64_t{geE0} << 2 | std::uint64_t{geF0} << 3;
        const std::uint32_t bad = (geC0 & ~geC2) | (high & AtLeast(x, 0xF5)) |
                                  (static_cast<std::uint32_t>(wanted) ^ trails) |
                                  ((Equal(x, 0xE0) << 1) & ~geA0) | ((Equal(x, 0xED) << 1) & geA0) |
                                  ((Equal(x, 0xF0) << 1) & ~ge90) | ((Equal(x, 0xF4) << 1) & ge90);
        if (bad != 0)
            break;
        // A character that continues after the vector begins the next one.
        std::size_t bytes = 32;
        if (wanted >> 32 != 0)
            bytes = 31 - static_cast<unsigned>(std::countl_zero(geC2));
        step.bytes += bytes;
        step.chars += 32 - static_cast<unsigned>(std::popcount(trails)) - (bytes < 32 ? 1 : 0);
    }
    return step;
}

} // namespace
#endif

CharCountStep CountDoubleByte([[maybe_unused]] std::string_view text,
                              [[maybe_unused]] const LeadRows& leads) noexcept {
#if defined(__x86_64__)
    if (ActiveKernel() >= Kernel::Avx2)
        return CountDoubleByteAvx2(text, leads);
#endif
    return {};
}

CharCountStep CountUtf8([[maybe_unused]] std::string_view text) noexcept {
#if defined(__x86_64__)
    if (ActiveKernel() >= Kernel::Avx2)
        return CountUtf8Avx2(text);
#endif
    return {};
}

} // namespace vnbytstr::detail

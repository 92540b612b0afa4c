// Montgomery's multiplication with AVX-512 IFMA: eight digits of 52 bits to a register, the low or
// high 52 bits of eight products added by one instruction.
//
// "Almost" Montgomery multiplication (S. Gueron, Efficient software implementations of modular
// exponentiation, Journal of Cryptographic Engineering 2, 2012): with 4 m <= R the result of
// operands below 2 m is below 2 m again, so nothing is ever subtracted. The digits' sums stay
// uncarried in 64 bits until the end.
//
// Which multiple of m is added depends on the lowest digit of the sum. Fetching that digit from the
// vector registers would take longer than all the multiplications, so it is kept in a general
// register, and the next digit is summed up there as well: what the vectors hold is then needed
// only one round later. For short numbers the sums of products with b and with m are separate,
// which shortens their chains of additions.
//
// On a processor of the Sapphire Rapids class odd powers are 1.8 times (1024 bits) to 3.8 times
// (4096 bits) as fast as the faster of OpenSSL and GMP. For machines without AVX-512 a test
// includes this source with VNBYTSTR_SIMULATE_AVX512 defined, and so runs everything except the
// operations that have two versions in DigitVector.h.
#include "src/numbers/DigitVector.h"

#if defined(__x86_64__)

#if defined(VNBYTSTR_SIMULATE_AVX512)
#define DigitMultiplierAvx512 DigitMultiplierSimulated
#endif

VNBYTSTR_DIGITS_BEGIN
namespace vnbytstr::detail {

using namespace VNBYTSTR_DIGITS;

namespace {

/// All lanes one place down.
template <std::size_t V>
VNBYTSTR_INLINE void MoveDown(Vector (&sum)[V]) {
    VNBYTSTR_UNROLL
    for (std::size_t k = 0; k < V; ++k) {
        sum[k] = From<1>(sum[k], k + 1 < V ? sum[k + 1] : Vector{});
    }
}

/// Carries until every lane is a digit.
template <std::size_t V>
VNBYTSTR_INLINE void Normalize(Vector (&sum)[V]) {
    Vector below{};
    VNBYTSTR_UNROLL
    for (std::size_t k = 0; k < V; ++k) {
        const Vector over = sum[k] >> kDigitBits;
        sum[k] = (sum[k] & kDigitMask) + From<7>(below, over);
        below = over;
    }
    // The carries left are single ones. Adding integers that have one bit for each lane finds how
    // far each carry passes through full lanes.
    unsigned carry = 0;
    VNBYTSTR_UNROLL
    for (std::size_t k = 0; k < V; ++k) {
        const unsigned full = Full(sum[k]);
        const unsigned reached = (Above(sum[k]) << 1 | carry) + full;
        carry = reached >> 8;
        sum[k] = Increment(sum[k], (reached ^ full) & 0xFF) & kDigitMask;
    }
}

template <std::size_t V>
void Multiply(Word64* r, const Word64* a, const Word64* b, const Word64* m, Word64 negatedInverse,
              std::size_t digits) {
    // Where two sets of sums leave registers for the operands.
    constexpr bool kApart = V <= 5;
    Vector as[V], ms[V];
    Vector sum[V] = {}, ofM[kApart ? V : 1] = {}; // the latter for the products with m, if apart
    VNBYTSTR_UNROLL
    for (std::size_t k = 0; k < V; ++k) {
        as[k] = Load(a + kLanes * k);
        ms[k] = Load(m + kLanes * k);
    }
    const Word64 a0 = a[0], a1 = a[1], m0 = m[0], m1 = m[1];
    Word64 lowest = 0; // the sum's digit 0; lane 0 of the vectors means nothing
    for (std::size_t i = 0; i < digits; ++i) {
        const Word64 digit = b[i];
        const Vector allDigit = Vector{} + digit;
        Word64 next = sum[0][1];
        if constexpr (kApart)
            next += ofM[0][1];
        Word128 low = Word128{a0} * digit + lowest;
        const Word64 multiple = static_cast<Word64>(low) * negatedInverse & kDigitMask;
        const Vector allMultiple = Vector{} + multiple;
        low += Word128{m0} * multiple;
        next += (a1 * digit & kDigitMask) + (m1 * multiple & kDigitMask);
        lowest = next + static_cast<Word64>(low >> kDigitBits);

        VNBYTSTR_UNROLL
        for (std::size_t k = 0; k < V; ++k)
            sum[k] = AddLow(sum[k], as[k], allDigit);
        if constexpr (kApart) {
            MoveDown(sum);
            VNBYTSTR_UNROLL
            for (std::size_t k = 0; k < V; ++k) {
                sum[k] = AddHigh(sum[k], as[k], allDigit);
                ofM[k] = AddLow(ofM[k], ms[k], allMultiple);
            }
            MoveDown(ofM);
            VNBYTSTR_UNROLL
            for (std::size_t k = 0; k < V; ++k)
                ofM[k] = AddHigh(ofM[k], ms[k], allMultiple);
        } else {
            VNBYTSTR_UNROLL
            for (std::size_t k = 0; k < V; ++k)
                sum[k] = AddLow(sum[k], ms[k], allMultiple);
            MoveDown(sum);
            VNBYTSTR_UNROLL
            for (std::size_t k = 0; k < V; ++k) {
                sum[k] = AddHigh(sum[k], as[k], allDigit);
                sum[k] = AddHigh(sum[k], ms[k], allMultiple);
            }
        }
    }
    if constexpr (kApart) {
        VNBYTSTR_UNROLL
        for (std::size_t k = 0; k < V; ++k)
            sum[k] += ofM[k];
    }
    sum[0][0] = lowest;
    Normalize(sum);
    VNBYTSTR_UNROLL
    for (std::size_t k = 0; k < V; ++k)
        Store(r + kLanes * k, sum[k]);
}

} // namespace

DigitMultiplier DigitMultiplierAvx512(std::size_t digits) noexcept {
    static constexpr DigitMultiplier kAll[] = {
        {Multiply<2>, 16},  {Multiply<3>, 24},  {Multiply<4>, 32},   {Multiply<5>, 40},
        {Multiply<6>, 48},  {Multiply<7>, 56},  {Multiply<8>, 64},   {Multiply<9>, 72},
        {Multiply<10>, 80}, {Multiply<12>, 96}, {Multiply<16>, 128}, {Multiply<20>, 160},
    };
    for (const DigitMultiplier& multiplier : kAll) {
        if (digits <= multiplier.room)
            return multiplier;
    }
    return {};
}

} // namespace vnbytstr::detail
VNBYTSTR_DIGITS_END

#endif

// Schoolbook multiplication, eight digits of both operands at a time. For one register of digits of
// `a` and eight single digits of `b` the products go to eight pairs of sums, which belong one place
// higher each; they are moved to their places only when all products of the same eight columns of
// the result are there. The sums stay uncarried until the end.
//
// For machines without AVX-512 a test includes this source with VNBYTSTR_SIMULATE_AVX512 defined.
#include "src/numbers/DigitProduct.h"

#include "src/numbers/DigitVector.h"

#include <algorithm>
#include <cstring>

#if defined(__x86_64__)

#if defined(VNBYTSTR_SIMULATE_AVX512)
#define MultiplyDigitsAvx512 MultiplyDigitsSimulated
#endif

VNBYTSTR_DIGITS_BEGIN
namespace vnbytstr::detail {

using namespace VNBYTSTR_DIGITS;

namespace {

/// Blocks of eight digits for so many words.
constexpr std::size_t BlocksFor(std::size_t words) {
    return (64 * words + kLanes * kDigitBits - 1) / (kLanes * kDigitBits);
}

constexpr std::size_t kMostBlocks = BlocksFor(kMostDigitProduct);
// A column gets two sums of at most 2^12 products of 52 bits.
static_assert(2 * kLanes * kMostBlocks <= 4096);

/// Eight digits are 52 bytes.
void ToDigits(Word64* digits, const Word64* words, std::size_t n, std::size_t blocks) {
    Word64 padded[kMostDigitProduct + 2 * kLanes];
    std::fill(std::copy_n(words, n, padded), padded + n + 2 * kLanes, 0);
    for (std::size_t i = 0; i < blocks; ++i) {
        Vector bits;
        std::memcpy(&bits, reinterpret_cast<const char*>(padded) + kDigitBits * i, sizeof bits);
        const Vector low = __builtin_shufflevector(bits, bits, 0, 0, 1, 2, 3, 4, 4, 5);
        const Vector high = __builtin_shufflevector(bits, bits, 1, 1, 2, 3, 4, 5, 5, 6);
        const Vector shift = {0, 52, 40, 28, 16, 4, 56, 44};
        const Vector digit = low >> shift | high << 1 << (63 - shift);
        Store(digits + kLanes * i, digit & kDigitMask);
    }
}

/// r[0..n) = the columns, carried: 16 digits are 13 words.
void FromColumns(Word64* r, std::size_t n, const Word64* columns) {
    constexpr std::size_t kDigits = 16;
    constexpr std::size_t kWords = kDigits * kDigitBits / 64;
    Word64 carry = 0;
    for (std::size_t done = 0; done < n; done += kWords, columns += kDigits) {
        Word64 words[kWords + 1] = {};
        VNBYTSTR_UNROLL
        for (std::size_t k = 0; k < kDigits; ++k) {
            // All columns of the words that are asked for have been computed.
            // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
            const Word64 sum = columns[k] + carry;
            const Word64 digit = sum & kDigitMask;
            carry = sum >> kDigitBits;
            const std::size_t word = k * kDigitBits / 64;
            const std::size_t shift = k * kDigitBits % 64;
            words[word] |= digit << shift;
            words[word + 1] |= digit >> 1 >> (63 - shift);
        }
        std::copy_n(words, std::min(kWords, n - done), r + done);
    }
}

/// Sums of the products of eight columns; the ones at [j] belong j places higher.
struct Sums {
    Vector low[kLanes] = {};
    Vector high[kLanes] = {}; ///< one place higher than low

    VNBYTSTR_INLINE void Add(const Word64* a, const Word64* b) {
        const Vector as = Load(a);
        VNBYTSTR_UNROLL
        for (std::size_t j = 0; j < kLanes; ++j) {
            const Vector digit = Vector{} + b[j];
            low[j] = AddLow(low[j], as, digit);
            high[j] = AddHigh(high[j], as, digit);
        }
    }
    VNBYTSTR_INLINE void Double() {
        VNBYTSTR_UNROLL
        for (std::size_t j = 0; j < kLanes; ++j) {
            low[j] += low[j];
            high[j] += high[j];
        }
    }
    /// Adds those from place J on: to the eight columns, and to the eight above.
    template <unsigned J>
    VNBYTSTR_INLINE void Place(Vector& columns, Vector& above) const {
        if constexpr (J < kLanes) {
            const Vector sum = low[J] + high[J - 1];
            columns += From<kLanes - J>(Vector{}, sum);
            above += From<kLanes - J>(sum, Vector{});
            Place<J + 1>(columns, above);
        }
    }
};

template <bool IsSquare>
void MultiplyBlocks(Word64* columns, const Word64* a, const Word64* b, std::size_t blocks) {
    Vector above{};
    for (std::size_t k = 0; k < 2 * blocks; ++k) {
        Sums sums;
        const std::size_t first = k < blocks ? 0 : k - blocks + 1;
        // Of a square only the products of unlike blocks in one order.
        const std::size_t end = IsSquare ? (k + 1) / 2 : std::min(k + 1, blocks);
        for (std::size_t i = first; i < end; ++i)
            sums.Add(a + kLanes * i, b + kLanes * (k - i));
        if constexpr (IsSquare) {
            sums.Double();
            if (k % 2 == 0)
                sums.Add(a + kLanes * (k / 2), a + kLanes * (k / 2));
        }
        Vector result = above + sums.low[0];
        above = sums.high[kLanes - 1];
        sums.Place<1>(result, above);
        Store(columns + kLanes * k, result);
    }
}

} // namespace

void MultiplyDigitsAvx512(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept {
    const std::size_t blocks = BlocksFor(n);
    Word64 digits[2][kLanes * kMostBlocks];
    Word64 columns[2 * kLanes * kMostBlocks];
    ToDigits(digits[0], a, n, blocks);
    if (a == b) {
        MultiplyBlocks<true>(columns, digits[0], digits[0], blocks);
    } else {
        ToDigits(digits[1], b, n, blocks);
        MultiplyBlocks<false>(columns, digits[0], digits[1], blocks);
    }
    FromColumns(r, 2 * n, columns);
}

} // namespace vnbytstr::detail
VNBYTSTR_DIGITS_END

#endif

#include "src/numbers/WordArithmetic.h"

#include "src/numbers/DigitProduct.h"
#include "src/os/Word128.h"

#include <algorithm>
#include <bit>
#include <memory>

namespace vnbytstr::detail {

namespace {

#if defined(__x86_64__)
// Compilers lose the carry flag between loop turns; lea and dec leave it alone.
// clang-format off
#define VNBYTSTR_CARRY_STEP(instruction, at)           \
    "movq " #at "(%[a],%[i],8), %%rax\n\t"            \
    instruction " " #at "(%[b],%[i],8), %%rax\n\t"    \
    "movq %%rax, " #at "(%[r],%[i],8)\n\t"
#define VNBYTSTR_CARRY_LOOP(instruction)               \
    std::size_t ones = n % 4;                          \
    std::size_t fours = n / 4;                         \
    std::size_t i = 0;                                 \
    unsigned char carry = 0;                           \
    asm volatile(                                      \
        "testq %[ones], %[ones]\n\t"                  \
        "jz 2f\n"                                      \
        "1:\n\t"                                      \
        VNBYTSTR_CARRY_STEP(instruction, 0)            \
        "leaq 1(%[i]), %[i]\n\t"                      \
        "decq %[ones]\n\t"                            \
        "jnz 1b\n"                                     \
        "2:\n\t"                                      \
        "jrcxz 4f\n"                                   \
        "3:\n\t"                                      \
        VNBYTSTR_CARRY_STEP(instruction, 0)            \
        VNBYTSTR_CARRY_STEP(instruction, 8)            \
        VNBYTSTR_CARRY_STEP(instruction, 16)           \
        VNBYTSTR_CARRY_STEP(instruction, 24)           \
        "leaq 4(%[i]), %[i]\n\t"                      \
        "decq %%rcx\n\t"                              \
        "jnz 3b\n"                                     \
        "4:\n\t"                                      \
        "setc %[carry]"                                \
        : [i] "+r"(i), [ones] "+r"(ones), "+c"(fours), [carry] "=&q"(carry) \
        : [r] "r"(r), [a] "r"(a), [b] "r"(b)           \
        : "rax", "cc", "memory");                      \
    return carry
// clang-format on
#endif

/// From these sizes on (in words) Karatsuba's method is faster; measured with bench_number.
constexpr std::size_t kKaratsuba = 56;
constexpr std::size_t kKaratsubaSquare = 72;

void MultiplyPlain(Word64* r, const Word64* a, std::size_t an, const Word64* b, std::size_t bn,
                   const WordRows& rows) noexcept {
    std::fill(r, r + an, 0);
    if (rows.addEightColumns && an % 8 == 0 && bn % 8 == 0 && bn > 0) {
        for (std::size_t i = 0; i < bn; i += 8) {
            Word64* const window = r + an + i;
            std::fill(window, window + 8, 0);
            rows.addEightColumns(r + i, b + i, a, an / 8, window);
        }
        return;
    }
    for (std::size_t i = 0; i < bn; ++i)
        r[an + i] = rows.addMultiple(r + i, a, an, b[i]);
}

/// As SquarePlain with blocks of eight words in place of words; n is a multiple of eight.
void SquareEights(Word64* r, const Word64* a, std::size_t n, const WordRows& rows) noexcept {
    if (n == 8) {
        rows.squareEight(r, a);
        return;
    }
    std::fill(r, r + n, 0);
    for (std::size_t i = 0; i + 8 < n; i += 8) {
        Word64* const window = r + n + i;
        std::fill(window, window + 8, 0);
        rows.addEightColumns(r + 2 * i + 8, a + i, a + i + 8, (n - i) / 8 - 1, window);
    }
    std::fill(r + 2 * n - 8, r + 2 * n, 0);
    Word64 squares[2 * kKaratsubaSquare];
    for (std::size_t i = 0; i < n; i += 8)
        rows.squareEight(squares + 2 * i, a + i);
    rows.doubleAndAdd(r, squares, n / 4);
}

/// The products of unlike words once, doubled, and the squares.
void SquarePlain(Word64* r, const Word64* a, std::size_t n, const WordRows& rows) noexcept {
    if (rows.addEightColumns && n % 8 == 0) {
        SquareEights(r, a, n, rows);
        return;
    }
    std::fill(r, r + n, 0);
    for (std::size_t i = 0; i + 1 < n; ++i)
        r[n + i] = rows.addMultiple(r + 2 * i + 1, a + i + 1, n - i - 1, a[i]);
    r[2 * n - 1] = 0;
    Word64 carry = 0;
    Word64 bit = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word64 low = r[2 * i];
        const Word64 high = r[2 * i + 1];
        const Word128 square = Word128{a[i]} * a[i];
        const Word128 sum = Word128{low << 1 | bit} + static_cast<Word64>(square) + carry;
        r[2 * i] = static_cast<Word64>(sum);
        const Word128 upper = Word128{high << 1 | low >> 63} + static_cast<Word64>(square >> 64) +
                              static_cast<Word64>(sum >> 64);
        r[2 * i + 1] = static_cast<Word64>(upper);
        carry = static_cast<Word64>(upper >> 64);
        bit = high >> 63;
    }
}

/// r[0..n) = |a - b|; true when a < b.
bool SubAbsolute(Word64* r, const Word64* a, std::size_t an, const Word64* b,
                 std::size_t bn) noexcept {
    const bool less = CompareWords({a, an}, {b, bn}) < 0;
    if (less) {
        std::swap(a, b);
        std::swap(an, bn);
    }
    // The longer one is n words or its words beyond the other's are zeros.
    const std::size_t n = std::max(an, bn);
    const std::size_t both = std::min(an, bn);
    Word64 borrow = SubWords(r, a, b, both);
    for (std::size_t i = both; i < n; ++i) {
        const Word64 from = i < an ? a[i] : 0;
        r[i] = from - borrow;
        borrow = from < borrow ? 1 : 0;
    }
    return less;
}

std::size_t ScratchFor(std::size_t n) noexcept { return 6 * n + 256; }

/// With a = a1 B + a0: a b = a1 b1 B^2 + (a1 b1 + a0 b0 - (a1 - a0)(b1 - b0)) B + a0 b0. `b` is `a`
/// for a square. Both of n words; `scratch` of ScratchFor(n).
void MultiplyKaratsuba(Word64* r, const Word64* a, const Word64* b, std::size_t n, Word64* scratch,
                       const WordRows& rows) noexcept {
    const bool square = a == b;
    if (rows.multiplyDigits && n >= kLeastDigitProduct && n <= kMostDigitProduct) {
        rows.multiplyDigits(r, a, b, n);
        return;
    }
    if (n < (square ? kKaratsubaSquare : kKaratsuba)) {
        if (square)
            SquarePlain(r, a, n, rows);
        else
            MultiplyPlain(r, a, n, b, n, rows);
        return;
    }
    const std::size_t low = (n + 1) / 2;
    const std::size_t high = n - low;
    Word64* const differenceA = scratch;
    Word64* const differenceB = square ? scratch : scratch + low;
    Word64* const middle = scratch + 2 * low;
    Word64* const rest = middle + 2 * low + 1;
    bool negative = SubAbsolute(differenceA, a + low, high, a, low);
    negative = square ? false : negative != SubAbsolute(differenceB, b + low, high, b, low);
    MultiplyKaratsuba(middle, differenceA, differenceB, low, rest, rows);
    MultiplyKaratsuba(r, a, b, low, rest, rows);
    MultiplyKaratsuba(r + 2 * low, a + low, square ? a + low : b + low, high, rest, rows);

    // rest = a0 b0 + a1 b1 -+ middle, of 2 low + 1 words; then added at low.
    Word64 carry = AddWords(rest, r, r + 2 * low, 2 * high);
    std::copy(r + 2 * high, r + 2 * low, rest + 2 * high);
    carry = AddWord(rest + 2 * high, 2 * low - 2 * high, carry);
    carry = negative ? carry + AddWords(rest, rest, middle, 2 * low)
                     : carry - SubWords(rest, rest, middle, 2 * low);
    const Word64 over = AddWords(r + low, r + low, rest, 2 * low);
    AddWord(r + 3 * low, 2 * n - 3 * low, over + carry);
}

} // namespace

WordSpan Trimmed(WordSpan a) noexcept {
    std::size_t n = a.size();
    while (n > 0 && a[n - 1] == 0)
        --n;
    return a.first(n);
}

void Trim(Words& a) noexcept { a.resize(Trimmed(a).size()); }

std::size_t BitLength(WordSpan a) noexcept {
    a = Trimmed(a);
    return a.empty() ? 0 : a.size() * 64 - static_cast<std::size_t>(std::countl_zero(a.back()));
}

int CompareWords(WordSpan a, WordSpan b) noexcept {
    a = Trimmed(a);
    b = Trimmed(b);
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    for (std::size_t i = a.size(); i-- > 0;) {
        if (a[i] != b[i])
            return a[i] < b[i] ? -1 : 1;
    }
    return 0;
}

Word64 AddWords(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept {
#if defined(VNBYTSTR_CARRY_LOOP)
    VNBYTSTR_CARRY_LOOP("adcq");
#else
    Word64 carry = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word128 sum = Word128{a[i]} + b[i] + carry;
        r[i] = static_cast<Word64>(sum);
        carry = static_cast<Word64>(sum >> 64);
    }
    return carry;
#endif
}

Word64 SubWords(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept {
#if defined(VNBYTSTR_CARRY_LOOP)
    VNBYTSTR_CARRY_LOOP("sbbq");
#else
    Word64 borrow = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word128 difference = Word128{a[i]} - b[i] - borrow;
        r[i] = static_cast<Word64>(difference);
        borrow = static_cast<Word64>(difference >> 64) & 1;
    }
    return borrow;
#endif
}

Word64 AddWord(Word64* r, std::size_t n, Word64 b) noexcept {
    for (std::size_t i = 0; i < n && b != 0; ++i) {
        r[i] += b;
        b = r[i] < b ? 1 : 0;
    }
    return b;
}

Word64 SubWord(Word64* r, std::size_t n, Word64 b) noexcept {
    for (std::size_t i = 0; i < n && b != 0; ++i) {
        const Word64 from = r[i];
        r[i] = from - b;
        b = from < b ? 1 : 0;
    }
    return b;
}

Word64 ShiftLeftWords(Word64* r, const Word64* a, std::size_t n, unsigned bits) noexcept {
    if (bits == 0) {
        std::copy(a, a + n, r);
        return 0;
    }
    Word64 below = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word64 word = a[i];
        r[i] = word << bits | below;
        below = word >> (64 - bits);
    }
    return below;
}

Word64 ShiftRightWords(Word64* r, const Word64* a, std::size_t n, unsigned bits) noexcept {
    if (bits == 0) {
        std::copy(a, a + n, r);
        return 0;
    }
    Word64 above = 0;
    for (std::size_t i = n; i-- > 0;) {
        const Word64 word = a[i];
        r[i] = word >> bits | above;
        above = word << (64 - bits);
    }
    return above;
}

void MultiplyWords(Word64* r, WordSpan a, WordSpan b, const WordRows& rows) {
    if (a.size() < b.size())
        std::swap(a, b);
    const std::size_t n = b.size();
    if (n < (rows.multiplyDigits ? kLeastDigitProduct : kKaratsuba)) {
        MultiplyPlain(r, a.data(), a.size(), b.data(), n, rows);
        return;
    }
    const auto scratch = std::make_unique_for_overwrite<Word64[]>(ScratchFor(n));
    MultiplyKaratsuba(r, a.data(), b.data(), n, scratch.get(), rows);
    if (a.size() == n)
        return;
    // The longer operand in pieces of the shorter one's length.
    Words product(2 * n);
    for (std::size_t at = n; at < a.size(); at += n) {
        const WordSpan piece = a.subspan(at, std::min(n, a.size() - at));
        if (piece.size() == n)
            MultiplyKaratsuba(product.data(), piece.data(), b.data(), n, scratch.get(), rows);
        else
            MultiplyWords(product.data(), piece, b, rows);
        std::copy(product.begin() + static_cast<std::ptrdiff_t>(n),
                  product.begin() + static_cast<std::ptrdiff_t>(n + piece.size()), r + at + n);
        const Word64 carry = AddWords(r + at, r + at, product.data(), n);
        AddWord(r + at + n, piece.size(), carry);
    }
}

void SquareWords(Word64* r, WordSpan a, const WordRows& rows) {
    if (a.empty())
        return;
    if (a.size() < (rows.multiplyDigits ? kLeastDigitProduct : kKaratsubaSquare)) {
        SquarePlain(r, a.data(), a.size(), rows);
        return;
    }
    const auto scratch = std::make_unique_for_overwrite<Word64[]>(ScratchFor(a.size()));
    MultiplyKaratsuba(r, a.data(), a.data(), a.size(), scratch.get(), rows);
}

void MultiplyLowWords(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept {
    const WordRows& rows = ActiveWordRows();
    std::fill(r, r + n, 0);
    for (std::size_t i = 0; i < n; ++i)
        rows.addMultiple(r + i, a, n - i, b[i]);
}

} // namespace vnbytstr::detail

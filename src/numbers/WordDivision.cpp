// Division on arrays of words.
#include "src/numbers/WordArithmetic.h"

#include "src/os/Word128.h"

#include <algorithm>
#include <bit>
#include <memory>

namespace vnbytstr::detail {

namespace {

/// From this length of the quotient on (in words) halving the problem is faster; measured with
/// bench_number.
constexpr std::size_t kRecursive = 96;

/// (high, low) / divisor, with high below the divisor.
Word64 DivideTwoWords(Word64 high, Word64 low, Word64 divisor, Word64& remainder) noexcept {
#if defined(__x86_64__)
    asm("divq %[divisor]" : "+a"(low), "+d"(high) : [divisor] "r"(divisor) : "cc");
    remainder = high;
    return low;
#else
    const Word128 dividend = Word128{high} << 64 | low;
    remainder = static_cast<Word64>(dividend % divisor);
    return static_cast<Word64>(dividend / divisor);
#endif
}

void Complement(Word64* a, std::size_t n) noexcept {
    for (std::size_t i = 0; i < n; ++i)
        a[i] = ~a[i];
}

/// A divisor of two words or more, its top bit set, and the reciprocal of its top two words, so
/// that a word of the quotient takes two multiplications in place of a division (N. Moeller, T.
/// Granlund, Improved division by invariant integers, IEEE Transactions on Computers 60, 2011,
/// algorithms 4 and 6).
class Divisor {
public:
    Divisor(const Word64* words, std::size_t size) noexcept
        : m_words(words), m_size(size), m_top(Join(words[size - 1], words[size - 2])),
          m_rows(ActiveWordRows()) {
        const Word64 high = words[size - 1];
        const Word64 low = words[size - 2];
        Word64 unused;
        m_reciprocal = DivideTwoWords(~high, ~Word64{0}, high, unused);
        Word64 p = high * m_reciprocal + low;
        if (p < low) {
            --m_reciprocal;
            if (p >= high) {
                --m_reciprocal;
                p -= high;
            }
            p -= high;
        }
        const Word128 product = Word128{m_reciprocal} * low;
        const auto carried = static_cast<Word64>(product >> 64);
        p += carried;
        if (p < carried) {
            --m_reciprocal;
            if (Join(p, static_cast<Word64>(product)) >= m_top)
                --m_reciprocal;
        }
    }

    std::size_t Size() const noexcept { return m_size; }
    const Word64* Words() const noexcept { return m_words; }
    const WordRows& Rows() const noexcept { return m_rows; }
    /// The divisor without its `low` lowest words; two must remain. It has the same top words and
    /// so the same reciprocal.
    Divisor Upper(std::size_t low) const noexcept {
        Divisor upper(*this);
        upper.m_words += low;
        upper.m_size -= low;
        return upper;
    }

    /// q[0..m) = the quotient of a[0..size + m), which becomes the remainder, with zeros above. The
    /// top `size` words of a are below the divisor.
    void DividePlain(Word64* q, Word64* a, std::size_t m) const noexcept {
        // The two top words are in `top`, since each step waits for them. The rest is kept
        // complemented, so that subtracting from it is an addition, which is faster.
        const std::size_t lower = m_size - 2;
        Word128 top = Join(a[m_size + m - 1], a[m_size + m - 2]);
        Complement(a, lower + m);
        for (std::size_t j = m; j-- > 0;) {
            const Word64 next = ~a[j + lower];
            if (top >= m_top) [[unlikely]] { // equal: the quotient is the greatest word
                q[j] = ~Word64{0};
                top = m_top + next - m_rows.addMultiple(a + j, m_words, lower, q[j]);
                continue;
            }
            Word64 guess = Guess(top, next);
            const Word64 borrow = m_rows.addMultiple(a + j, m_words, lower, guess);
            if (top < borrow) [[unlikely]] { // the guess is one too large
                --guess;
                top += m_top + SubWords(a + j, a + j, m_words, lower);
            }
            top -= borrow;
            q[j] = guess;
        }
        Complement(a, lower);
        a[lower] = static_cast<Word64>(top);
        a[lower + 1] = static_cast<Word64>(top >> 64);
        std::fill(a + m_size, a + m_size + m, 0);
    }

private:
    static Word128 Join(Word64 high, Word64 low) noexcept { return Word128{high} << 64 | low; }

    /// The quotient of (top, next) by the top two words of the divisor; `top` becomes the
    /// remainder.
    Word64 Guess(Word128& top, Word64 next) const noexcept {
        const auto high = static_cast<Word64>(m_top >> 64);
        const auto low = static_cast<Word64>(m_top);
        const Word128 estimate = Word128{m_reciprocal} * static_cast<Word64>(top >> 64) + top;
        auto quotient = static_cast<Word64>(estimate >> 64);
        const Word64 rest = static_cast<Word64>(top) - quotient * high;
        top = Join(rest, next) - Word128{low} * quotient - m_top;
        ++quotient;
        if (static_cast<Word64>(top >> 64) >= static_cast<Word64>(estimate)) {
            --quotient;
            top += m_top;
        }
        if (top >= m_top) [[unlikely]] {
            ++quotient;
            top -= m_top;
        }
        return quotient;
    }

    const Word64* m_words;
    std::size_t m_size;
    Word128 m_top; // its top two words
    Word64 m_reciprocal;
    const WordRows& m_rows;
};

/// As Divisor::DividePlain, where m is at most the divisor's length, and the top words of a may
/// also be equal to the divisor; the quotient is then the greatest number of m words, and the
/// remainder what is left for that. `scratch` has m words.
///
/// The upper half of the quotient comes from the upper words of both, and is at most a little too
/// large, which shows when the lower words of the divisor are taken in; then the lower half in the
/// same way (C. Burnikel, J. Ziegler, Fast Recursive Division, MPI-I-98-1-022, 1998; in the form of
/// R. Brent, P. Zimmermann, Modern Computer Arithmetic, algorithm 1.8).
void DivideRecursive(Word64* q, Word64* a, const Divisor& divisor, std::size_t m, Word64* scratch) {
    const std::size_t n = divisor.Size();
    const Word64* const b = divisor.Words();
    if (CompareWords({a + m, n}, {b, n}) >= 0) {
        std::fill(q, q + m, ~Word64{0});
        SubWords(a + m, a + m, b, n);
        const Word64 carry = AddWords(a, a, b, n);
        AddWord(a + n, m, carry);
        return;
    }
    if (m < kRecursive) {
        divisor.DividePlain(q, a, m);
        return;
    }
    const std::size_t low = m / 2;
    const Divisor upper = divisor.Upper(low);
    // One half of the quotient, whose remainder stands in a from `at` + low on.
    const auto half = [&](Word64* part, std::size_t size, std::size_t at) {
        DivideRecursive(part, a + at + low, upper, size, scratch);
        MultiplyWords(scratch, {part, size}, {b, low}, divisor.Rows());
        const std::size_t length = size + low;
        // What is above: the rest of the remainder, and its carry.
        const std::size_t above = n + size - length;
        Word64 borrow = SubWords(a + at, a + at, scratch, length);
        borrow = SubWord(a + at + length, above, borrow);
        while (borrow != 0) {
            SubWord(part, size, 1);
            const Word64 carry = AddWords(a + at, a + at, b, n);
            borrow -= AddWord(a + at + n, size, carry);
        }
    };
    half(q + low, m - low, low);
    half(q, low, 0);
}

/// Memory for one division, without an allocation for numbers as they are used as moduli.
class Workspace {
public:
    Word64* Get(std::size_t size) {
        if (size <= std::size(m_small))
            return m_small;
        m_large = std::make_unique_for_overwrite<Word64[]>(size);
        return m_large.get();
    }

private:
    Word64 m_small[512];
    std::unique_ptr<Word64[]> m_large;
};

Word64 DivideByWord(Word64* q, WordSpan a, Word64 divisor) noexcept {
    Word64 remainder = 0;
    for (std::size_t i = a.size(); i-- > 0;)
        q[i] = DivideTwoWords(remainder, a[i], divisor, remainder);
    return remainder;
}

/// q[0..m) and the remainder in a; the top words of a are below the divisor.
void Divide(Word64* q, Word64* a, const Divisor& divisor, std::size_t m) {
    const std::size_t n = divisor.Size();
    if (std::min(m, n) < kRecursive) {
        divisor.DividePlain(q, a, m);
        return;
    }
    const auto scratch = std::make_unique_for_overwrite<Word64[]>(n);
    // The quotient in pieces of the divisor's length.
    while (m > 0) {
        const std::size_t piece = m % n == 0 ? n : m % n;
        m -= piece;
        DivideRecursive(q + m, a + m, divisor, piece, scratch.get());
    }
}

} // namespace

void RemainderWords(Word64* r, WordSpan a, WordSpan m, Words* quotient) {
    std::fill(r, r + m.size(), 0);
    a = Trimmed(a);
    m = Trimmed(m);
    const std::size_t n = m.size();
    if (quotient)
        quotient->clear();
    if (CompareWords(a, m) < 0) {
        std::copy(a.begin(), a.end(), r);
        return;
    }
    std::size_t places = a.size() - n + 1; // of the quotient
    Workspace workspace;
    Word64* const q = workspace.Get(places + n + a.size() + 1);
    if (n == 1) {
        r[0] = DivideByWord(q, a, m[0]);
    } else {
        Word64* const divisor = q + places;
        Word64* const rest = divisor + n;
        const auto shift = static_cast<unsigned>(std::countl_zero(m.back()));
        ShiftLeftWords(divisor, m.data(), n, shift);
        rest[a.size()] = ShiftLeftWords(rest, a.data(), a.size(), shift);
        std::size_t rows = places;
        if (rest[a.size()] == 0) { // the quotient's top word is 0 or 1
            --rows;
            q[rows] = CompareWords({rest + rows, n}, {divisor, n}) >= 0 ? 1 : 0;
            if (q[rows] != 0)
                SubWords(rest + rows, rest + rows, divisor, n);
        }
        Divide(q, rest, Divisor(divisor, n), rows);
        ShiftRightWords(r, rest, n, shift);
    }
    if (quotient) {
        quotient->assign(q, q + places);
        Trim(*quotient);
    }
}

Words Remainder(WordSpan a, WordSpan m, Words* quotient) {
    Words rest(m.size());
    RemainderWords(rest.data(), a, m, quotient);
    Trim(rest);
    return rest;
}

} // namespace vnbytstr::detail

#include "src/numbers/ModularPower.h"

#include "src/os/CpuKernel.h"

#include <algorithm>
#include <bit>

namespace vnbytstr::detail {

namespace {

/// The inverse of an odd word modulo 2^64; each step doubles the number of right bits.
Word64 InverseOf(Word64 odd) noexcept {
    Word64 inverse = odd * 3 ^ 2; // right in 5 bits
    for (int bits = 5; bits < 64; bits *= 2)
        inverse *= 2 - odd * inverse;
    return inverse;
}

/// Multiplication modulo an odd number; values are kept times 2^(64 n) modulo it, of n words.
class Montgomery {
public:
    explicit Montgomery(WordSpan modulus)
        : m_modulus(modulus.begin(), modulus.end()), m_rows(ActiveWordRows()),
          m_negatedInverse(0 - InverseOf(modulus[0])), m_product(2 * modulus.size()),
          m_zeros(modulus.size()) {}

    std::size_t Size() const noexcept { return m_modulus.size(); }

    Words Enter(WordSpan value) const {
        Words shifted(Size() + value.size());
        std::copy(value.begin(), value.end(),
                  shifted.begin() + static_cast<std::ptrdiff_t>(Size()));
        Words entered = Remainder(shifted, m_modulus);
        entered.resize(Size());
        return entered;
    }
    Words Leave(const Word64* value) {
        std::fill(m_product.begin(), m_product.end(), 0);
        std::copy(value, value + Size(), m_product.begin());
        Words left(Size());
        Reduce(left.data());
        if (CompareWords(left, m_modulus) >= 0)
            SubWords(left.data(), left.data(), m_modulus.data(), Size());
        Trim(left);
        return left;
    }
    /// r may be a or b.
    void Multiply(Word64* r, const Word64* a, const Word64* b) {
        MultiplyWords(m_product.data(), {a, Size()}, {b, Size()}, m_rows);
        Reduce(r);
    }
    void Square(Word64* r, const Word64* a) {
        SquareWords(m_product.data(), {a, Size()}, m_rows);
        Reduce(r);
    }

private:
    /// Adds multiples of the modulus until the low half is zero; the upper half is the result. The
    /// carries out of the rows take the places of the words that became zero, and are added at the
    /// end.
    void Reduce(Word64* r) noexcept {
        Word64* const product = m_product.data();
        const std::size_t n = Size();
        if (m_rows.reduceEightColumns && n % 8 == 0) {
            ReduceEights(r);
            return;
        }
        for (std::size_t i = 0; i < n; ++i) {
            const Word64 multiple = product[i] * m_negatedInverse;
            product[i] = m_rows.addMultiple(product + i, m_modulus.data(), n, multiple);
        }
        Finish(r, AddWords(product + n, product + n, product, n));
    }
    /// The same for eight words at a time.
    void ReduceEights(Word64* r) noexcept {
        Word64* const product = m_product.data();
        const std::size_t n = Size();
        Word64 carry = 0;
        for (std::size_t i = 0; i < n; i += 8) {
            Word64 multiples[8];
            Word64* const window = product + i; // no longer needed as a part of the product
            m_rows.reduceEightColumns(window, m_modulus.data(), multiples, m_negatedInverse);
            if (n > 8)
                m_rows.addEightColumns(product + i + 8, multiples, m_modulus.data() + 8, n / 8 - 1,
                                       window);
            Word64* const top = product + i + n;
            const Word64 over = AddWords(top, top, window, 8);
            carry = over + AddWord(top, 8, carry);
        }
        Finish(r, carry);
    }
    /// Values need not be below the modulus in between, only below 2^(64 n): then the reduced
    /// product of two is less than that plus the modulus. The subtraction is always done, of zero
    /// where there is no carry, which avoids an unpredictable branch.
    void Finish(Word64* r, Word64 carry) noexcept {
        const Word64* const subtrahend[] = {m_zeros.data(), m_modulus.data()};
        SubWords(r, m_product.data() + Size(), subtrahend[carry], Size());
    }

    Words m_modulus;
    const WordRows& m_rows;
    Word64 m_negatedInverse;
    Words m_product;
    Words m_zeros;
};

using ChooseMultiplier = DigitMultiplier (*)(std::size_t digits) noexcept;

/// From this length on AVX-512 uses digits of 52 bits. They were faster at 1024 bits and slower at
/// 512; lengths in between have not been measured.
constexpr std::size_t kMinDigits = 768 / kDigitBits;

DigitMultiplier MultiplierOfKernel([[maybe_unused]] std::size_t digits) noexcept {
#if defined(__x86_64__)
    if (digits >= kMinDigits && ActiveKernel() == Kernel::Avx512)
        return DigitMultiplierAvx512(digits);
#endif
    return {};
}

/// As Montgomery, with values as digits times 2^(52 digits), below twice the modulus.
class DigitMontgomery {
public:
    static std::size_t DigitsFor(WordSpan modulus) noexcept {
        return (BitLength(modulus) + 2 + kDigitBits - 1) / kDigitBits;
    }
    DigitMontgomery(WordSpan modulus, const DigitMultiplier& multiplier)
        : m_modulus(modulus.begin(), modulus.end()), m_multiplier(multiplier),
          m_digits(DigitsFor(modulus)), m_modulusDigits(Split(modulus)),
          m_negatedInverse(0 - InverseOf(modulus[0])) {}

    std::size_t Size() const noexcept { return m_multiplier.room; }

    Words Enter(WordSpan value) const {
        const std::size_t bits = m_digits * kDigitBits;
        Words shifted(bits / 64 + value.size() + 1);
        Word64* const upper = shifted.data() + bits / 64;
        upper[value.size()] =
            ShiftLeftWords(upper, value.data(), value.size(), static_cast<unsigned>(bits % 64));
        return Split(Remainder(shifted, m_modulus));
    }
    Words Leave(const Word64* value) const {
        Words one(Size());
        one[0] = 1;
        Words digits(Size());
        Multiply(digits.data(), value, one.data());
        Words left = Join(digits); // at most the modulus
        if (CompareWords(left, m_modulus) >= 0)
            left.clear();
        return left;
    }
    void Multiply(Word64* r, const Word64* a, const Word64* b) const {
        m_multiplier.multiply(r, a, b, m_modulusDigits.data(), m_negatedInverse, m_digits);
    }
    void Square(Word64* r, const Word64* a) const { Multiply(r, a, a); }

private:
    Words Split(WordSpan words) const {
        Words digits(Size());
        for (std::size_t i = 0; i < m_digits; ++i) {
            const std::size_t word = i * kDigitBits / 64;
            const std::size_t bit = i * kDigitBits % 64;
            if (word < words.size())
                digits[i] = words[word] >> bit;
            if (bit > 64 - kDigitBits && word + 1 < words.size())
                digits[i] |= words[word + 1] << (64 - bit);
            digits[i] &= kDigitMask;
        }
        return digits;
    }
    Words Join(WordSpan digits) const {
        Words words(m_digits * kDigitBits / 64 + 2);
        for (std::size_t i = 0; i < m_digits; ++i) {
            const std::size_t word = i * kDigitBits / 64;
            const std::size_t bit = i * kDigitBits % 64;
            words[word] |= digits[i] << bit;
            if (bit > 64 - kDigitBits)
                words[word + 1] |= digits[i] >> (64 - bit);
        }
        Trim(words);
        return words;
    }

    Words m_modulus;
    DigitMultiplier m_multiplier;
    std::size_t m_digits;
    Words m_modulusDigits;
    Word64 m_negatedInverse;
};

/// Multiplication modulo a power of two: the low words, cut at the top.
class LowPart {
public:
    explicit LowPart(std::size_t bits)
        : m_size((bits + 63) / 64),
          m_mask(bits % 64 == 0 ? ~Word64{0} : (Word64{1} << bits % 64) - 1), m_product(m_size) {}

    std::size_t Size() const noexcept { return m_size; }
    Words Enter(WordSpan value) const {
        Words entered(value.begin(),
                      value.begin() + static_cast<std::ptrdiff_t>(std::min(value.size(), m_size)));
        entered.resize(m_size);
        entered.back() &= m_mask;
        return entered;
    }
    Words Leave(const Word64* value) const {
        Words left(value, value + m_size);
        Trim(left);
        return left;
    }
    void Multiply(Word64* r, const Word64* a, const Word64* b) {
        MultiplyLowWords(m_product.data(), a, b, m_size);
        std::copy(m_product.begin(), m_product.end(), r);
        r[m_size - 1] &= m_mask;
    }
    void Square(Word64* r, const Word64* a) { Multiply(r, a, a); }

private:
    std::size_t m_size;
    Word64 m_mask;
    Words m_product;
};

unsigned WindowFor(std::size_t bits) noexcept {
    return bits > 1280 ? 6 : bits > 448 ? 5 : bits > 160 ? 4 : bits > 40 ? 3 : bits > 12 ? 2 : 1;
}

bool BitAt(WordSpan a, std::size_t bit) noexcept { return (a[bit / 64] >> bit % 64 & 1) != 0; }

/// base ^ exponent (not zero) in the arithmetic of `ring`.
template <class Ring>
Words Power(Ring& ring, WordSpan base, WordSpan exponent) {
    const std::size_t n = ring.Size();
    const std::size_t bits = BitLength(exponent);
    const unsigned window = WindowFor(bits);
    Words odd(n << (window - 1)); // base to the powers 1, 3, 5 ...
    const Words entered = ring.Enter(base);
    std::copy(entered.begin(), entered.end(), odd.begin());
    Words result(n);
    if (window > 1) {
        ring.Square(result.data(), odd.data());
        for (std::size_t i = n; i < odd.size(); i += n)
            ring.Multiply(&odd[i], &odd[i - n], result.data());
    }
    bool started = false;
    for (std::size_t bit = bits; bit > 0;) {
        if (!BitAt(exponent, bit - 1)) {
            ring.Square(result.data(), result.data());
            --bit;
            continue;
        }
        std::size_t end =
            bit > window ? bit - window : 0; // the window: bits end to bit - 1, ends in 1
        while (!BitAt(exponent, end))
            ++end;
        std::size_t value = 0;
        for (; bit > end; --bit) {
            value = value * 2 + (BitAt(exponent, bit - 1) ? 1 : 0);
            if (started)
                ring.Square(result.data(), result.data());
        }
        const Word64* power = &odd[value / 2 * n];
        if (started)
            ring.Multiply(result.data(), result.data(), power);
        else
            std::copy(power, power + n, result.begin());
        started = true;
    }
    return ring.Leave(result.data());
}

/// The inverse of an odd number modulo 2^bits, of as many words as `ring` has.
Words InverseModuloPowerOfTwo(LowPart& ring, WordSpan odd) {
    const std::size_t n = ring.Size();
    const Words value = ring.Enter(odd);
    Words inverse(n);
    inverse[0] = InverseOf(value[0]);
    Words step(n);
    for (std::size_t bits = 64; bits < n * 64; bits *= 2) {
        ring.Multiply(step.data(), value.data(), inverse.data());
        for (Word64& word : step) // 2 - step = complement + 3
            word = ~word;
        AddWord(step.data(), n, 3);
        ring.Multiply(inverse.data(), inverse.data(), step.data());
    }
    inverse.back() &= ring.Enter(Words(n, ~Word64{0})).back();
    return inverse;
}

Words ShiftedRight(WordSpan a, std::size_t bits) {
    a = a.subspan(bits / 64);
    Words shifted(a.size());
    ShiftRightWords(shifted.data(), a.data(), a.size(), static_cast<unsigned>(bits % 64));
    Trim(shifted);
    return shifted;
}

Words PowerOdd(WordSpan base, WordSpan exponent, WordSpan modulus, ChooseMultiplier choose) {
    if (const DigitMultiplier digits = choose(DigitMontgomery::DigitsFor(modulus));
        digits.multiply) {
        DigitMontgomery montgomery(modulus, digits);
        return Power(montgomery, base, exponent);
    }
    Montgomery montgomery(modulus);
    return Power(montgomery, base, exponent);
}

/// base ^ exponent (not zero) modulo 2^twos. The order of an odd number modulo 2^twos divides that
/// number, so the exponent's low bits are enough; an even one has at least `exponent` twos.
Words PowerOfTwos(LowPart& ring, WordSpan base, WordSpan exponent, std::size_t twos) {
    if (base.empty() || (base[0] & 1) == 0) {
        if (exponent.size() > 1 || exponent[0] >= twos)
            return {};
        return Power(ring, base, exponent);
    }
    Words low = ring.Enter(exponent);
    Trim(low);
    return low.empty() ? Words{1} : Power(ring, base, low);
}

Words PowerEven(WordSpan base, WordSpan exponent, WordSpan modulus, ChooseMultiplier choose) {
    std::size_t twos = 0;
    while (!BitAt(modulus, twos))
        ++twos;
    const Words oddPart = ShiftedRight(modulus, twos);
    LowPart ring(twos);
    Words low = PowerOfTwos(ring, base, exponent, twos);
    if (oddPart.size() == 1 && oddPart[0] == 1)
        return low;
    const Words high = PowerOdd(base, exponent, oddPart, choose);

    // high + oddPart * ((low - high) / oddPart modulo 2^twos)
    const std::size_t n = ring.Size();
    low.resize(n);
    const Words highLow = ring.Enter(high);
    SubWords(low.data(), low.data(), highLow.data(), n);
    low = ring.Enter(low);
    const Words inverse = InverseModuloPowerOfTwo(ring, oddPart);
    ring.Multiply(low.data(), low.data(), inverse.data());
    Words result(oddPart.size() + n);
    MultiplyWords(result.data(), oddPart, low);
    const Word64 carry = AddWords(result.data(), result.data(), high.data(), high.size());
    AddWord(result.data() + high.size(), result.size() - high.size(), carry);
    Trim(result);
    return result;
}

} // namespace

Words ModularPower(WordSpan base, WordSpan exponent, WordSpan modulus,
                   DigitMultiplier (*choose)(std::size_t digits) noexcept) {
    base = Trimmed(base);
    exponent = Trimmed(exponent);
    modulus = Trimmed(modulus);
    if (modulus.size() == 1 && modulus[0] == 1)
        return {};
    if (exponent.empty())
        return {1};
    return (modulus[0] & 1) == 0 ? PowerEven(base, exponent, modulus, choose)
                                 : PowerOdd(base, exponent, modulus, choose);
}

Words ModularPower(WordSpan base, WordSpan exponent, WordSpan modulus) {
    return ModularPower(base, exponent, modulus, MultiplierOfKernel);
}

} // namespace vnbytstr::detail

// The AVX-512 sources, compiled over instructions made of simpler ones, so that their logic is tried
// on every machine: alone, and as the multiplication of modular powers.
#include "src/numbers/DigitMultiply.h"
#include "src/numbers/DigitProduct.h"

#if defined(__x86_64__)

namespace vnbytstr::detail {
DigitMultiplier DigitMultiplierSimulated(std::size_t digits) noexcept;
void MultiplyDigitsSimulated(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept;
} // namespace vnbytstr::detail

#define VNBYTSTR_SIMULATE_AVX512
#include "src/numbers/DigitMultiply.cpp"
#include "src/numbers/DigitProduct.cpp"

#include "src/numbers/ModularPower.h"
#include "tests/numbers/GmpOracle.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace vnbytstr::detail;
using vnbytstr::test::Oracle;

namespace {

class DigitMultiplySimulated : public testing::Test, protected vnbytstr::test::RandomWords {
protected:
    DigitMultiplySimulated() : RandomWords(23) {}
    // Of exactly so many bits.
    Words RandomOf(std::size_t bits) {
        Words words = Random((bits + 63) / 64);
        if (bits % 64 != 0)
            words.back() &= (Word64{1} << bits % 64) - 1;
        words.back() |= Word64{1} << (bits - 1) % 64;
        return words;
    }
    std::size_t RandomBits() {
        static constexpr std::size_t kEdges[] = {512,  516,  517,  518,  519,  1024, 1027, 1536,
                                                 2047, 2048, 2077, 2078, 2079, 3072, 4095, 4096};
        return Number(0, 1) == 0 ? kEdges[Number(0, std::size(kEdges) - 1)] : Number(512, 4096);
    }
    Words Minus(const Words& a, Word64 b) {
        Words r = a;
        SubWord(r.data(), r.size(), b);
        return r;
    }
    // Bases of all kinds for a modulus: the ends, and above it.
    Words Base(const Words& modulus) {
        switch (Number(0, 7)) {
        case 0:
            return {};
        case 1:
            return {1};
        case 2:
            return Minus(modulus, 1);
        case 3:
            return modulus;
        case 4:
            return Words(modulus.size() + 2, ~Word64{0});
        case 5:
            return RandomOf(64 * modulus.size() + 100);
        default:
            return RandomOf(64 * modulus.size());
        }
    }
};

Words ToDigits(mpz_srcptr value, std::size_t room) {
    Words digits(room);
    mpz_export(digits.data(), nullptr, -1, sizeof(Word64), 0, 64 - kDigitBits, value);
    return digits;
}

void FromDigits(mpz_ptr value, const Words& digits) {
    mpz_import(value, digits.size(), -1, sizeof(Word64), 0, 64 - kDigitBits, digits.data());
}

} // namespace

TEST_F(DigitMultiplySimulated, MultipliesModuloAsGmpDoes) {
    for (int round = 0; round < 1500; ++round) {
        const std::size_t bits = round % 20 == 0 ? Number(4097, 8318) : RandomBits();
        Words modulus = RandomOf(bits);
        modulus[0] |= 1;
        const std::size_t digits = (bits + 2 + kDigitBits - 1) / kDigitBits;
        const DigitMultiplier multiplier = DigitMultiplierSimulated(digits);
        ASSERT_GE(multiplier.room, digits);
        Oracle m(modulus), twice, factors[2], inverse;
        mpz_mul_2exp(twice.Value(), m.Value(), 1);
        for (Oracle& factor : factors) {
            // Up to twice the modulus, and that very value less one.
            mpz_sub_ui(factor.Value(), twice.Value(), 1);
            if (Number(0, 3) != 0)
                mpz_mod(factor.Value(), Oracle(Base(modulus)).Value(), twice.Value());
        }
        mpz_set_ui(inverse.Value(), 1);
        mpz_mul_2exp(inverse.Value(), inverse.Value(), kDigitBits);
        mpz_invert(inverse.Value(), m.Value(), inverse.Value());
        const Word64 negated = 0 - ToDigits(inverse.Value(), 1)[0];

        const Words a = ToDigits(factors[0].Value(), multiplier.room);
        const bool square = Number(0, 3) == 0;
        Words b = square ? a : ToDigits(factors[1].Value(), multiplier.room);
        const Words mDigits = ToDigits(m.Value(), multiplier.room);
        multiplier.multiply(b.data(), a.data(), b.data(), mDigits.data(), negated, digits);

        ASSERT_TRUE(std::all_of(b.begin(), b.end(), [](Word64 d) { return d <= kDigitMask; }));
        Oracle result, expected;
        FromDigits(result.Value(), b);
        ASSERT_LT(mpz_cmp(result.Value(), twice.Value()), 0) << bits << " bits";
        mpz_mul_2exp(result.Value(), result.Value(), static_cast<mp_bitcnt_t>(kDigitBits * digits));
        mpz_mul(expected.Value(), factors[0].Value(), factors[square ? 0 : 1].Value());
        ASSERT_NE(mpz_congruent_p(result.Value(), expected.Value(), m.Value()), 0)
            << bits << " bits";
    }
    EXPECT_EQ(DigitMultiplierSimulated(161).multiply, nullptr);
}

TEST_F(DigitMultiplySimulated, RaisesToPowersAsGmpDoes) {
    for (int round = 0; round < 400; ++round) {
        Words modulus = RandomOf(round < 40 ? 1024 * Number(1, 4) : RandomBits());
        if (round % 4 == 3) // even: its odd part is done in digits
            modulus[0] &= ~Word64{0} << Number(1, 63);
        else
            modulus[0] |= 1;
        const Words base = Base(modulus);
        const Words exponent = round % 100 == 0 ? RandomOf(64 * modulus.size())
                               : round % 7 == 0 ? Words{Number(0, 3)}
                                                : RandomOf(Number(1, 200));
        Oracle expected;
        mpz_powm(expected.Value(), Oracle(base).Value(), Oracle(exponent).Value(),
                 Oracle(modulus).Value());
        ASSERT_EQ(ModularPower(base, exponent, modulus, DigitMultiplierSimulated),
                  expected.ToWords())
            << "round " << round;
    }
}

TEST_F(DigitMultiplySimulated, LongProductsAreThoseOfGmp) {
    for (std::size_t n = kLeastDigitProduct; n <= kMostDigitProduct; ++n) {
        const Words a = n % 3 == 0 ? Words(n, ~Word64{0}) : Random(n);
        const Words b = n % 6 == 0 ? a : Random(n);
        Words product(2 * n + 1, 7); // the last word is not the product's
        Words expected(2 * n + 1, 7);
        mpn_mul_n(expected.data(), a.data(), b.data(), static_cast<mp_size_t>(n));
        MultiplyDigitsSimulated(product.data(), a.data(), b.data(), n);
        ASSERT_EQ(product, expected) << n << " words";
        mpn_sqr(expected.data(), a.data(), static_cast<mp_size_t>(n));
        MultiplyDigitsSimulated(product.data(), a.data(), a.data(), n);
        ASSERT_EQ(product, expected) << n << " words";
    }
}

#endif

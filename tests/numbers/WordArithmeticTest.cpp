#include "tests/numbers/GmpOracle.h"

#include "src/numbers/ModularPower.h"
#include "src/os/Word128.h"
#include "tests/support/KernelTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace vnbytstr;
using namespace vnbytstr::detail;
using vnbytstr::test::Oracle;

namespace {

class WordArithmetic : public vnbytstr::test::KernelTest, protected vnbytstr::test::RandomWords {
protected:
    WordArithmetic() : RandomWords(99) {}
};
VNBYTSTR_FOR_ALL_KERNELS(WordArithmetic);

} // namespace

TEST_P(WordArithmetic, AddsSubtractsShiftsAndCompares) {
    for (int round = 0; round < 20000; ++round) {
        const std::size_t n = Number(1, 20);
        const Words a = Random(n);
        const Words b = Number(0, 5) == 0 ? a : Random(n);
        Oracle expected;
        Words r(n);
        r.push_back(AddWords(r.data(), a.data(), b.data(), n));
        mpz_add(expected.Value(), Oracle(a).Value(), Oracle(b).Value());
        Trim(r);
        ASSERT_EQ(r, expected.ToWords());

        r.assign(n, 0);
        const Word64 borrow = SubWords(r.data(), a.data(), b.data(), n);
        mpz_sub(expected.Value(), Oracle(a).Value(), Oracle(b).Value());
        ASSERT_EQ(borrow != 0, mpz_sgn(expected.Value()) < 0);
        const int order = CompareWords(a, b);
        ASSERT_EQ((order > 0) - (order < 0), mpz_sgn(expected.Value()));
        mpz_fdiv_r_2exp(expected.Value(), expected.Value(), static_cast<mp_bitcnt_t>(64 * n));
        Trim(r);
        ASSERT_EQ(r, expected.ToWords());

        const auto bits = static_cast<unsigned>(Number(0, 63));
        r.assign(n, 0);
        r.push_back(ShiftLeftWords(r.data(), a.data(), n, bits));
        mpz_mul_2exp(expected.Value(), Oracle(a).Value(), bits);
        Trim(r);
        ASSERT_EQ(r, expected.ToWords());
        r = a;
        ShiftRightWords(r.data(), r.data(), n, bits);
        mpz_fdiv_q_2exp(expected.Value(), Oracle(a).Value(), bits);
        Trim(r);
        ASSERT_EQ(r, expected.ToWords());
        ASSERT_EQ(BitLength(a), Trimmed(a).empty() ? 0 : mpz_sizeinbase(Oracle(a).Value(), 2));
    }
}

TEST_P(WordArithmetic, Multiplies) {
    for (int round = 0; round < 6000; ++round) {
        const std::size_t longest = round % 20 == 0 ? 300 : round % 4 == 0 ? 90 : 20;
        const Words a = Random(Number(0, longest));
        const Words b = Random(Number(0, longest));
        Oracle expected;
        Words r(a.size() + b.size(), 0xABCD);
        MultiplyWords(r.data(), a, b);
        mpz_mul(expected.Value(), Oracle(a).Value(), Oracle(b).Value());
        Trim(r);
        ASSERT_EQ(r, expected.ToWords()) << a.size() << " by " << b.size();

        r.assign(2 * a.size(), 0xABCD);
        SquareWords(r.data(), a);
        mpz_mul(expected.Value(), Oracle(a).Value(), Oracle(a).Value());
        Trim(r);
        ASSERT_EQ(r, expected.ToWords()) << a.size() << " squared";

        Words other = b;
        other.resize(a.size());
        r.assign(a.size(), 0xABCD);
        MultiplyLowWords(r.data(), a.data(), other.data(), a.size());
        mpz_mul(expected.Value(), Oracle(a).Value(), Oracle(other).Value());
        mpz_fdiv_r_2exp(expected.Value(), expected.Value(),
                        static_cast<mp_bitcnt_t>(64 * a.size()));
        Trim(r);
        ASSERT_EQ(r, expected.ToWords());
    }
}

TEST_P(WordArithmetic, Divides) {
    for (int round = 0; round < 20000; ++round) {
        const Words a = Random(Number(0, round % 10 == 0 ? 100 : 12));
        Words m = Random(Number(1, round % 10 == 0 ? 60 : 8));
        if (Trimmed(m).empty())
            m[0] = 1;
        Oracle quotient;
        Oracle remainder;
        mpz_tdiv_qr(quotient.Value(), remainder.Value(), Oracle(a).Value(), Oracle(m).Value());
        Words q;
        ASSERT_EQ(Remainder(a, m, &q), remainder.ToWords());
        ASSERT_EQ(q, quotient.ToWords());
        ASSERT_EQ(Remainder(a, m), remainder.ToWords());
    }
}

// Long enough to be divided by halves; the quotients, chosen first, are full of the words that make
// estimates go wrong.
TEST_P(WordArithmetic, DividesLongNumbers) {
    for (int round = 0; round < 300; ++round) {
        Words m = Random(Number(80, 420));
        m.back() = Number(0, 1) == 0 ? ~Word64{0} : Word64{1} << Number(0, 63);
        // A quotient of ones and the greatest remainder: the top words equal those of the divisor.
        const bool isTop = round % 4 == 0;
        Oracle quotient(isTop ? Words(Number(100, 500), ~Word64{0}) : Random(Number(80, 900)));
        Oracle remainder(Random(m.size())), dividend;
        mpz_mod(remainder.Value(), remainder.Value(), Oracle(m).Value());
        if (isTop || Number(0, 2) == 0)
            mpz_sub_ui(remainder.Value(), Oracle(m).Value(), 1);
        mpz_mul(dividend.Value(), quotient.Value(), Oracle(m).Value());
        mpz_add(dividend.Value(), dividend.Value(), remainder.Value());
        Words q;
        ASSERT_EQ(Remainder(dividend.ToWords(), m, &q), remainder.ToWords()) << "round " << round;
        ASSERT_EQ(q, quotient.ToWords()) << "round " << round;
    }
}

TEST_P(WordArithmetic, RaisesToPowers) {
    for (int round = 0; round < 3000; ++round) {
        const std::size_t longest = round % 100 == 0 ? 34 : round % 10 == 0 ? 10 : 4;
        const Words base = Random(Number(0, longest + 1));
        Words exponent = Random(Number(0, round % 100 == 0 ? 3 : 5));
        if (round % 3 == 0 && !exponent.empty())
            exponent.assign(1, Number(0, 5));
        Words modulus = Random(Number(1, longest));
        if (round % 2 == 0)
            modulus[0] |= 1;
        else if (round % 4 == 1)
            modulus[0] &= ~Word64{0} << Number(0, 63);
        else if (round % 8 == 3)
            std::fill(modulus.begin(), modulus.end() - 1, 0); // a large power of two in it
        if (Trimmed(modulus).empty())
            modulus.back() = Word64{1} << Number(0, 63);
        Oracle expected;
        mpz_powm(expected.Value(), Oracle(base).Value(), Oracle(exponent).Value(),
                 Oracle(modulus).Value());
        ASSERT_EQ(ModularPower(base, exponent, modulus), expected.ToWords()) << "round " << round;
    }
}

#if defined(__SIZEOF_INT128__)
TEST(TwoWords, CountAsTheCompilersOwnType) {
    using Own = Word128;
    std::mt19937_64 random(3);
    const auto any = [&] { return random() >> random() % 64; };
    for (int round = 0; round < 20000; ++round) {
        // Now and then nearly all ones, where division carries.
        const auto most = [&] { return random() % 4 == 0 ? ~(any() >> 56) : any(); };
        const std::uint64_t high[2] = {most(), most()}, low[2] = {any(), any()};
        const int places = static_cast<int>(random() % 128);
        const Own a = Own{high[0]} << 64 | low[0], b = Own{high[1]} << 64 | low[1];
        const TwoWords c = TwoWords{high[0]} << 64 | low[0], d = TwoWords{high[1]} << 64 | low[1];
        const auto expect = [&](Own own, TwoWords words) {
            ASSERT_EQ(static_cast<std::uint64_t>(own), static_cast<std::uint64_t>(words)) << round;
            ASSERT_EQ(static_cast<std::uint64_t>(own >> 64),
                      static_cast<std::uint64_t>(words >> 64))
                << round;
        };
        expect(a + b, c + d);
        expect(a - b, c - d);
        expect(a * b, c * d);
        expect(a << places, c << places);
        expect(a >> places, c >> places);
        ASSERT_EQ(a < b, c < d);
        ASSERT_EQ(a == b, c == d);
        if (b != 0) {
            expect(a / b, c / d);
            expect(a % b, c % d);
        }
    }
}
#endif

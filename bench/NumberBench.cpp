// Big numbers against GMP and OpenSSL: modular powers with odd and even moduli, products,
// remainders.
#include "bytestore/ModularPower.h"

#include <benchmark/benchmark.h>
#include <gmp.h>
#include <openssl/bn.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace vnbytstr::detail;

namespace {

// A number in the three forms.
struct Number {
    Words words;
    mpz_t gmp;
    BIGNUM* openssl;

    explicit Number(Words value) : words(std::move(value)) {
        mpz_init(gmp);
        mpz_import(gmp, words.size(), -1, 8, 0, 0, words.data());
        openssl = BN_lebin2bn(reinterpret_cast<const unsigned char*>(words.data()),
                              static_cast<int>(words.size() * 8), nullptr);
    }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;
    ~Number() {
        mpz_clear(gmp);
        BN_free(openssl);
    }
};

Words Random(std::size_t bits, bool odd) {
    static std::mt19937_64 random{17};
    Words words(bits / 64);
    for (Word64& word : words)
        word = random();
    words.back() |= Word64{1} << 63;
    words[0] = odd ? words[0] | 1 : words[0] & ~Word64{1};
    return words;
}

struct Case {
    std::string name;
    std::function<void()> ours, gmp, openssl;
    int turns;
    std::vector<double> times[3] = {}; // microseconds
};

double Time(const std::function<void()>& work, int turns) {
    if (!work)
        return 0;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < turns; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - start;
    return taken.count() / turns;
}

std::vector<Case> MakeCases() {
    static BN_CTX* const context = BN_CTX_new();
    static BIGNUM* const result = BN_new();
    static mpz_t gmpResult;
    mpz_init(gmpResult);
    std::vector<Case> cases;
    for (const std::size_t bits : {512u, 1024u, 2048u, 3072u, 4096u}) {
        for (const bool odd : {true, false}) {
            auto* base = new Number(Random(bits, true)); // live as long as the program
            auto* exponent = new Number(Random(bits, true));
            auto* modulus = new Number(Random(bits, odd));
            cases.push_back({"power/" + std::to_string(bits) + (odd ? "/odd" : "/even"),
                             [=] {
                                 benchmark::DoNotOptimize(
                                     ModularPower(base->words, exponent->words, modulus->words));
                             },
                             [=] { mpz_powm(gmpResult, base->gmp, exponent->gmp, modulus->gmp); },
                             [=] {
                                 BN_mod_exp(result, base->openssl, exponent->openssl,
                                            modulus->openssl, context);
                             },
                             bits < 1024   ? 20
                             : bits < 2048 ? 4
                                           : 1});
        }
    }
    for (const std::size_t bits : {512u, 1024u, 2048u, 4096u, 8192u, 16384u, 32768u, 65536u}) {
        auto* a = new Number(Random(bits, true));
        auto* b = new Number(Random(bits, true));
        auto* wide = new Number(Random(2 * bits, true));
        const int turns = bits < 8192 ? 2000 : 50;
        auto* r = new Words(2 * bits / 64);
        cases.push_back({"multiply/" + std::to_string(bits),
                         [=] { MultiplyWords(r->data(), a->words, b->words); },
                         [=] { mpz_mul(gmpResult, a->gmp, b->gmp); },
                         [=] { BN_mul(result, a->openssl, b->openssl, context); }, turns});
        cases.push_back({"remainder/" + std::to_string(2 * bits) + "/" + std::to_string(bits),
                         [=] { benchmark::DoNotOptimize(Remainder(wide->words, a->words)); },
                         [=] { mpz_tdiv_r(gmpResult, wide->gmp, a->gmp); },
                         [=] { BN_mod(result, wide->openssl, a->openssl, context); }, turns});
    }
    return cases;
}

// The least disturbed run.
double Best(const std::vector<double>& values) {
    return values.empty() ? 0 : *std::min_element(values.begin(), values.end());
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::vector<Case> cases = MakeCases();
    for (Case& item : cases) {
        benchmark::RegisterBenchmark(item.name.c_str(), [&item](benchmark::State& state) {
            for (auto _ : state) {
                item.times[0].push_back(Time(item.ours, item.turns));
                item.times[1].push_back(Time(item.gmp, item.turns));
                item.times[2].push_back(Time(item.openssl, item.turns));
            }
        })->Iterations(11);
    }
    benchmark::RunSpecifiedBenchmarks();
    std::printf("\n%-24s %10s %10s %10s %12s\n", "microseconds, best run", "ours", "GMP", "OpenSSL",
                "faster by"); // than the faster of the two
    for (Case& item : cases) {
        const double ours = Best(item.times[0]);
        const double gmp = Best(item.times[1]);
        const double openssl = Best(item.times[2]);
        std::printf("%-24s %10.3f %10.3f %10.3f %12.2f\n", item.name.c_str(), ours, gmp, openssl,
                    std::min(gmp, openssl) / ours);
    }
}

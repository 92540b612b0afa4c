// Big numbers against GMP and OpenSSL: modular powers with odd and even moduli, products,
// remainders; as a user calls them, and the word arithmetic below.
#include "bench/Rounds.h"

#include "src/numbers/ModularPower.h"
#include "src/os/CpuKernel.h"
#include "vnbytstr/FixedBinary.h"

#include <gmp.h>
#include <openssl/bn.h>

#include <memory>
#include <random>

using namespace vnbytstr::detail;
using vnbytstr::bench::Contender;
using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;
using vnbytstr::bench::Repeat;

namespace {

// A number in all forms.
struct Number {
    Words words;
    CFixedBinary fixed;
    mpz_t gmp;
    BIGNUM* openssl;

    explicit Number(Words value) : words(std::move(value)) {
        fixed.SetLength(static_cast<int>(2 * words.size()));
        for (int i = 0; i < fixed.GetLength(); ++i)
            fixed.SetBlock(
                i, static_cast<DWORD>(words[static_cast<std::size_t>(i) / 2] >> (i % 2 * 32)));
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

using NumberPointer = std::shared_ptr<Number>;

NumberPointer Random(std::size_t bits, bool odd) {
    static std::mt19937_64 random{17};
    Words words(bits / 64);
    for (Word64& word : words)
        word = random();
    words.back() |= Word64{1} << 63;
    words[0] = odd ? words[0] | 1 : words[0] & ~Word64{1};
    return std::make_shared<Number>(words);
}

// Where the peers put their results, as a loop of theirs would.
struct Results {
    Results() { mpz_init(gmp); }
    Results(const Results&) = delete;
    Results& operator=(const Results&) = delete;
    ~Results() {
        mpz_clear(gmp);
        BN_free(openssl);
        BN_CTX_free(context);
    }
    mpz_t gmp;
    BIGNUM* openssl = BN_new();
    BN_CTX* context = BN_CTX_new();
    CFixedBinary fixed;
};

double PowerGoal(std::size_t bits, bool odd) {
    if (!odd || vnbytstr::ActiveKernel() != vnbytstr::Kernel::Avx512)
        return 1;
    return bits >= 4096 ? 4 : bits >= 3072 ? 3 : bits >= 2048 ? 2.2 : bits >= 1024 ? 1.3 : 1;
}

void AddPower(Contests& contests, const std::shared_ptr<Results>& results, std::size_t bits,
              bool odd) {
    const NumberPointer base = Random(bits, true), exponent = Random(bits, true),
                        modulus = Random(bits, odd);
    const std::size_t turns =
        std::max<std::size_t>(1, (std::size_t{1} << 31) / (bits * bits * bits));
    Contest contest{std::string(odd ? "power, odd " : "power, even ") + std::to_string(bits),
                    static_cast<double>(turns),
                    Contest::Nanoseconds,
                    {},
                    PowerGoal(bits, odd),
                    11};
    contest.contenders.push_back({"CFixedBinary", Repeat(turns, [=] {
                                      results->fixed =
                                          base->fixed.ExpMod(exponent->fixed, modulus->fixed);
                                  })});
    contest.contenders.push_back(
        {"GMP",
         Repeat(turns, [=] { mpz_powm(results->gmp, base->gmp, exponent->gmp, modulus->gmp); })});
    if (odd) // which is what OpenSSL is made for
        contest.contenders.push_back({"OpenSSL", Repeat(turns, [=] {
                                          BN_mod_exp(results->openssl, base->openssl,
                                                     exponent->openssl, modulus->openssl,
                                                     results->context);
                                      })});
    contests.Add(contest);
}

void AddProduct(Contests& contests, const std::shared_ptr<Results>& results, std::size_t bits) {
    const NumberPointer a = Random(bits, true), b = Random(bits, true),
                        wide = Random(2 * bits, true);
    const std::size_t turns = std::max<std::size_t>(50, (std::size_t{1} << 32) / (bits * bits) / 8);
    const double goal = bits <= 4096 ? 1 : 0;
    const auto product = std::make_shared<Words>(2 * bits / 64);
    const auto add = [&](const std::string& name, auto fixed, auto words, auto gmp) {
        const Contender peer{"GMP", Repeat(turns, gmp)};
        const auto amount = static_cast<double>(turns);
        contests.Add({name,
                      amount,
                      Contest::Nanoseconds,
                      {{"CFixedBinary", Repeat(turns, fixed)}, peer},
                      goal,
                      25});
        contests.Add({name + ", words",
                      amount,
                      Contest::Nanoseconds,
                      {{"ours", Repeat(turns, words)}, peer},
                      goal,
                      25});
    };
    add(
        "multiply " + std::to_string(bits), [=] { results->fixed = a->fixed * b->fixed; },
        [=] { MultiplyWords(product->data(), a->words, b->words); },
        [=] { mpz_mul(results->gmp, a->gmp, b->gmp); });
    add(
        "remainder " + std::to_string(2 * bits) + "/" + std::to_string(bits),
        [=] { results->fixed = wide->fixed.Mod(a->fixed); },
        [=] { benchmark::DoNotOptimize(Remainder(wide->words, a->words)); },
        [=] { mpz_tdiv_r(results->gmp, wide->gmp, a->gmp); });
}

} // namespace

int main(int argc, char** argv) {
    Contests contests;
    const auto results = std::make_shared<Results>();
    for (const std::size_t bits : {512u, 1024u, 2048u, 3072u, 4096u}) {
        AddPower(contests, results, bits, true);
        AddPower(contests, results, bits, false);
    }
    for (const std::size_t bits : {512u, 1024u, 2048u, 4096u, 8192u, 16384u, 32768u, 65536u})
        AddProduct(contests, results, bits);
    return contests.Run(argc, argv);
}

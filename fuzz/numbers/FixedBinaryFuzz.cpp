// Numbers of a few blocks against GMP. The first byte holds the number of blocks of each operand;
// with its highest bit the operands are made of blocks of all zeros and all ones.
#include "fuzz/FuzzInput.h"
#include "vnbytstr/FixedBinary.h"

#include <gmp.h>

using namespace vnbytstr;
using fuzz::Require;

namespace {

/// A number both ways.
struct Number {
    Number() { mpz_init(gmp); }
    explicit Number(std::string bytes)
        : fixed(reinterpret_cast<const BYTE*>(bytes.data()), static_cast<int>(bytes.size())) {
        mpz_init(gmp);
        mpz_import(gmp, bytes.size(), 1, 1, 0, 0, bytes.data());
    }
    ~Number() { mpz_clear(gmp); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;

    CFixedBinary fixed;
    mpz_t gmp;
};

std::string Operand(fuzz::Input& input, std::size_t blocks, bool isExtreme) {
    std::string bytes;
    for (std::size_t i = 0; isExtreme && i < blocks; ++i)
        bytes.append(4, input.Byte() % 2 != 0 ? '\xFF' : '\0');
    if (!isExtreme)
        bytes = input.Bytes(4 * blocks);
    bytes.resize(4 * blocks);
    return bytes;
}

/// That a result has GMP's value; in so many blocks as that takes, and at least one, when it is
/// trimmed.
void Compare(const CFixedBinary& result, const mpz_t expected, bool isTrimmed = true) {
    std::string bytes(4 * static_cast<std::size_t>(result.GetLength()), '\0');
    if (!bytes.empty())
        result.GetBytes(reinterpret_cast<BYTE*>(bytes.data()));
    mpz_t value;
    mpz_init(value);
    mpz_import(value, bytes.size(), 1, 1, 0, 0, bytes.data());
    Require(mpz_cmp(value, expected) == 0);
    mpz_clear(value);
    const std::size_t blocks = (mpz_sizeinbase(expected, 2) + 31) / 32;
    Require(!isTrimmed || static_cast<std::size_t>(result.GetLength()) == blocks);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::size_t sizes = input.Byte();
    const bool isExtreme = (sizes & 0x80) != 0;
    const auto bits = static_cast<int>(input.Number() % 300);
    const Number a(Operand(input, 1 + sizes % 16, isExtreme));
    const Number b(Operand(input, 1 + (sizes >> 4) % 8, isExtreme));
    const Number c(Operand(input, 1 + input.Byte() % 4, isExtreme));
    Number r;

    mpz_add(r.gmp, a.gmp, b.gmp);
    Compare(a.fixed + b.fixed, r.gmp);
    mpz_mul(r.gmp, a.gmp, b.gmp);
    Compare(a.fixed * b.fixed, r.gmp);
    mpz_mul(r.gmp, a.gmp, a.gmp);
    Compare(a.fixed * a.fixed, r.gmp);
    mpz_sub(r.gmp, a.gmp, b.gmp);
    mpz_fdiv_r_2exp(r.gmp, r.gmp, 32 * static_cast<mp_bitcnt_t>(a.fixed.GetLength()));
    Compare(a.fixed - b.fixed, r.gmp);
    const int order = mpz_cmp(a.gmp, b.gmp);
    Require((a.fixed < b.fixed) == (order < 0) && (a.fixed == b.fixed) == (order == 0));

    r.fixed = a.fixed;
    r.fixed.ShiftLeft(bits);
    mpz_mul_2exp(r.gmp, a.gmp, static_cast<mp_bitcnt_t>(bits));
    Compare(r.fixed, r.gmp, false);
    Require(r.fixed.GetLength() == a.fixed.GetLength() + (bits + 31) / 32);
    r.fixed = a.fixed;
    r.fixed.ShiftRight(bits);
    mpz_fdiv_q_2exp(r.gmp, a.gmp, static_cast<mp_bitcnt_t>(bits));
    Compare(r.fixed, r.gmp, bits > 0 && mpz_sgn(r.gmp) != 0);
    mpz_fdiv_q_2exp(r.gmp, a.gmp, 1);
    Compare(a.fixed.DivideBy2(), r.gmp, false);

    for (const Number* modulus : {&b, &c}) {
        if (mpz_sgn(modulus->gmp) == 0) {
            mpz_set_ui(r.gmp, 0);
            Compare(a.fixed.Mod(modulus->fixed), r.gmp, false);
            continue;
        }
        mpz_mod(r.gmp, a.gmp, modulus->gmp);
        Compare(a.fixed.Mod(modulus->fixed), r.gmp, mpz_cmp(a.gmp, modulus->gmp) >= 0);
    }
    if (mpz_sgn(b.gmp) != 0) {
        if (mpz_sgn(c.gmp) != 0)
            mpz_powm(r.gmp, a.gmp, c.gmp, b.gmp);
        else
            mpz_set_ui(r.gmp, 1); // not reduced
        Compare(a.fixed.ExpMod(c.fixed, b.fixed), r.gmp, false);
    }
    return 0;
}

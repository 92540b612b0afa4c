// GMP, the oracle of the arithmetic on words.
#pragma once

#include "src/numbers/WordArithmetic.h"

#include <gmp.h>

#include <random>

namespace vnbytstr::test {

using detail::Word64;
using detail::Words;
using detail::WordSpan;

/// GMP's integer.
class Oracle {
public:
    Oracle() { mpz_init(m_value); }
    explicit Oracle(WordSpan words) : Oracle() {
        mpz_import(m_value, words.size(), -1, sizeof(Word64), 0, 0, words.data());
    }
    ~Oracle() { mpz_clear(m_value); }
    Oracle(const Oracle& other) { mpz_init_set(m_value, other.m_value); }
    Oracle& operator=(const Oracle& other) {
        mpz_set(m_value, other.m_value);
        return *this;
    }

    mpz_ptr Value() { return m_value; }
    mpz_srcptr Value() const { return m_value; }
    Words ToWords() const {
        Words words((mpz_sizeinbase(m_value, 2) + 63) / 64);
        std::size_t count = 0;
        mpz_export(words.data(), &count, -1, sizeof(Word64), 0, 0, m_value);
        words.resize(count);
        return words;
    }

private:
    mpz_t m_value;
};

/// Numbers and words of a fixed seed.
class RandomWords {
public:
    explicit RandomWords(unsigned seed) : m_random(seed) {}
    Word64 Word() { return m_random(); }
    std::size_t Number(std::size_t low, std::size_t high) {
        return low + static_cast<std::size_t>(m_random() % (high - low + 1));
    }
    /// Words of all kinds of bits, with many runs of ones and zeros, where carries go far.
    Words Random(std::size_t size) {
        Words words(size);
        const std::size_t kind = Number(0, 3);
        for (Word64& word : words) {
            const std::size_t choice = kind == 0 ? 0 : kind == 1 ? Number(0, 4) : Number(0, 2);
            word = choice == 1 ? 0 : choice == 2 ? ~Word64{0} : choice == 3 ? 1 : m_random();
        }
        return words;
    }

private:
    std::mt19937_64 m_random;
};

} // namespace vnbytstr::test

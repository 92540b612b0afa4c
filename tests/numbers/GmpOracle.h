// GMP, the oracle of the arithmetic on words.
#pragma once

#include "src/numbers/WordArithmetic.h"

#include <gmp.h>

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
    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;

    mpz_ptr Value() { return m_value; }
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

} // namespace vnbytstr::test

// Numbers as texts against GMP: the value of hex text, and the order that the keys of decimal
// texts, integers and doubles give.
#include "fuzz/FuzzInput.h"
#include "src/bytestore/NumberKey.h"
#include "vnbytstr/FixedBinary.h"

#include <gmp.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <list>
#include <regex>

using namespace vnbytstr;
using fuzz::Require;

namespace {

struct Number {
    Number() { mpq_init(value); }
    ~Number() { mpq_clear(value); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;

    mpq_t value;
    bool isNumber = true;
    std::string key;
};

/// Whole blocks of eight digits: pairs with blanks before them, up to what is neither.
void CheckHex(const std::string& text) {
    static const std::regex pairs("( *[0-9A-Fa-f]{2})*");
    std::smatch match;
    std::regex_search(text, match, pairs, std::regex_constants::match_continuous);
    std::string digits = match.str();
    std::erase(digits, ' ');
    digits.resize(digits.size() / 8 * 8);
    const CFixedBinary number(text.c_str());
    const std::string back = fuzz::ToStdString(number.Format());
    Require(back.size() == digits.size() && CFixedBinary(back.c_str()) == number);
    Number expected, written;
    if (!digits.empty())
        Require(mpz_set_str(mpq_numref(expected.value), digits.c_str(), 16) == 0 &&
                mpz_set_str(mpq_numref(written.value), back.c_str(), 16) == 0);
    Require(mpq_equal(expected.value, written.value) != 0);
}

/// False for an exponent that would make the exact number too long.
bool Read(const std::string& text, Number& number) {
    static const std::regex decimal(R"( *([+-]?)([0-9]*)\.?([0-9]*)(?:[eE]([+-]?)([0-9]+))? *)");
    detail::AppendDecimalKey(text, number.key);
    std::smatch parts;
    number.isNumber =
        std::regex_match(text, parts, decimal) && parts.length(2) + parts.length(3) > 0;
    if (!number.isNumber)
        return true;
    std::string digits = parts[5].str();
    digits.erase(0, digits.find_first_not_of('0'));
    if (digits.size() > 3)
        return false;
    const long exponent = digits.empty() ? 0 : std::stol(digits);
    const long power =
        (parts[4] == "-" ? -exponent : exponent) - static_cast<long>(parts.length(3));
    mpq_ptr value = number.value;
    Require(mpz_set_str(mpq_numref(value), (parts[2].str() + parts[3].str()).c_str(), 10) == 0);
    Number ten;
    mpz_ui_pow_ui(mpq_numref(ten.value), 10, static_cast<unsigned long>(std::abs(power)));
    power < 0 ? mpq_div(value, value, ten.value) : mpq_mul(value, value, ten.value);
    if (parts[1] == "-")
        mpq_neg(value, value);
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::string bytes = input.Bytes(8);
    LONGLONG integer = 0;
    std::memcpy(&integer, bytes.data(), bytes.size());
    std::list<Number> numbers;
    mpq_set_str(numbers.emplace_back().value, std::to_string(integer).c_str(), 10);
    detail::AppendIntegerKey(integer, numbers.back().key);
    std::list<std::string> texts{std::to_string(integer) + input.Text(), input.Text()};
    double real = 0;
    std::memcpy(&real, &integer, sizeof real);
    if (std::isfinite(real)) {
        mpq_set_d(numbers.emplace_back().value, real);
        detail::AppendRealKey(real, numbers.back().key);
        // Close to it, or exactly that.
        std::array<char, 1200> text;
        const auto end =
            std::to_chars(text.data(), text.data() + text.size(), real,
                          std::chars_format::scientific, static_cast<int>(input.Number() % 800));
        texts.emplace_back(text.data(), end.ptr);
    }
    texts.push_back(input.Rest());
    CheckHex(texts.back());
    for (const std::string& text : texts)
        if (!Read(text, numbers.emplace_back()))
            numbers.pop_back();
    for (const Number& left : numbers)
        for (const Number& right : numbers) {
            // What is not a number comes after all that are.
            const int expected = left.isNumber && right.isNumber
                                     ? mpq_cmp(left.value, right.value)
                                     : static_cast<int>(right.isNumber) - left.isNumber;
            const int order = left.key.compare(right.key);
            Require((order < 0) == (expected < 0) && (order > 0) == (expected > 0));
        }
    return 0;
}

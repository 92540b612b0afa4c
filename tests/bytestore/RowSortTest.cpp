// Sorting rows, against a stable sort of the standard library with a comparison of its own: numbers by
// GMP, texts by ICU's comparison instead of its keys.
#include "src/bytestore/KeySort.h"
#include "src/charset/Collation.h"
#include "tests/bytestore/StoreFixture.h"

#include "vnbytstr/Ccsid.h"
#include "vnbytstr/RowSort.h"

#include <gmp.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <deque>
#include <limits>
#include <numeric>
#include <thread>

namespace vnbytstr::test {
namespace {

/// An exact number, or none.
class Exact {
public:
    Exact() { mpq_init(m_value); }
    ~Exact() { mpq_clear(m_value); }
    Exact(const Exact&) = delete;
    Exact& operator=(const Exact&) = delete;

    void Set(double value) {
        m_infinite = std::isinf(value) ? (value > 0 ? 1 : -1) : 0;
        m_isNumber = !std::isnan(value);
        if (std::isfinite(value))
            mpq_set_d(m_value, value);
    }
    /// Digits with a point and an exponent, as the test writes them.
    void Set(std::string_view text) {
        std::string digits;
        long places = 0;
        const std::size_t e = text.find_first_of("eE");
        const std::size_t point = text.find('.');
        for (const char character : text.substr(0, e)) {
            if (character == '-' || (character >= '0' && character <= '9'))
                digits += character;
        }
        m_isNumber = digits.find_first_of("0123456789") != std::string::npos &&
                     text.find_first_not_of("0123456789+-.eE ") == std::string_view::npos;
        if (!m_isNumber)
            return;
        if (point != std::string_view::npos)
            places = static_cast<long>(std::count_if(
                text.begin() + static_cast<std::ptrdiff_t>(point),
                e == std::string_view::npos ? text.end()
                                            : text.begin() + static_cast<std::ptrdiff_t>(e),
                [](char character) { return character >= '0' && character <= '9'; }));
        if (e != std::string_view::npos)
            places -= std::stol(std::string(text.substr(e + 1)));
        mpz_set_str(mpq_numref(m_value), digits.c_str(), 10);
        mpz_set_ui(mpq_denref(m_value), 1);
        mpz_t power;
        mpz_init(power);
        mpz_ui_pow_ui(power, 10, static_cast<unsigned long>(std::abs(places)));
        mpz_ptr part = places > 0 ? mpq_denref(m_value) : mpq_numref(m_value);
        mpz_mul(part, part, power);
        mpz_clear(power);
        mpq_canonicalize(m_value);
    }
    int Compare(const Exact& other) const {
        if (m_isNumber != other.m_isNumber)
            return m_isNumber ? -1 : 1;
        if (!m_isNumber || m_infinite != other.m_infinite)
            return m_isNumber ? m_infinite - other.m_infinite : 0;
        return m_infinite != 0 ? 0 : mpq_cmp(m_value, other.m_value);
    }

private:
    mpq_t m_value;
    bool m_isNumber = true;
    int m_infinite = 0;
};

struct Cell {
    ERowValueType type = rowNull;
    LONGLONG integer = 0;
    double real = 0;
    std::string bytes; ///< of a text: in the native CCSID
    WORD ccsid = 0;
    Exact exact;

    int Class() const { return type == rowNull ? 0 : type < rowText ? 1 : type; }
    int Compare(const Cell& other, const Collation& collation) const {
        if (Class() != other.Class())
            return Class() - other.Class();
        if (Class() == 1)
            return exact.Compare(other.exact);
        return type == rowText ? collation.Compare(bytes, other.bytes) : bytes.compare(other.bytes);
    }
    void Put(CRowStore& store) const {
        std::string text = bytes;
        if (ccsid != 0) {
            DWORD length = 1000;
            text.resize(length);
            ASSERT_TRUE(TranslateCCSID(
                GetNativeCCSID(), ccsid, reinterpret_cast<const BYTE*>(bytes.data()),
                static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE*>(text.data()), &length));
            text.resize(length);
        }
        store.BeginRow();
        if (type == rowInteger)
            store.AppendInteger(integer);
        else if (type == rowReal)
            store.AppendReal(real);
        else if (type == rowDecimal)
            store.AppendDecimal(text);
        else if (type == rowText)
            store.AppendText(text, ccsid);
        else if (type == rowBytes)
            store.AppendBytes({reinterpret_cast<const BYTE*>(text.data()), text.size()});
        store.EndRow();
    }
};

class RowSortTest : public StoreFixture {
protected:
    std::size_t Random(std::size_t below) { return m_random() % below; }

    double RandomReal() {
        static constexpr double kReals[] = {0.0,
                                            -0.0,
                                            0.1,
                                            0.5,
                                            1.25,
                                            9007199254740992.0,
                                            9223372036854775808.0,
                                            -9223372036854775808.0,
                                            1e300,
                                            5e-324,
                                            std::numeric_limits<double>::infinity(),
                                            -std::numeric_limits<double>::infinity(),
                                            std::numeric_limits<double>::quiet_NaN()};
        const double real = kReals[Random(std::size(kReals))];
        switch (Random(4)) {
        case 0:
            return real;
        case 1:
            return std::nextafter(real, 0.0);
        case 2:
            return static_cast<double>(Random(2000)) - 1000;
        default:
            return (static_cast<double>(Random(20000)) - 10000) / 100;
        }
    }
    LONGLONG RandomInteger() {
        if (Random(2))
            return static_cast<LONGLONG>(Random(2000)) - 1000;
        const LONGLONG edges[] = {INT64_MAX, INT64_MIN + 5, 1LL << 53, -(1LL << 53), 1LL << 62};
        return edges[Random(5)] - static_cast<LONGLONG>(Random(5));
    }
    std::string RandomDecimal() {
        static constexpr const char* kTexts[] = {"",
                                                 "-",
                                                 "abc",
                                                 "1e400",
                                                 "-1e400",
                                                 "1e-400",
                                                 "-1e-400",
                                                 "5",
                                                 "5.0",
                                                 "+5.",
                                                 " 5 ",
                                                 "-0.000",
                                                 ".5",
                                                 "1E2",
                                                 "100",
                                                 "0.1",
                                                 "NaN",
                                                 "123e-2",
                                                 "123456789012345678901234567890",
                                                 "9007199254740993",
                                                 "9007199254740992.5"};
        switch (Random(5)) {
        case 0:
            return kTexts[Random(std::size(kTexts))];
        case 1: { // a real's exact digits, or ones that differ late
            std::array<char, 1200> text;
            const double real = RandomReal();
            if (!std::isfinite(real))
                return "0";
            const auto end = std::to_chars(text.data(), text.data() + text.size(), real,
                                           std::chars_format::scientific, 800);
            std::string digits(text.data(), end.ptr);
            const std::size_t point = digits.find('.');
            if (Random(2) && point != std::string::npos)
                digits[point + 1 + Random(800)] = static_cast<char>('0' + Random(10));
            return digits;
        }
        case 2:
            return std::to_string(RandomInteger());
        default: {
            std::string text = std::to_string(static_cast<int>(Random(20000)) - 10000);
            text.insert(text.size() - 1, ".");
            return text;
        }
        }
    }
    std::string RandomText() {
        static constexpr const char* kParts[] = {"a", "A", "b", "ä", "Ä",  "z",
                                                 "ö", "-", "1", " ", "ab", "é"};
        std::string text = Random(2) ? "a common beginning of many texts " : "";
        for (std::size_t i = Random(6); i > 0; --i)
            text += kParts[Random(std::size(kParts))];
        return text;
    }
    void MakeCell(Cell& cell) {
        cell.type = static_cast<ERowValueType>(Random(6));
        if (cell.type == rowInteger) {
            cell.integer = RandomInteger();
            cell.exact.Set(std::to_string(cell.integer));
        } else if (cell.type == rowReal) {
            cell.real = RandomReal();
            cell.exact.Set(cell.real);
        } else if (cell.type == rowDecimal) {
            cell.bytes = RandomDecimal();
            cell.exact.Set(cell.bytes);
        } else if (cell.type == rowText) {
            cell.bytes = RandomText();
            cell.ccsid = Random(4) == 0 ? 37 : 0;
        } else if (cell.type == rowBytes) {
            cell.bytes.resize(Random(5));
            for (char& byte : cell.bytes)
                byte = static_cast<char>(Random(2) ? 0 : 0xFF - Random(2));
        }
    }
    void MakeCells(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            MakeCell(m_cells.emplace_back());
            m_cells.back().Put(m_store);
        }
    }
    std::vector<DWORD> Expected(std::vector<DWORD> order, bool descending) {
        const Collation& collation = Collation::Current();
        std::stable_sort(order.begin(), order.end(), [&](DWORD left, DWORD right) {
            return m_cells[left].Compare(m_cells[right], collation) < 0;
        });
        if (descending)
            std::reverse(order.begin(), order.end());
        return order;
    }
    std::vector<DWORD> All() const {
        std::vector<DWORD> order(m_cells.size());
        std::iota(order.begin(), order.end(), 0u);
        return order;
    }

    std::mt19937_64 m_random{1};
    std::deque<Cell> m_cells;
    CRowStore m_store{1, 16};
};

TEST_F(RowSortTest, EqualsAStableSort) {
    m_system.SetEnvironment("LC_ALL", "sv_SE.UTF-8"); // ö after z
    ASSERT_LT(Collation::Current().Compare("z", "ö"), 0);
    MakeCells(100'000);
    CRowStoreColumn column(m_store, 0);
    std::vector<DWORD> order;
    ASSERT_TRUE(CRowSort::Sort(column, order));
    const std::vector<DWORD> expected = Expected(All(), false);
    for (std::size_t i = 0; i < order.size(); ++i)
        ASSERT_EQ(order[i], expected[i]) << "place " << i << ": " << m_cells[order[i]].bytes
                                         << " instead of " << m_cells[expected[i]].bytes;

    // Some of the rows, in another order, descending, by another language's rules.
    m_system.SetEnvironment("LC_ALL", "de_AT.UTF-8");
    const ScopedSystem again(m_system);
    order = All();
    std::shuffle(order.begin(), order.end(), m_random);
    order.resize(30'000);
    const std::vector<DWORD> some = Expected(order, true);
    ASSERT_TRUE(CRowSort::Sort(column, order, true));
    EXPECT_EQ(order, some);
    EXPECT_GT(Collation::Current().Compare("z", "ö"), 0);
}

/// Keys of all bytes, many of them equal or beginnings of others, in blocks of a few hundred.
TEST_F(RowSortTest, BlocksAndRunsEqualAStableSort) {
    for (const std::size_t block : {std::size_t{4096}, std::size_t{100'000'000}}) {
        std::vector<std::string> keys(30'000);
        for (std::string& key : keys) {
            key.assign(Random(3) * 20, 'x');
            for (std::size_t i = Random(24); i > 0; --i)
                key += static_cast<char>(Random(3) == 0 ? 0 : 0xFE + Random(2));
        }
        detail::KeySorter sorter(block, [] { return true; });
        for (std::size_t i = keys.size(); i-- > 0;)
            ASSERT_TRUE(sorter.Add(keys[i], static_cast<DWORD>(i)));
        std::vector<DWORD> order;
        ASSERT_TRUE(sorter.Finish([&](DWORD rank) {
            order.push_back(rank);
            return true;
        }));
        std::vector<DWORD> expected(keys.size());
        std::iota(expected.begin(), expected.end(), 0u);
        std::stable_sort(expected.begin(), expected.end(),
                         [&](DWORD left, DWORD right) { return keys[left] < keys[right]; });
        EXPECT_EQ(order, expected);
    }
}

TEST_F(RowSortTest, ARunMayBeEndedAtEveryStep) {
    for (const std::size_t block : {std::size_t{4096}, std::size_t{1'000'000}}) {
        unsigned tries = 0;
        for (bool isWhole = false; !isWhole; ++tries) {
            unsigned left = tries;
            const auto keepOn = [&] { return left > 0 && left-- > 0; };
            detail::KeySorter sorter(block, keepOn);
            isWhole = true;
            for (DWORD i = 0; i < 300 && isWhole; ++i)
                isWhole = sorter.Add("a longer key " + std::to_string(i), i);
            isWhole = isWhole && sorter.Finish([&](DWORD) { return keepOn(); });
        }
        EXPECT_GT(tries, 300u);
    }
}

/// Of what is longer than is compared, or not translated, or no number.
TEST_F(RowSortTest, OddValuesHaveTheirPlaces) {
    const std::string same(CRowSort::kMaxCompared, 'x');
    struct Value {
        ERowValueType type;
        std::string text;
        WORD ccsid = 0;
    };
    std::vector<Value> values = {{rowText, "y" + same},
                                 {rowText, same + "b"},
                                 {rowText, same + "a"}, // the same, as far as it counts
                                 {rowText, "c", GetNativeCCSID()},
                                 {rowText, "b", 9}, // cannot be translated
                                 {rowDecimal, "1E+02"}};
    for (const char* text : {"1e", "1e+", "1e5x", "1.2.3", "1x", "1:", ".", "e5", "+-1"})
        values.push_back({rowDecimal, text});
    values.push_back({rowDecimal, "1" + same});
    values.push_back({rowDecimal, "99.99999999999999999999"});
    for (const Value& value : values) {
        m_store.BeginRow();
        if (value.type == rowText)
            m_store.AppendText(value.text, value.ccsid);
        else
            m_store.AppendDecimal(value.text);
        m_store.EndRow();
    }
    std::vector<DWORD> order;
    CRowStoreColumn column(m_store, 0);
    ASSERT_TRUE(CRowSort::Sort(column, order));
    EXPECT_EQ(order,
              (std::vector<DWORD>{16, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 4, 3, 1, 2, 0}));
}

TEST_F(RowSortTest, MayBeEndedAtAnyTimeAndMayFail) {
    const std::string beginning(3900, 'x'); // so that the keys do not fit into a block
    for (DWORD row = 0; row < 6000; ++row) {
        m_store.BeginRow();
        m_store.AppendText(beginning + std::to_string(row * 7919 % 6000));
        m_store.EndRow();
    }
    CRowStoreColumn column(m_store, 0);
    const std::vector<DWORD> before = {3, 1, 5999};
    std::vector<DWORD> order = before;
    ULONGLONG last = 0;
    unsigned calls = 0;
    const auto count = [&](ULONGLONG done, ULONGLONG total) {
        EXPECT_TRUE(last <= done && done <= total);
        last = done;
        ++calls;
        return true;
    };
    ASSERT_TRUE(CRowSort::Sort(column, order, false, count));
    const std::vector<DWORD> sorted = order;
    const unsigned all = calls;
    for (unsigned at = 0; at < all; ++at) {
        order = before;
        calls = 0;
        EXPECT_FALSE(CRowSort::Sort(column, order, false,
                                    [&](ULONGLONG, ULONGLONG) { return calls++ < at; }));
        EXPECT_EQ(order, before);
    }
    for (const Call call : {Call::Open, Call::Write, Call::Read}) {
        for (const unsigned at : {1u, 30u, 300u}) {
            order.clear();
            m_system.Inject(Fault{.call = call, .at = at, .fromThenOn = true, .error = ENOSPC});
            EXPECT_TRUE(CauseOf([&] { CRowSort::Sort(column, order); }) != -1 ||
                        m_system.Hits() == 0);
            m_system.Inject(std::nullopt);
            EXPECT_TRUE(order.empty() || order.size() == 6000);
        }
    }
    order = before;
    EXPECT_TRUE(CRowSort::Sort(column, order));
    EXPECT_EQ(order, sorted);
    order = {1, 6000};
    EXPECT_EQ(CauseOf([&] { CRowSort::Sort(column, order); }), 0);
    order = {1, 1};
    EXPECT_EQ(CauseOf([&] { CRowSort::Sort(column, order); }), 0);
    order.clear();
    ASSERT_TRUE(CRowSort::Sort(column, order));
    for (std::size_t i = 1; i < order.size(); ++i)
        ASSERT_LT(std::to_string(order[i - 1] * 7919 % 6000),
                  std::to_string(order[i] * 7919 % 6000));
}

/// A cell that was edited counts with its new value; other threads read and append meanwhile.
TEST_F(RowSortTest, SharesItsSource) {
    class Edited : public CRowStoreColumn {
    public:
        using CRowStoreColumn::CRowStoreColumn;
        CRowValue GetValue(DWORD row) override {
            return row == 7 ? CRowValue::Integer(-1) : CRowStoreColumn::GetValue(row);
        }
    };
    constexpr DWORD kRows = 50'000;
    for (DWORD row = 0; row < kRows; ++row) {
        m_store.BeginRow();
        m_store.AppendInteger(kRows - row);
        m_store.EndRow();
    }
    std::mutex mutex;
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        for (DWORD i = 0; !isDone; ++i) {
            const std::lock_guard lock(mutex);
            EXPECT_EQ(m_store.GetValue(i % kRows, 0).GetInteger(), kRows - i % kRows);
            m_store.BeginRow();
            m_store.EndRow();
        }
    });
    Edited column(m_store, 0, &mutex);
    std::vector<DWORD> order(1, 9);
    EXPECT_TRUE(CRowSort::Sort(column, order));
    order.resize(kRows);
    std::iota(order.begin(), order.end(), 0u);
    EXPECT_TRUE(CRowSort::Sort(column, order));
    isDone = true;
    other.join();
    EXPECT_EQ(order.front(), 7u);
    EXPECT_EQ(order[1], kRows - 1);
    EXPECT_EQ(order.back(), 0u);
}

} // namespace
} // namespace vnbytstr::test

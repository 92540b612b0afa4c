#include "vnbytstr/XMLVariant.h"

#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace vnbytstr::test {
namespace {

std::string TextOf(const CXMLVariant& value) {
    const CString text = value;
    return {text, static_cast<std::size_t>(text.GetLength())};
}

TEST(XMLVariantTest, HoldsTheTextOfEachKind) {
    struct Case {
        CXMLVariant value;
        CXMLVariant::Kind kind;
        std::string text;
    };
    const Case cases[] = {
        {CString("plain"), CXMLVariant::kString, "plain"},
        {"literal", CXMLVariant::kString, "literal"},
        {0, CXMLVariant::kInteger, "0"},
        {std::numeric_limits<int>::min(), CXMLVariant::kInteger, "-2147483648"},
        {1.5, CXMLVariant::kDouble, "1.500000"},
        {-0.0000004, CXMLVariant::kDouble, "-0.000000"},
        {1e22, CXMLVariant::kDouble, "10000000000000000000000.000000"},
        {true, CXMLVariant::kBoolean, "true"},
        {false, CXMLVariant::kBoolean, "false"},
        {reinterpret_cast<void*>(0x1A2B), CXMLVariant::kPointer, "0x1a2b"},
        {nullptr, CXMLVariant::kPointer, "0x0"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(TextOf(each.value), each.text);
        EXPECT_EQ(each.value.GetType(), each.kind) << each.text;
        EXPECT_EQ(each.value.GetLength(), static_cast<LONG>(each.text.size()));
        EXPECT_EQ(each.value.GetRawData()[each.text.size()], '\0');
    }
    // As the C library writes it, the largest and smallest included.
    for (const double number : {1.0 / 3, 0.5e-6, 123456789.125, 1e308, 5e-324, -2.5}) {
        char expected[400];
        std::snprintf(expected, sizeof expected, "%f", number);
        EXPECT_EQ(TextOf(CXMLVariant(number)), expected);
    }
    EXPECT_TRUE(CXMLVariant(CString()).IsEmpty());
    EXPECT_TRUE(CXMLVariant(static_cast<const char*>(nullptr)).IsEmpty());
}

template <class T>
constexpr bool kIsTaken =
    std::is_constructible_v<CXMLVariant, T>&& std::is_assignable_v<CXMLVariant&, T>;
static_assert(!kIsTaken<const wchar_t*> && !kIsTaken<const char16_t*> && !kIsTaken<const BYTE*> &&
              !kIsTaken<BYTE*> && !kIsTaken<const int*> && !kIsTaken<char> && !kIsTaken<wchar_t>);

TEST(XMLVariantTest, TakesAndGivesTheEverydayTypes) {
    CXMLVariant value = 5u;
    EXPECT_EQ(value.GetType(), CXMLVariant::kInteger);
    CString text;
    text = value;
    text += value;
    EXPECT_EQ(text, "55");
    value = 4294967295u;
    const DWORD dword = value;
    EXPECT_EQ(dword, 4294967295u);
    value = -5000000000LL;
    const LONGLONG number = value;
    EXPECT_EQ(number, -5000000000LL);
    value = std::numeric_limits<long>::min();
    const long least = value;
    EXPECT_EQ(least, std::numeric_limits<long>::min());
    value = 2.5f;
    const double real = value;
    EXPECT_EQ(real, 2.5);
    value = true;
    EXPECT_TRUE(value);
    EXPECT_EQ(value.GetType(), CXMLVariant::kBoolean);
    value = CXMLVariant::kRaw; // an enumeration
    EXPECT_EQ(TextOf(value), "4");
}

TEST(XMLVariantTest, ComparesWithValues) {
    const CXMLVariant word("word"), empty, one(1), half("0.50"), third(1.0 / 3), yes(true);
    EXPECT_TRUE(word == "word" && "word" == word && word == CString("word") && word != "Word");
    EXPECT_TRUE(word != 0 && word != 0.0 && empty != 0 && empty == "" && empty == CString());
    EXPECT_TRUE(one == 1 && one == 1u && one == 1L && one == 1.0 && one != 2 && 1 == one);
    EXPECT_TRUE(half == 0.5 && half != 0 && third == 1.0 / 3 && third != 0.25);
    EXPECT_TRUE(yes == true && yes != false && empty == false && one == true);
    const CXMLVariant large(18446744073709551615ull), minus("-1");
    EXPECT_TRUE(large == 18446744073709551615ull && large != -1 && minus != 4294967295u);
    EXPECT_TRUE(CXMLVariant(CString("a\0b", 3)) != "a");
}

TEST(XMLVariantTest, ReadsItsTextAsWhatIsAskedFor) {
    struct Case {
        const char* text;
        int integer;
        DWORD dword;
        double number;
        bool boolean;
        std::uintptr_t pointer;
    };
    const Case cases[] = {
        {"", 0, 0, 0, false, 0},
        {"0", 0, 0, 0, false, 0},
        {"1", 1, 1, 1, true, 1},
        {"false", 0, 0, 0, false, 0xfa},
        {"FALSE", 0, 0, 0, true, 0xFA},
        {"true", 0, 0, 0, true, 0},
        {" 42x", 42, 42, 42, true, 0x42},
        {"-1", -1, 0xFFFFFFFF, -1, true, static_cast<std::uintptr_t>(-1)},
        {"4294967295", 2147483647, 0xFFFFFFFF, 4294967295.0, true, 0x4294967295},
        {"99999999999999999999", 2147483647, 0xFFFFFFFF, 99999999999999999999.0, true,
         std::numeric_limits<std::uintptr_t>::max()},
        {"-99999999999", std::numeric_limits<int>::min(), 1, -99999999999.0, true,
         -std::uintptr_t{0x99999999999}},
        {"2.75", 2, 2, 2.75, true, 2},
        {"0x1a2b", 0, 0, 0x1a2b, true, 0x1a2b},
        {"00", 0, 0, 0, true, 0},
    };
    for (const Case& each : cases) {
        const CXMLVariant value = CString(each.text);
        EXPECT_EQ(static_cast<int>(value), each.integer) << each.text;
        EXPECT_EQ(static_cast<DWORD>(value), each.dword) << each.text;
        EXPECT_EQ(static_cast<double>(value), each.number) << each.text;
        EXPECT_EQ(static_cast<bool>(value), each.boolean) << each.text;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(static_cast<void*>(value)), each.pointer)
            << each.text;
    }
}

TEST(XMLVariantTest, ComparesBytesAndNotKinds) {
    EXPECT_EQ(CXMLVariant(1), CXMLVariant("1"));
    EXPECT_EQ(CXMLVariant(true), CXMLVariant("true"));
    EXPECT_NE(CXMLVariant(1), CXMLVariant(11));
    EXPECT_EQ(CXMLVariant(), CXMLVariant(""));
    EXPECT_NE(CXMLVariant(), CXMLVariant(0));
    EXPECT_NE(CXMLVariant(CString("a\0b", 3)), CXMLVariant(CString("a\0c", 3)));
}

TEST(XMLVariantTest, TakesRawBytesItsOwnIncluded) {
    CXMLVariant value;
    value.SetRawData("a\0b", 3);
    EXPECT_EQ(TextOf(value), std::string("a\0b", 3));
    EXPECT_EQ(value.GetType(), CXMLVariant::kRaw);
    value.SetRawData("xyz12", 5);
    value.SetRawData(value.GetRawData() + 1, 3);
    EXPECT_EQ(TextOf(value), "yz1");
    value.SetRawData(value.GetRawData() + 1, 100); // no further than its end
    EXPECT_EQ(TextOf(value), "z1");
    value.SetRawData("abc", -1);
    EXPECT_TRUE(value.IsEmpty());
    EXPECT_EQ(value.GetRawData(), nullptr);
    value.SetRawData(nullptr, 5);
    EXPECT_TRUE(value.IsEmpty());

    value = "abc";
    EXPECT_TRUE(value.RedistributeMemory(5));
    EXPECT_EQ(TextOf(value), std::string("abc\0\0", 5));
    EXPECT_TRUE(value.RedistributeMemory(2));
    EXPECT_STREQ(value.GetRawData(), "ab");
    EXPECT_TRUE(value.RedistributeMemory(0));
    EXPECT_TRUE(value.IsEmpty());
}

TEST(XMLVariantTest, CopiesAndMoves) {
    CXMLVariant first(2.5);
    const CXMLVariant copy(first);
    EXPECT_EQ(copy.GetType(), CXMLVariant::kDouble);
    first = 7;
    EXPECT_EQ(TextOf(copy), "2.500000");
    const CXMLVariant& same = first;
    first = same;
    EXPECT_EQ(TextOf(first), "7");
    const CXMLVariant moved(std::move(first));
    EXPECT_EQ(TextOf(moved), "7");
    first = moved; // NOLINT(bugprone-use-after-move): it can be used again
    EXPECT_EQ(first, moved);
    first = CXMLVariant();
    EXPECT_TRUE(first.IsEmpty());
}

} // namespace
} // namespace vnbytstr::test

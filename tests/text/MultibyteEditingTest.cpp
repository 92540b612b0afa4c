// Sorting, replacing and padding.
#include "vnbytstr/MultibyteText.h"

#include "src/charset/CodePage.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using vnbytstr::ScopedCodePage;
using vnbytstr::test::BytesOf;
using vnbytstr::test::StringOf;

} // namespace

TEST(Sort, ArraysAndListsByBytes) {
    std::mt19937 random(4);
    std::vector<std::string> sorted = {"", "a", "A", "ab", "\xFF", "\x7F", std::string("a\0b", 3)};
    for (int i = 0; i < 200; ++i)
        sorted.push_back(std::to_string(random() % 500));
    for (const bool ascending : {true, false}) {
        std::shuffle(sorted.begin(), sorted.end(), random);
        CStringArray array;
        CStringList list;
        for (const std::string& text : sorted) {
            array.Add(StringOf(text));
            list.AddTail(StringOf(text));
        }
        std::sort(sorted.begin(), sorted.end());
        if (!ascending)
            std::reverse(sorted.begin(), sorted.end());
        Sort(array, ascending);
        Sort(list, ascending);
        POSITION at = list.GetHeadPosition();
        for (int i = 0; i < array.GetSize(); ++i) {
            ASSERT_EQ(BytesOf(array[i]), sorted[static_cast<std::size_t>(i)]);
            ASSERT_EQ(BytesOf(list.GetNext(at)), sorted[static_cast<std::size_t>(i)]);
        }
        EXPECT_EQ(at, nullptr);
    }
    CStringArray none;
    Sort(none);
    CStringList empty;
    Sort(empty, false);
    EXPECT_TRUE(none.IsEmpty() && empty.IsEmpty());
}

TEST(Exchange, AgreesWithTheStringsOwnReplace) {
    const ScopedCodePage scope(1252);
    std::mt19937 random(5);
    const auto some = [&](std::size_t most) {
        std::string text(random() % (most + 1), 'a');
        for (char& byte : text)
            byte = "ab"[random() % 2];
        return text;
    };
    for (int round = 0; round < 3000; ++round) {
        CString text = StringOf(some(30)), expected = text;
        const CString from = StringOf("a" + some(2)), to = StringOf(some(4));
        const int count = expected.Replace(from, to);
        if (from == to) { // which the other does not count
            EXPECT_GE(Exchange(text, from, to), 0);
            continue;
        }
        ASSERT_EQ(Exchange(text, from, to), count);
        ASSERT_EQ(BytesOf(text), BytesOf(expected));
    }
}

TEST(Exchange, OddArguments) {
    const ScopedCodePage scope(932);
    CString text("\x83\x5C\\x\x83\x5C"); // the trail byte is a backslash, too
    EXPECT_EQ(Exchange(text, "\\", "/"), 1);
    EXPECT_EQ(BytesOf(text), "\x83\x5C/x\x83\x5C");
    EXPECT_EQ(Exchange(text, "\x83\x5C", ""), 2);
    EXPECT_EQ(BytesOf(text), "/x");
    EXPECT_EQ(Exchange(text, "", "y"), -1);
    EXPECT_EQ(Exchange(text, "y", "z"), 0);
    EXPECT_EQ(BytesOf(text), "/x");
    EXPECT_EQ(Exchange(text, text, "\"/x\""), 1);
    EXPECT_EQ(BytesOf(text), "\"/x\"");
    CString nuls("a\0b\0", 4);
    EXPECT_EQ(Exchange(nuls, CString("\0", 1), " "), 2);
    EXPECT_EQ(BytesOf(nuls), "a b ");
}

TEST(Pad, BlanksOrAPercentSign) {
    const ScopedCodePage scope(932);
    const auto pad = [](const char* pattern, int length) {
        CString text(pattern);
        Pad(text, length);
        return BytesOf(text);
    };
    EXPECT_EQ(pad("ab", 5), "ab   ");
    EXPECT_EQ(pad("", 2), "  ");
    EXPECT_EQ(pad("a_", 5), "a_%");
    EXPECT_EQ(pad("%a", 5), "%a%");
    EXPECT_EQ(pad("a%", 5), "a%");
    EXPECT_EQ(pad("a_cde", 5), "a_cde");
    EXPECT_EQ(pad("abcdef", 5), "abcdef");
    EXPECT_EQ(pad("ab", 0), "ab");
    EXPECT_EQ(pad("ab", -2147483647), "ab");
    EXPECT_EQ(pad("\x95\x5F", 4), "\x95\x5F  "); // a trail byte like an underscore
}

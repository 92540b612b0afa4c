// Characters of several bytes: the oracle is a list of characters, cut and counted as such.
#include "vnbytstr/MultibyteText.h"

#include "src/charset/CodePage.h"
#include "src/text/SystemAnswers.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

using vnbytstr::CodePage;
using vnbytstr::ScopedCodePage;
using vnbytstr::test::BytesOf;
using vnbytstr::test::StringOf;
using Characters = std::vector<std::string>;

std::string Join(const Characters& characters, std::size_t from, std::size_t to) {
    std::string text;
    for (std::size_t i = from; i < to; ++i)
        text += characters[i];
    return text;
}

struct Page {
    UINT number;
    Characters kinds; ///< characters of it; the trail bytes look like lead bytes, quotes, letters
};
const Page kPages[] = {
    {1252, {"a", "\xE9", "\x81", "\xFF"}},
    {1255, {"a", "\xE9", "\xFD"}},
    {932, {"a", "\x82\xA0", "\x83\x5C", "\x95\x5F", "\xB1", "\x81\x81", "\xE0\x9F", "\\"}},
    {936, {"a", "\xB0\xA1", "\x81\x40", "\xFE\xA1", "\x81\x81"}},
    {949, {"a", "\xB0\xA1", "\x81\x41", "\xC8\xFE"}},
    {950, {"a", "\xA4\x40", "\xA5\x5C", "\xA1\xA1"}},
    {65001, {"a", "\xC3\xA4", "\xE3\x81\x82", "\xF0\x9F\x98\x80", "\xED\x9F\xBF"}},
    {54936, {"a", "\xB0\xA1", "\x81\x30\x81\x30", "\x90\x30\x81\x30", "\x81\x40"}},
};

} // namespace

TEST(MultibyteText, CutsCountsAndSplitsByCharacters) {
    std::mt19937 random(11);
    for (const Page& page : kPages) {
        const ScopedCodePage scope(page.number);
        for (int round = 0; round < 300; ++round) {
            Characters characters(random() % 40);
            for (std::string& one : characters)
                one = page.kinds[random() % page.kinds.size()];
            const std::size_t count = characters.size();
            const std::string bytes = Join(characters, 0, count);
            const CString text = StringOf(bytes);
            ASSERT_EQ(VariousByteLength(text), static_cast<int>(count)) << page.number;
            std::size_t wide = 0;
            for (const std::string& one : characters)
                wide += one.size() > 1;
            ASSERT_EQ(IsTextVariuosBytes(text), wide > 1);
            for (std::size_t n = 0; n <= bytes.size() + 1; ++n) {
                const std::size_t cut = std::min(n, count);
                const int number = static_cast<int>(n);
                const std::string left = Join(characters, 0, cut);
                ASSERT_EQ(BytesOf(VariousByteLeft(text, number)), left) << page.number;
                ASSERT_EQ(BytesOf(VariousByteRight(text, number)),
                          Join(characters, count - cut, count));
                CString front("x"), back("y");
                VariousByteDivision(text, front, back, number);
                ASSERT_EQ(BytesOf(front), left);
                ASSERT_EQ(BytesOf(back), Join(characters, cut, count));
            }
        }
    }
}

TEST(MultibyteText, OddCounts) {
    const ScopedCodePage scope(932);
    CString text("A\x82\xA0\x42");
    EXPECT_EQ(BytesOf(VariousByteLeft(text, -1)), "");
    EXPECT_EQ(BytesOf(VariousByteRight(text, -1)), "");
    CString right;
    VariousByteDivision(text, text, right, 2); // the source is one of the two
    EXPECT_EQ(BytesOf(text), "A\x82\xA0");
    EXPECT_EQ(BytesOf(right), "B");
    VariousByteDivision(text, right, text, -5);
    EXPECT_EQ(BytesOf(right), "");
    EXPECT_EQ(BytesOf(text), "A\x82\xA0");
    // A lone lead byte at the end is a character, and a lead byte.
    const CString lone("ab\x82");
    EXPECT_EQ(VariousByteLength(lone), 3);
    EXPECT_EQ(BytesOf(VariousByteRight(lone, 1)), "\x82");
    EXPECT_FALSE(IsTextVariuosBytes(lone));
    EXPECT_TRUE(IsTextVariuosBytes("\x82\xA0\x82"));
    // A NUL is a character like others.
    EXPECT_EQ(VariousByteLength(CString("a\0b", 3)), 3);
    EXPECT_EQ(VariousByteLength(CString()), 0);
}

TEST(MultibyteText, BrokenUtf8IsCountedByItsBytes) {
    const ScopedCodePage scope(65001);
    EXPECT_EQ(VariousByteLength("\xE3\x81"), 2);
    EXPECT_EQ(VariousByteLength("\xC0\xAF"
                                "a\xED\xA0\x80"),
              6);
    EXPECT_FALSE(IsTextVariuosBytes("\x81\x82\xC3"
                                    "a\xFF"));
    EXPECT_TRUE(IsTextVariuosBytes("\xC3\xA4\xE3\x81"));
}

// Wherever a text is cut, the blanks make both parts whole, and only the cut character goes.
TEST(MultibyteText, BlanksACutCharacter) {
    std::mt19937 random(12);
    for (const Page& page : kPages) {
        const ScopedCodePage scope(page.number);
        for (int round = 0; round < 300; ++round) {
            std::string text, front, back; // with blanks in the bytes of the cut character
            std::size_t cut = 1 + random() % 20;
            for (int i = 0; i < 30; ++i) {
                const std::string& one = page.kinds[random() % page.kinds.size()];
                const std::size_t begin = text.size(), end = begin + one.size();
                const bool isCut = begin < cut && cut < end;
                text += one;
                front += isCut ? std::string(cut - begin, ' ') + one.substr(cut - begin) : one;
                back += isCut ? one.substr(0, cut - begin) + std::string(end - cut, ' ') : one;
            }
            std::string changed = text;
            CheckLeadMultiByteSymbol(changed.data(), static_cast<LONG>(cut - 1));
            ASSERT_EQ(changed, front) << page.number;
            changed = text;
            CheckTrailMultiByteSymbol(changed.data(), static_cast<LONG>(cut));
            ASSERT_EQ(changed, back) << page.number;
            std::string copy(text.size(), 'z');
            CopyMultiByteStr(copy.data(), text.c_str(), static_cast<LONG>(cut), 1000);
            ASSERT_EQ(copy, front.substr(0, cut) + std::string(text.size() - cut, 'z'));
        }
    }
}

TEST(MultibyteText, BlankingAtTheEdges) {
    const ScopedCodePage scope(932);
    const auto lead = [](std::string text, LONG position) {
        CheckLeadMultiByteSymbol(text.data(), position);
        return text;
    };
    const auto trail = [](std::string text, LONG position) {
        CheckTrailMultiByteSymbol(text.data(), position);
        return text;
    };
    EXPECT_EQ(lead("a\x82", 1), "a ");
    EXPECT_EQ(lead("a\x82", -1), "a\x82");
    EXPECT_EQ(lead("\x82\xA0\x82\xA0", 2), "\x82\xA0 \xA0");
    EXPECT_EQ(lead("\x82\x82\xA0", 1),
              "\x82\x82\xA0"); // looks like a lead byte, and is a trail byte
    EXPECT_EQ(trail("\x82\xA0", 0), "\x82\xA0");
    EXPECT_EQ(trail("a\x82", 2), "a\x82"); // the terminator stays
    EXPECT_EQ(trail("\x82\xA0", -3), "\x82\xA0");
    char copy[] = "zzzz";
    CopyMultiByteStr(copy, "\x82\xA0", -1);
    EXPECT_STREQ(copy, "zzzz");
    CopyMultiByteStr(copy, "ab\x82\xA0", 4, 3);
    EXPECT_STREQ(copy, "ab z");
    CopyMultiByteStr(copy, "a\0\x82", 3);
    EXPECT_EQ(std::string(copy, 4), std::string("a\0\x82z", 4));
    for (const char* text : {"", "a", "a\x82\xA0", "a\x82"})
        EXPECT_EQ(StrCharCount(text), static_cast<int>(std::string(text).size() + 1));
}

TEST(MultibyteText, Case) {
    const ScopedCodePage scope(932);
    CString text("a\x83\x61\x82\x81z"); // a trail byte like "a", and a full-width "a"
    const CString copy = text;
    EXPECT_EQ(BytesOf(MakeStringUpper(copy)), "A\x83\x61\x82\x60Z");
    MakeStringUpper(text);
    EXPECT_EQ(BytesOf(text), "A\x83\x61\x82\x60Z");
    EXPECT_EQ(BytesOf(copy), "a\x83\x61\x82\x81z");
    EXPECT_EQ(BytesOf(MakeStringLower(static_cast<const CString&>(text))), BytesOf(copy));
    MakeStringLower(text);
    EXPECT_TRUE(StringsAreEqual(text, copy));
    EXPECT_FALSE(StringsAreEqual("abc", "ABC"));
    EXPECT_FALSE(StringsAreEqual(CString("a\0b", 3), CString("a\0c", 3)));
    CString nul("a\0b", 3);
    MakeStringUpper(nul);
    EXPECT_EQ(BytesOf(nul), std::string("A\0B", 3));
}

// The letters of the western page, as its published chart has them; the rest follows from their
// character classes.
TEST(MultibyteText, IdentifierCharacters) {
    const auto valid = [](UINT page) {
        const ScopedCodePage scope(page);
        std::string characters;
        for (int byte = 0; byte < 256; ++byte) {
            if (IsValidIdentifierChar(static_cast<char>(byte)))
                characters += static_cast<char>(byte);
        }
        return characters;
    };
    const std::string ascii = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    for (const char character : std::string("@#$_09"))
        EXPECT_FALSE(IsValidIdentifierChar(character)) << character;
    const auto range = [](int first, int last) {
        std::string bytes;
        for (int byte = first; byte <= last; ++byte)
            bytes += static_cast<char>(byte);
        return bytes;
    };
    EXPECT_EQ(valid(1252), ascii + "\x83\x88\x8A\x8C\x8E\x9A\x9C\x9E\x9F\xAA\xB5\xBA" +
                               range(0xC0, 0xD6) + range(0xD8, 0xF6) + range(0xF8, 0xFF));
    EXPECT_EQ(valid(65001), ascii);
    EXPECT_EQ(valid(936), ascii);
    EXPECT_EQ(valid(932), ascii + range(0xA6, 0xDF)); // katakana
    const std::string hebrew = valid(1255);
    EXPECT_NE(hebrew.find('\xE0'), std::string::npos); // alef
    EXPECT_EQ(hebrew.find('\xC0'), std::string::npos); // a point
}

TEST(MultibyteText, Quotes) {
    const auto dequote = [](const char* text) { return BytesOf(DequoteString(text)); };
    EXPECT_EQ(dequote("'a'"), "a");
    EXPECT_EQ(dequote("\"a\""), "a");
    EXPECT_EQ(dequote("''"), "");
    EXPECT_EQ(dequote("''a''"), "'a'");
    for (const char* text : {"", "'", "\"", "'a\"", "\"a'", "'a", "a'", "`a`", "ab"})
        EXPECT_EQ(dequote(text), text);
}

TEST(MultibyteText, TheCodePageIsAskedOnceForDoubleBytes) {
    for (const UINT page : {932u, 950u, 65001u, 1252u, 1255u}) {
        vnbytstr::detail::ForgetSystemAnswers();
        for (const UINT asked : {page, 1252u, 932u}) {
            const ScopedCodePage scope(asked);
            EXPECT_EQ(IsDBCSWindows(), page != 1252 && page != 1255) << page;
        }
    }
    vnbytstr::detail::ForgetSystemAnswers();
}

// The character type words: published values of single characters, and the C library's ctype
// functions in ASCII.
#include "src/charset/CharacterTypes.h"

#include <gtest/gtest.h>

#include <cctype>

namespace vnbytstr {
namespace {

TEST(CharacterTypes, Type1IsCtypeInAscii) {
    for (int c = 0; c < 0x80; ++c) {
        const unsigned type = CharacterType1(static_cast<char32_t>(c));
        const auto has = [type](WORD bit) { return (type & bit) != 0; };
        EXPECT_EQ(has(type1::kUpper), std::isupper(c) != 0) << c;
        EXPECT_EQ(has(type1::kLower), std::islower(c) != 0) << c;
        EXPECT_EQ(has(type1::kDigit), std::isdigit(c) != 0) << c;
        EXPECT_EQ(has(type1::kSpace), std::isspace(c) != 0) << c;
        EXPECT_EQ(has(type1::kPunctuation), std::ispunct(c) != 0) << c;
        EXPECT_EQ(has(type1::kControl), std::iscntrl(c) != 0) << c;
        EXPECT_EQ(has(type1::kBlank), std::isblank(c) != 0) << c;
        EXPECT_EQ(has(type1::kHexDigit), std::isxdigit(c) != 0) << c;
        EXPECT_EQ(has(type1::kAlpha), std::isalpha(c) != 0) << c;
        EXPECT_TRUE(has(type1::kDefined)) << c;
    }
}

TEST(CharacterTypes, KnownWords) {
    struct Known {
        char32_t character;
        WORD type1, type2, type3;
    };
    const Known known[] = {
        {U'a', 0x0382, 1, 0x8040},
        {U'G', 0x0301, 1, 0x8040},
        {U'5', 0x0284, 3, 0x0040},
        {U'\u00D7', 0x0210, 11, 0x0008},
        {U'\u00FF', 0x0302, 1, 0x8000},
        {U'\u30A2', 0x0300, 1, 0x8090},
        {U'\u3042', 0x0300, 1, 0x80A0},
        {U'\uFF71', 0x0300, 1, 0x8050},
        {U'\u4E00', 0x0300, 1, 0x8100},
        {U'\u05D0', 0x0300, 2, 0x8000},
        {U'\u0628', 0x0300, 2, 0x8000},
        {U'\u05B0', 0x0200, 11, 0x8005},
        {U'\u0301', 0x0200, 11, 0x8003},
        {U'\u0661', 0x0204, 6, 0x0000},
        {U'\u200E', 0x0220, 1, 0x0000},
        {U'\u200F', 0x0220, 2, 0x0000},
        {U'\u0378', 0, 1, 0},
    };
    for (const Known& one : known) {
        EXPECT_EQ(CharacterType1(one.character), one.type1) << std::hex << +one.character;
        EXPECT_EQ(CharacterType2(one.character), one.type2) << std::hex << +one.character;
        EXPECT_EQ(CharacterType3(one.character), one.type3) << std::hex << +one.character;
    }
    EXPECT_EQ(CharacterType3(0xD800), type3::kHighSurrogate);
    EXPECT_EQ(CharacterType3(0xDFFF), type3::kLowSurrogate);
    EXPECT_EQ(CharacterType1(0xD800), 0);
    EXPECT_NE(CharacterType3(0x0640) & type3::kKashida, 0);
    EXPECT_NE(CharacterType3('\'') & type3::kLexical, 0);
    EXPECT_EQ(CharacterType3('_'), type3::kSymbol | type3::kHalfWidth);
}

TEST(CharacterTypes, LanguagesFromRightToLeft) {
    EXPECT_TRUE(IsLocaleRightToLeft("he_IL.UTF-8"));
    EXPECT_TRUE(IsLocaleRightToLeft("ar"));
    EXPECT_TRUE(IsLocaleRightToLeft("fa_IR@calendar=persian"));
    EXPECT_FALSE(IsLocaleRightToLeft("de_AT.UTF-8"));
    EXPECT_FALSE(IsLocaleRightToLeft("C"));
    EXPECT_FALSE(IsLocaleRightToLeft(""));
}

} // namespace
} // namespace vnbytstr

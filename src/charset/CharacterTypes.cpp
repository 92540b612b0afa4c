#include "src/charset/CharacterTypes.h"

#include <unicode/uchar.h>
#include <unicode/uloc.h>

namespace vnbytstr {

namespace {

bool Has(UChar32 character, UProperty property) noexcept {
    return u_hasBinaryProperty(character, property) != 0;
}

bool IsIn(UChar32 character, uint32_t categories) noexcept {
    return (U_GET_GC_MASK(character) & categories) != 0;
}

bool IsLetter(UChar32 character) noexcept { return IsIn(character, U_GC_L_MASK | U_GC_NL_MASK); }

/// The points of Hebrew, Arabic and related scripts have these combining classes; the scripts of
/// India and South-East Asia have vowel signs without one.
bool IsVowelMark(UChar32 character) noexcept {
    const uint8_t combining = u_getCombiningClass(character);
    return (combining >= 10 && combining <= 36) || combining == 84 || combining == 91 ||
           combining == 103 || combining == 118 ||
           (combining == 0 && Has(character, UCHAR_ALPHABETIC));
}

WORD WidthOf(UChar32 character) noexcept {
    switch (u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH)) {
    case U_EA_NARROW:
    case U_EA_HALFWIDTH:
        return type3::kHalfWidth;
    case U_EA_FULLWIDTH:
    case U_EA_WIDE:
        return type3::kFullWidth;
    default:
        return 0;
    }
}

WORD KanaOf(UChar32 character) noexcept {
    if (character >= 0xFF66 && character <= 0xFF9F)
        return type3::kKatakana;
    switch (ublock_getCode(character)) {
    case UBLOCK_KATAKANA:
    case UBLOCK_KATAKANA_PHONETIC_EXTENSIONS:
        return type3::kKatakana;
    case UBLOCK_HIRAGANA:
        return type3::kHiragana;
    default:
        return 0;
    }
}

} // namespace

WORD CharacterType1(char32_t character) noexcept {
    const auto c = static_cast<UChar32>(character);
    if (!u_isdefined(c) || IsIn(c, U_GC_CS_MASK))
        return 0;
    unsigned type = type1::kDefined;
    const auto add = [&](bool condition, WORD bit) { type |= condition ? bit : 0u; };
    const bool isSuperscript = c == 0xB2 || c == 0xB3 || c == 0xB9;
    add(Has(c, UCHAR_UPPERCASE), type1::kUpper);
    add(Has(c, UCHAR_LOWERCASE), type1::kLower);
    add(IsIn(c, U_GC_ND_MASK) || isSuperscript, type1::kDigit);
    add(Has(c, UCHAR_WHITE_SPACE), type1::kSpace);
    add(IsIn(c, U_GC_P_MASK | U_GC_S_MASK) || isSuperscript, type1::kPunctuation);
    add(IsIn(c, U_GC_CC_MASK | U_GC_CF_MASK), type1::kControl);
    add(c == '\t' || IsIn(c, U_GC_ZS_MASK), type1::kBlank);
    add(Has(c, UCHAR_ASCII_HEX_DIGIT), type1::kHexDigit);
    add(IsLetter(c), type1::kAlpha);
    return static_cast<WORD>(type);
}

WORD CharacterType2(char32_t character) noexcept {
    switch (u_charDirection(static_cast<UChar32>(character))) {
    case U_LEFT_TO_RIGHT:
        return type2::kLeftToRight;
    case U_RIGHT_TO_LEFT:
    case U_RIGHT_TO_LEFT_ARABIC:
        return type2::kRightToLeft;
    case U_EUROPEAN_NUMBER:
        return type2::kEuropeanNumber;
    case U_EUROPEAN_NUMBER_SEPARATOR:
        return type2::kEuropeanSeparator;
    case U_EUROPEAN_NUMBER_TERMINATOR:
        return type2::kEuropeanTerminator;
    case U_ARABIC_NUMBER:
        return type2::kArabicNumber;
    case U_COMMON_NUMBER_SEPARATOR:
        return type2::kCommonSeparator;
    case U_BLOCK_SEPARATOR:
        return type2::kBlockSeparator;
    case U_SEGMENT_SEPARATOR:
        return type2::kSegmentSeparator;
    case U_WHITE_SPACE_NEUTRAL:
        return type2::kWhiteSpace;
    case U_BOUNDARY_NEUTRAL:
        return type2::kNotApplicable;
    default: // other neutrals, marks, and the embedding and isolating controls
        return type2::kOtherNeutral;
    }
}

WORD CharacterType3(char32_t character) noexcept {
    const auto c = static_cast<UChar32>(character);
    if (c >= 0xD800 && c <= 0xDFFF)
        return c < 0xDC00 ? type3::kHighSurrogate : type3::kLowSurrogate;
    if (IsIn(c, U_GC_MN_MASK | U_GC_ME_MASK))
        return static_cast<WORD>(type3::kAlpha | type3::kNonSpacing |
                                 (IsVowelMark(c) ? type3::kVowelMark : type3::kDiacritic));
    if (Has(c, UCHAR_IDEOGRAPHIC) && IsLetter(c))
        return type3::kAlpha | type3::kIdeograph;
    if (!u_isdefined(c) || IsIn(c, U_GC_CC_MASK))
        return 0;
    unsigned type = WidthOf(c) | KanaOf(c);
    const auto add = [&](bool condition, WORD bit) { type |= condition ? bit : 0u; };
    add(IsLetter(c), type3::kAlpha);
    add(IsIn(c, U_GC_P_MASK | U_GC_S_MASK | U_GC_Z_MASK), type3::kSymbol);
    add(IsIn(c, U_GC_SK_MASK), type3::kDiacritic);
    add(c == 0x0640, type3::kKashida);
    add(c == '\'' || c == '-' || c == 0xAD || c == 0x2010 || c == 0x2011 || c == 0x2019,
        type3::kLexical);
    return static_cast<WORD>(type);
}

bool IsLocaleRightToLeft(const std::string& locale) {
    return uloc_isRightToLeft(locale.substr(0, locale.find_first_of(".@")).c_str()) != 0;
}

} // namespace vnbytstr

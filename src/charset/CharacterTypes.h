// What kind of character a code point is, as the three type words that programs of this kind know,
// built from Unicode's properties; and the writing direction of languages.
//
// Each word has the published bits: type 1 is that of C's ctype functions, type 2 the class of the
// bidirectional algorithm (Unicode UAX #9), type 3 tells scripts and widths apart. Code points that
// are not assigned, and halves of surrogate pairs, have no kDefined.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

#include <string>

namespace vnbytstr {

/// Bits of type 1.
namespace type1 {
inline constexpr WORD kUpper = 0x0001, kLower = 0x0002, kDigit = 0x0004, kSpace = 0x0008,
                      kPunctuation = 0x0010, kControl = 0x0020, kBlank = 0x0040, kHexDigit = 0x0080,
                      kAlpha = 0x0100, kDefined = 0x0200;
} // namespace type1

/// Values of type 2.
namespace type2 {
inline constexpr WORD kNotApplicable = 0, kLeftToRight = 1, kRightToLeft = 2, kEuropeanNumber = 3,
                      kEuropeanSeparator = 4, kEuropeanTerminator = 5, kArabicNumber = 6,
                      kCommonSeparator = 7, kBlockSeparator = 8, kSegmentSeparator = 9,
                      kWhiteSpace = 10, kOtherNeutral = 11;
} // namespace type2

/// Bits of type 3.
namespace type3 {
inline constexpr WORD kNonSpacing = 0x0001, kDiacritic = 0x0002, kVowelMark = 0x0004,
                      kSymbol = 0x0008, kKatakana = 0x0010, kHiragana = 0x0020, kHalfWidth = 0x0040,
                      kFullWidth = 0x0080, kIdeograph = 0x0100, kKashida = 0x0200,
                      kLexical = 0x0400, kHighSurrogate = 0x0800, kLowSurrogate = 0x1000,
                      kAlpha = 0x8000;
} // namespace type3

/// Letters, syllables and ideographs have kAlpha; marks above or below others do not have it.
VNBYTSTR_API WORD CharacterType1(char32_t character) noexcept;
VNBYTSTR_API WORD CharacterType2(char32_t character) noexcept;
/// A mark above or below others is exactly kAlpha | kNonSpacing with kVowelMark (a vowel sign) or
/// kDiacritic. An ideograph is exactly kAlpha | kIdeograph.
VNBYTSTR_API WORD CharacterType3(char32_t character) noexcept;

/// Whether the language of a locale name such as "he_IL.UTF-8" is written from right to left.
VNBYTSTR_API bool IsLocaleRightToLeft(const std::string& locale);

} // namespace vnbytstr

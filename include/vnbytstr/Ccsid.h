// Translation of text between coded character sets, named by their CCSIDs (coded character set
// identifiers, 16-bit numbers).
//
// Known sets: those of ICU that have a number, among them EBCDIC single-byte (37, 273, 277, 278,
// 280, 284, 285, 297, 420, 424, 500, 870, 871, 875, 1025, 1026, 1047, 1122, 1140 to 1149, 1153 ...)
// and mixed-byte (930, 933, 935, 937, 939, 1364, 1371, 1388, 1390, 1399), Windows (874, 932, 936,
// 949, 950, 1250 to 1258, with the euro sign), ISO 8859 (819, 912 to 916, 813, 920, 921, 923,
// 1089), ASCII (367), PC (437, 850 ...), EUC (954, 964, 970, 1383), GB 18030 (1392), UTF-16
// big-endian (1200, 13488, 17584) and little-endian (1202), UTF-16 with a byte-order mark (1204),
// UTF-8 (1208), UTF-32 (1232, 1234).
//
// What cannot be translated
//   A character that the target does not hold is replaced by the target's substitution character,
//   or (translateStop) ends the translation. Only exact mappings count: no letter is replaced by a
//   similar one. The substitution characters:
//     EBCDIC single-byte          3F
//     EBCDIC mixed-byte           FE FE as a double-byte character, between its SO and SI; but 3F
//                                 for one up to U+00FF, except in 1364
//     Windows 1250 to 1258, ISO, ASCII, GB 18030      1A
//     Windows 874, 936, 949, 950  3F (the question mark)
//     932                         FC FC
//     PC sets                     7F
//     954, 1375                   F4 FE, A1 48
//     943, 1363, 1386             FC FC, A1 E0, A1 A1; but 7F for a character up to U+00FF
//     964, 970, 1383              FD FE, AF FE, A1 A1; but 1A for a character up to U+00FF
//     Unicode sets                U+FFFD
//   A character that shows nothing by itself (soft hyphen, joiner, directional mark, byte-order
//   mark) and that the target does not hold is left out. It counts as untranslatable like the
//   others. Bytes that are not a character of the source are malformed: each such sequence becomes
//   U+FFFD (for a single byte of a PC-born set, 932 included, U+001A), which the target may in turn
//   lack, and counts as malformed only. A character cut short by the end of the text is malformed.
//   The number of either kind and the position of the first are in STranslationReport.
//
// Control characters
//   EBCDIC line ends: 25 is LF (U+000A), 15 is NL (U+0085), 0D is CR; translateSwapNewLine
//   exchanges 25 and 15. In the PC sets and 932 the bytes 1A, 1C and 7F are U+001C, U+007F and
//   U+001A. A byte-order mark is a character like others: neither removed nor added, except by
//   1204.
#pragma once

#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

/// How bidirectional text (Hebrew, Arabic) lies in a buffer.
enum EBidiOrder {
    bidiLogical, ///< in the order of reading and typing
    bidiVisual   ///< in the order in which it is shown on the line
};
/// The base direction of a paragraph; for visual order the end at which a line's first byte stands.
enum EBidiDirection {
    bidiLeftToRight,
    bidiRightToLeft,
    bidiContextual ///< that of the paragraph's first strong letter, else left to right
};
/// What becomes of Arabic letters.
enum EBidiShaping {
    bidiShapingNone, ///< they stay as they are
    bidiShape,       ///< to presentation forms, by their neighbours
    bidiUnshape      ///< back to the letters
};

/// Layout of the text before and after a translation (Unicode UAX #9). As constructed it says: no
/// change of layout. Any other layout works on whole paragraphs, which end with LF, CR, NEL or
/// U+2029 (or after 16 Mi UTF-16 units); a paragraph is held back until its end has arrived, and
/// positions in a report are those of the beginning of the paragraph.
struct SCCSIDLayout {
    /// Order, direction and shapes of the text as it comes (From) and as it is to be (To).
    EBidiOrder eFromOrder = bidiLogical;
    EBidiDirection eFromDirection = bidiLeftToRight;
    EBidiOrder eToOrder = bidiLogical;
    EBidiDirection eToDirection = bidiLeftToRight;
    BOOL bMirror = FALSE; ///< exchange paired characters such as parentheses where text is reversed
    EBidiShaping eShaping = bidiShapingNone;
};

/// How to translate; combine with |.
enum : UINT {
    translateSubstitute = 0,  ///< replace what cannot be translated
    translateStop = 1,        ///< stop there and fail instead
    translateSwapNewLine = 2, ///< exchange LF (25) and NL (15) of the EBCDIC sets in the pair
};

/// What became of a text. Counts and positions are in bytes from the beginning of the text.
struct STranslationReport {
    /// No such position.
    static constexpr ULONGLONG nowhere = ~ULONGLONG{0};
    /// Bytes read and written.
    ULONGLONG ullConsumed = 0;
    ULONGLONG ullProduced = 0;
    ULONGLONG ullUntranslatable = 0;            ///< characters the target does not hold
    ULONGLONG ullFirstUntranslatable = nowhere; ///< position of the first one, or nowhere
    ULONGLONG ullMalformed = 0;            ///< sequences that are not a character of the source
    ULONGLONG ullFirstMalformed = nowhere; ///< position of the first one, or nowhere
};

/// A translation between two CCSIDs was asked for that cannot be done, or failed on the way. Thrown
/// by pointer to a heap object; the catcher calls Delete.
class VNBYTSTR_API CTranslationException : public CException {
    DECLARE_DYNAMIC(CTranslationException)
public:
    /// Of a translation from one CCSID into another.
    CTranslationException(WORD from, WORD to) : m_wFrom(from), m_wTo(to) {}
    /// Says which CCSID is unknown, or that the text could not be translated.
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;

    /// The two CCSIDs.
    WORD m_wFrom;
    WORD m_wTo;
};

/// The CCSID of the process's ANSI code page: 1208 for UTF-8, the page's own number for a Windows
/// page (1252, 932, 1255 ...), the registered number for others (819 for ISO 8859-1).
VNBYTSTR_API WORD GetNativeCCSID();
/// TRUE exactly when text can be translated from one CCSID to the other: both are known. A known
/// one to itself is a copy of the bytes.
VNBYTSTR_API BOOL CanTranslateCCSID(WORD from, WORD to);
/// Throws a CTranslationException for the pair.
[[noreturn]] VNBYTSTR_API void ThrowTranslationException(WORD from, WORD to);
/// The euro sign in the ANSI code page, or "EUR" where the page has none.
VNBYTSTR_API CString GetNativeEuroString();

/// A translation under way: the state between slices. One thread at a time uses it.
class CCCSIDTranslation;

/// Results of TranslateCCSIDEx.
enum ETranslation {
    translationFailed = 0, ///< stopped (translateStop), or a null argument
    translationDone = 1,   ///< the slice was taken; after the last one, all output is delivered
    translationMore = 2    ///< the output buffer is full: call again with the rest of the slice
};

/// Begins a translation. `layout` null means no change of layout; `options` is a combination of
/// translateStop and translateSwapNewLine. Null when CanTranslateCCSID is FALSE; else the caller
/// ends it with TranslateEndEx.
VNBYTSTR_API CCCSIDTranslation* TranslateBeginEx(WORD from, WORD to,
                                                 const SCCSIDLayout* layout = nullptr,
                                                 UINT options = translateSubstitute);

/// Translates the next slice of the text. `inLength` goes in as the bytes at `in` and comes out as
/// those taken; `outLength` goes in as the room at `out` and comes out as the bytes written; the
/// two buffers must not overlap. `last` says that the text ends with this slice.
///
/// State is kept between slices: a character, or what stands between a shift-out and a shift-in,
/// may lie across two of them. On translationMore the rest of the slice is passed again (with the
/// same `last`) until the result is another; the rest may be empty, since what is still to be
/// written is kept. No output is lost when the room runs out, and every call with room in `out`
/// makes progress. On translationFailed the bytes before the one it stopped at have been written;
/// the report tells the position.
VNBYTSTR_API ETranslation TranslateCCSIDEx(CCCSIDTranslation* translation, const BYTE* in,
                                           DWORD* inLength, BYTE* out, DWORD* outLength, BOOL last);

/// The report so far, while the translation goes on. FALSE when an argument is null.
VNBYTSTR_API BOOL TranslateReportEx(const CCCSIDTranslation* translation,
                                    STranslationReport* report);

/// Ends the translation and frees it (null is ignored). TRUE when it did not fail. `report`, when
/// not null, receives what became of the text.
VNBYTSTR_API BOOL TranslateEndEx(CCCSIDTranslation* translation,
                                 STranslationReport* report = nullptr);

/// Translates a whole text at once. `outLength` goes in as the room at `out` and comes out as the
/// bytes of the whole result. FALSE when the pair is unknown (0 bytes), the translation stopped
/// (translateStop: the bytes before that place), or the result does not fit (`out` then holds its
/// beginning and `outLength` says how much room it takes, 0xFFFFFFFF when that is more).
VNBYTSTR_API BOOL TranslateCCSID(WORD from, WORD to, const BYTE* in, DWORD inLength, BYTE* out,
                                 DWORD* outLength, const SCCSIDLayout* layout = nullptr,
                                 UINT options = translateSubstitute,
                                 STranslationReport* report = nullptr);

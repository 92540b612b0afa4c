// Text from right to left: what direction a text has, and left-to-right marks around it.
//
// The mark is the byte FD, which is U+200E in both the Hebrew and the Arabic code page (1255 and
// 1256). Texts are in the process's ANSI code page; GetNativeCCSID says which that is. Directions
// are those of Unicode's bidirectional classes (UAX #9): letters have one, digits, blanks,
// punctuation and marks have none. A null text is an empty one.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"

/// Whether the system is set up for text from right to left: its answer at the first call, kept for
/// the life of the process.
VNBYTSTR_API bool IsBIDIWindows();

/// Puts a left-to-right mark before and after the text, even where there is one. The mark is
/// the byte FD in single-byte code pages, and E2 80 8E in UTF-8; the double-byte pages have none,
/// and the text stays as it is.
VNBYTSTR_API void SurroundWithLRM(CString& text);

/// Puts a left-to-right mark after a text that has no right-to-left letter and does not end with
/// the mark: on a system of the NT family of a version above 4 that is set up for text from right
/// to left, and whose ANSI code page is 1255, 1256 or UTF-8. Otherwise does nothing.
VNBYTSTR_API void MaybeAddLRMSuffix(CString& text);

/// True when the text has no right-to-left letter, and for any text when the ANSI code page is
/// neither 1255 nor 1256 nor UTF-8.
VNBYTSTR_API bool IsStringAllLTR(const char* text);

/// True when the text has no left-to-right letter (nor mark); false for any text when the ANSI code
/// page is neither 1255 nor 1256 nor UTF-8. An empty text is both all left-to-right and all
/// right-to-left.
VNBYTSTR_API bool IsStringAllRTL(const char* text);

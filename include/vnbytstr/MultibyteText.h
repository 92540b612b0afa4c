// Cutting, counting, comparing and editing text without splitting a character of several bytes.
//
// Text is in the process's ANSI code page (see docs/text.md). A character is a lead
// byte with its trail byte in a double-byte page, a whole sequence in UTF-8, and one byte
// otherwise. Characters are told apart from the beginning of the text. A lead byte with nothing
// after it, and each byte of a broken UTF-8 sequence, is a character by itself. Counts are in
// characters and positions in bytes from 0, unless said otherwise.
//
// A CString may hold NUL bytes, which are characters like others here; a `char*` ends at the first.
// Every function takes time in proportion to the text. What makes a new string throws
// CMemoryException when memory runs out, and leaves its arguments unchanged.
#pragma once

#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/StringList.h"
#include "vnbytstr/framework/Types.h"

/// For a text that is to be cut after `position`: when that byte belongs to a character that
/// continues after it (in a double-byte page: when it is a lead byte), the character's bytes up to
/// `position` become blanks. A position outside of the text changes nothing.
VNBYTSTR_API void CheckLeadMultiByteSymbol(char* string, LONG position);

/// For a text that is to begin at `position`: when that byte belongs to a character that began
/// before it (in a double-byte page: when it is a trail byte), the character's bytes from
/// `position` on become blanks. A position outside of the text changes nothing; the terminator
/// always stays.
VNBYTSTR_API void CheckTrailMultiByteSymbol(char* string, LONG position);

/// Copies exactly `count` bytes (none when it is negative) and writes no terminator; the blocks
/// must not overlap. When the last ones are the beginning of a character that continues after
/// them (in a double-byte page: a lead byte), blanks stand in their place in the destination. After
/// a NUL in the source nothing is replaced.
VNBYTSTR_API void CopyMultiByteStr(char* destination, const char* source, LONG count);
/// The same with the smaller of `count` and `limit`.
VNBYTSTR_API void CopyMultiByteStr(char* destination, const char* source, LONG count, LONG limit);

/// Bytes of the text with its terminator; not characters, despite the name.
VNBYTSTR_API int StrCharCount(const char* string);

/// The first `n` characters; the whole text when `n` is not less than its length in bytes, nothing
/// when `n` is negative.
VNBYTSTR_API CString VariousByteLeft(const CString& source, int n);
/// The last `n` characters; otherwise as VariousByteLeft.
VNBYTSTR_API CString VariousByteRight(const CString& source, int n);
/// Number of characters.
VNBYTSTR_API int VariousByteLength(const CString& source);
/// Splits a text after the first `n` characters. When `n` is 0 or less, `left` becomes empty; when
/// it is not less than the text's length in bytes, `right` does. The source may be one of the two.
VNBYTSTR_API void VariousByteDivision(const CString& source, CString& left, CString& right, int n);
/// Whether the text holds two or more characters of several bytes. (The spelling is the
/// interface's.)
VNBYTSTR_API bool IsTextVariuosBytes(const CString& source);

/// Whether two texts have the same bytes.
VNBYTSTR_API bool StringsAreEqual(const CString& left, const CString& right);

/// Upper (lower) case, in place, character by character; the length in bytes stays. A letter whose
/// counterpart has another number of bytes stays.
VNBYTSTR_API void MakeStringUpper(CString& text);
VNBYTSTR_API void MakeStringLower(CString& text);
/// The same in a copy.
VNBYTSTR_API CString MakeStringUpper(const CString& text);
VNBYTSTR_API CString MakeStringLower(const CString& text);

/// Whether a byte may stand in an identifier, by its character's type words: letters, syllables and
/// ideographs may; digits, symbols (@ # $ and _ among them), marks and control characters may not.
/// It is no test of a whole name, where some of these may follow the first character. A byte that
/// is no character by itself (a lead byte; in UTF-8 one of 0x80 and above) may not.
VNBYTSTR_API bool IsValidIdentifierChar(char character);

/// The text without one pair of quotes around it, both ' or both "; any other text unchanged.
VNBYTSTR_API CString DequoteString(const CString& source);

/// Whether text may hold characters of several bytes: the system's answer
/// on the first call, kept for the life of the process.
VNBYTSTR_API bool IsDBCSWindows();

/// Sorts by bytes (as unsigned numbers; a text before any longer one that begins with it), in
/// ascending or, with `ascending` false, descending order. That is the order of code points in
/// UTF-8, and the same in every locale; equal texts keep their order.
VNBYTSTR_API void Sort(CStringArray& strings, bool ascending = true);
VNBYTSTR_API void Sort(CStringList& strings, bool ascending = true);

/// Replaces every `from` in `text` by `to`, from left to right, without searching what was put in,
/// and returns how many there were. A match begins where a character begins: a trail byte
/// is never taken for one. Case counts. Returns -1, with `text` unchanged, when `from` is empty. A
/// result past INT_MAX bytes throws CMemoryException. `from` and `to` may be `text` itself.
VNBYTSTR_API int Exchange(CString& text, const CString& from, const CString& to);

/// Makes a search pattern match values of a column of fixed width, which blanks fill up to `length`
/// bytes. A pattern without wildcards (% and _) gets blanks up to that length. One with wildcards
/// gets a % at its end, which stands for the blanks, unless it ends with one. A pattern of `length`
/// bytes or more stays as it is. A trail byte is not taken for a wildcard.
VNBYTSTR_API void Pad(CString& pattern, int length);

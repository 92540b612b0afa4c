// What encoding a text has, conversion of a file to UTF-8, byte order, and renderings as
// hexadecimal, binary and URL text.
//
// Strings are bytes in the process's ANSI code page (see docs/text.md). No pointer
// here may be null, unless a function says otherwise.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

/// 1 when the buffer (at least 2 readable bytes) begins with FF FE, the byte-order mark of UTF-16
/// little-endian, else 0. Other marks are not recognised.
VNBYTSTR_API int IsBOMPresent(const unsigned char* buffer);

/// Removes the mark FF FE: the bytes after it move to the front, and the last two of the `size`
/// bytes become zero. The size stays as it is, and so does the block. Returns 1, or 0 when there is
/// no mark (or `size` is less than 2) and nothing changed. The buffer has at least 2 readable
/// bytes.
VNBYTSTR_API int CutBOM(unsigned short* buffer, DWORD& size);

/// Judges whether a text is Unicode: 1 when it begins with a byte-order mark of UTF-16, UTF-32
/// (either order) or UTF-8, or when more than 5 % of its `length` bytes are zero; else 0. Marks are
/// looked for in 4 bytes, which must be readable whatever the length. `bigEndian` becomes 1 for the
/// marks FE FF and 00 00 FE FF, else 0.
VNBYTSTR_API int IsUnicodeText(const unsigned char* buffer, DWORD length, int& bigEndian);

/// Rewrites a text file in the ANSI code page as UTF-8 without a byte-order mark. Returns 1 when
/// that is done, also for an empty file, which is left alone; 0 when it cannot be done: no such
/// file, read-only, unreadable, a full disk, or a text that is not in the ANSI code page: UTF-8 is
/// that page and the text is not valid in it. Throws nothing.
///
/// The file is replaced as every file is (see ReplacementFile.h): after a failure or a kill it has
/// its old content. Only plain files are converted.
///
/// Bytes that are not a character of another code page become U+FFFD, so that the result is always
/// valid. When UTF-8 is the ANSI code page, valid text stays byte for byte.
VNBYTSTR_API int ConvertToUTF8(const char* path);

/// Swaps the two bytes.
VNBYTSTR_API unsigned short WordBE2LE(unsigned short value);

/// With b0 the lowest byte and b3 the highest: (b0 << 20) + (b1 << 16) + (b2 << 8) + b3 in 32 bits.
/// This is no byte swap, and deliberately so: programs depend on these very values. 0x12345678
/// gives 0x07D63412.
VNBYTSTR_API DWORD DWordBE2LE(DWORD value);

/// Replaces the string by its bytes in upper-case hexadecimal, two digits each, with one blank
/// between the bytes when `spaced` is set. An empty string stays empty. The last argument has no
/// effect. A result past INT_MAX characters throws CMemoryException and changes nothing.
VNBYTSTR_API void FormatStringAsHex(CString& text, bool spaced, bool ignored = false);
/// The same function under a second name.
VNBYTSTR_API void FormatStringAsHex2(CString& text, bool spaced, bool ignored = false);

/// Replaces a block by the upper-case hexadecimal text of its `length` bytes: a new block of
/// 2 * length + 1 bytes, the text and a NUL. Both blocks are of operator new: the old one is freed
/// with operator delete, the new one is the caller's to free so. `outLength` becomes 2 * length.
/// False, with nothing changed, when memory runs out or 2 * length passes 32 bits.
VNBYTSTR_API bool FormatBufferAsHex(char*& buffer, DWORD length, DWORD& outLength);

/// Replaces the string by the bits of its bytes as digits 0 and 1, the highest first, with one
/// blank between the bytes when `spaced` is set. Otherwise as FormatStringAsHex.
VNBYTSTR_API void FormatStringAsBin(CString& text, bool spaced, bool ignored1 = false,
                                    bool ignored2 = false);

/// Writes a character as it stands in a URL's query part, and a NUL, to `destination` (room for at
/// least 4 bytes). These become "%" and two lower-case hexadecimal digits: 20 to 29 (blank ! " # $
/// % & ' ( )), 2C (,), 3A to 3F (: ; < = > ?), 5B to 5E ([ \ ] ^), 60 (`) and 7B to 7F ({ | } ~
/// DEL). All others are copied, control characters and bytes of 0x80 and above among them.
VNBYTSTR_API void URLEncodeChar(char& character, char*& destination);

/// Encodes a text by the rule of URLEncodeChar, and appends an ampersand, before the next
/// parameter, unless `last` is set. Returns the number of characters; `result` becomes a block of
/// operator new that the caller frees with operator delete: 6 bytes for each character of the
/// source and one more, two when the source is empty and `last` is not set, zero after the text.
/// Returns 0, with `result` unchanged, when memory runs out or the text is too long for 32
/// bits; 0 with a block is the text of an empty source. A null source is an empty one.
VNBYTSTR_API DWORD URLEncodeStr(const char* source, char*& result, bool last);

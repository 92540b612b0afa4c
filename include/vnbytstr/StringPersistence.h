// Strings in files and archives, as UTF-16 little-endian.
//
// Whole-file form: the mark FF FE, then 2 * L bytes of text, where L is the string's length in
// bytes in the ANSI code page (see docs/text.md). Form with a length, in archives:
// the number 2 * L in 32 bits, little-endian, then 2 * L bytes of text without a mark.
//
// Characters of several bytes take fewer UTF-16 units than they have bytes; zeros fill the rest.
// Readers stop at the first zero unit, so they give the text back up to its first NUL. What is
// written holds the whole of it.
//
// Bytes that are not a character become U+FFFD on the way out; characters that the code page lacks,
// and unpaired surrogates, become '?' (in UTF-8 U+FFFD) on the way in. Errors of the file or
// archive pass through; CMemoryException when memory runs out.
#pragma once

#include "vnbytstr/framework/Archive.h"
#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/File.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

/// Writes the whole-file form at the file's position.
VNBYTSTR_API void WriteStringToFile(CFile& file, const CString& text);

/// Reads a whole file, whose position must be its beginning, and converts it to the ANSI code page
/// when it is judged Unicode (IsUnicodeText). Returns the length of the file in bytes, whatever the
/// length of the text.
///
/// `text` becomes a NUL-terminated block of malloc, which the caller frees with free. `converted`
/// says whether the file was judged Unicode: it is then read as UTF-16 little-endian, whatever mark
/// it begins with, and otherwise the block holds its bytes as they are. `hadMark` says whether it
/// began with FF FE, which is not part of the text. A last odd byte counts as a unit below 0x100.
///
/// A file that is shorter than its length says (or is read from another position) throws
/// CArchiveException with cause endOfFile. After any exception `text` is null.
VNBYTSTR_API DWORD ReadStringFromFile(CFile& file, char*& text, bool& converted, bool& hadMark);

/// WriteStringToFile on the archive's file. It bypasses the archive's buffer: flush the archive
/// first if it has been written to. A closed archive throws CArchiveException.
VNBYTSTR_API void WriteStringToArchive(CArchive& archive, const CString& text);
/// ReadStringFromFile on the archive's file, without its result.
VNBYTSTR_API void ReadStringFromArchive(CArchive& archive, char*& text, bool& converted,
                                        bool& hadMark);

/// Writes the form with a length through the archive. A text of 1 GiB or more, which could not be
/// read back, throws CArchiveException with cause badIndex and writes nothing.
VNBYTSTR_API void WriteStringWithLengthToArchive(CArchive& archive, const CString& text);

/// Reads the form with a length. A length of 0, or one that is negative as a signed number, gives
/// an empty string; a mark FF FE at the beginning is removed; a last odd byte counts as a unit
/// below 0x100. When the archive ends before the text does, CArchiveException with cause endOfFile
/// is thrown and `text` stays unchanged; memory grows with what really arrives, whatever the length
/// says.
VNBYTSTR_API void ReadStringWithLengthFromArchive(CArchive& archive, CString& text);

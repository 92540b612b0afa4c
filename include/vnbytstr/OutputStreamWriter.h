// COutputStreamWriter: text in the process's code page to a file in any CCSID.
#pragma once

#include "vnbytstr/Ccsid.h"
#include "vnbytstr/framework/File.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace vnbytstr::detail {
class SliceTranslator;
}

/// Writes text in the ANSI code page to an open file, translated into a coded character set, with
/// entity references for the characters that have a meaning in markup, and with lines padded to
/// records of a fixed length, where asked for.
///
/// Nothing is buffered: what a call wrote, the file has. Each call is a separate text, so a
/// character must not be cut between two calls; a mixed-byte EBCDIC text ends in single-byte mode
/// with every call. (1204 would put a byte-order mark before every piece: write 1200 or 1202.)
///
/// A character that the target does not hold is substituted as Ccsid.h says; GetReport tells how
/// many there were, and where the first. With translateStop it is an error instead: what precedes
/// it in its text is in the file, and CTranslationException is thrown. Other errors: a CCSID that
/// cannot be translated to throws CTranslationException, the file a CFileException; all by pointer.
/// After one, the writer can be used on. One thread at a time.
class VNBYTSTR_API COutputStreamWriter {
public:
    /// What ends a line.
    enum ELineBreak : int {
        eCR = 0,   ///< "\r"
        eCRLF = 1, ///< "\r\n"
        eNone = 2  ///< a new record without a line break, as any other value
    };

    /// Writes to `file`, which must outlive the writer, in CCSID `ccsid`; `options` as for
    /// TranslateCCSID. Throws CTranslationException when text cannot be translated from the native
    /// CCSID to that one.
    COutputStreamWriter(CFile& file, WORD ccsid, UINT options = 0);
    /// Closes the file when auto-close is on and it is open. A failure to close is not reported
    /// here: close the file yourself to learn of it.
    virtual ~COutputStreamWriter();
    COutputStreamWriter(const COutputStreamWriter&) = delete;
    COutputStreamWriter& operator=(const COutputStreamWriter&) = delete;

    /// Writes the text, with "&lt;", "&gt;", "&amp;" and "&quot;" for < > & and the double quote
    /// when substitution is on. A null text is empty. In a double-byte code page the byte after a
    /// lead byte is part of that character whatever it is, so "<" after one is not substituted.
    void Write(const char* text);
    /// The same of `length` bytes, which may contain NUL. Extension.
    void Write(const char* text, DWORD length);
    /// As Write, of the text formatted as printf does: substitution applies to all of it.
    VNBYTSTR_FORMAT(2, 3) void FormattedWrite(const char* format, ...);
    /// Writes the text as it is.
    void WriteVerbatim(const char* text);
    /// The same of `length` bytes, which may contain NUL. Extension.
    void WriteVerbatim(const char* text, DWORD length);
    /// Ends the line: pads it with blanks to the next multiple of the record length (when that is
    /// positive; a line at a multiple, be it empty, gets none), writes the line break, and sets the
    /// record index to 0.
    void LineBreak();

    /// What the constructor was given.
    CFile* GetFile() const { return m_pFile; }
    WORD GetCCSID() const { return m_wCCSID; }
    /// Whether the destructor closes the file; on at first.
    BOOL GetAutoClose() const { return m_bAutoClose; }
    void SetAutoClose(BOOL autoClose) { m_bAutoClose = autoClose; }
    /// Bytes written since the last line break, counted in the native text. Past 0x7FFFFFFF only
    /// the place within the record is kept.
    int GetRecordIndex() const { return m_nRecordIndex; }
    void SetRecordIndex(int index) { m_nRecordIndex = index; }
    /// Length of a record in bytes of the native text; 0, as at first, for none.
    int GetRecordLength() const { return m_nRecordLength; }
    void SetRecordLength(int length) { m_nRecordLength = length; }
    /// eCRLF at first.
    ELineBreak GetLineBreak() const { return m_eLineBreak; }
    void SetLineBreak(ELineBreak lineBreak) { m_eLineBreak = lineBreak; }
    /// Whether Write substitutes entity references; off at first.
    BOOL GetSubstituteEntityReferences() const { return m_bSubstituteEntityReferences; }
    void SetSubstituteEntityReferences(BOOL substitute) {
        m_bSubstituteEntityReferences = substitute;
    }
    /// What became of all that was written so far, padding and line breaks included; positions are
    /// in bytes of the native text. Extension.
    const STranslationReport& GetReport() const { return m_report; }

private:
    void WriteSubstituted(std::string_view text);
    void WriteText(std::string_view text);
    void Translate(std::string_view text, WORD native);
    void AddToRecordIndex(std::size_t length);
    void AddToReport(const STranslationReport& piece);

    CFile* m_pFile;
    WORD m_wCCSID;
    UINT m_nOptions;
    /// Between two texts ready for the next one; null before the first and after an exception.
    std::unique_ptr<vnbytstr::detail::SliceTranslator> m_pTranslator;
    WORD m_wTranslatedFrom = 0; ///< the native CCSID that m_pTranslator is for
    BOOL m_bAutoClose = TRUE;
    int m_nRecordIndex = 0;
    int m_nRecordLength = 0;
    ELineBreak m_eLineBreak = eCRLF;
    BOOL m_bSubstituteEntityReferences = FALSE;
    STranslationReport m_report;
};

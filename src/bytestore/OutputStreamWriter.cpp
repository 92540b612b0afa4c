#include "vnbytstr/OutputStreamWriter.h"

#include "src/bytestore/SliceTranslator.h"
#include "src/charset/CodePage.h"

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <string>
#include <string_view>

using vnbytstr::CodePage;
using vnbytstr::detail::SliceTranslator;
using vnbytstr::detail::WithMemoryException;

namespace {

constexpr std::size_t kPiece = 32768; // bytes that are gathered before they are written

std::string_view EntityFor(char c) {
    switch (c) {
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '&':
        return "&amp;";
    default:
        return "&quot;";
    }
}

} // namespace

COutputStreamWriter::COutputStreamWriter(CFile& file, WORD ccsid, UINT options)
    : m_pFile(&file), m_wCCSID(ccsid), m_nOptions(options) {
    const WORD native = GetNativeCCSID();
    if (!CanTranslateCCSID(native, ccsid))
        ThrowTranslationException(native, ccsid);
}

COutputStreamWriter::~COutputStreamWriter() {
    if (!m_bAutoClose || m_pFile->m_hFile == CFile::hFileNull)
        return;
    try {
        m_pFile->Close();
    } catch (CException* error) {
        error->Delete();
    }
}

void COutputStreamWriter::Write(const char* text) {
    if (!text)
        return;
    if (m_bSubstituteEntityReferences)
        WriteSubstituted(text);
    else
        WriteText(text);
}

void COutputStreamWriter::Write(const char* text, DWORD length) {
    if (m_bSubstituteEntityReferences)
        WriteSubstituted({text, length});
    else
        WriteText({text, length});
}

void COutputStreamWriter::WriteSubstituted(std::string_view rest) {
    std::string piece; // several runs and entities in one write
    while (!rest.empty()) {
        const std::size_t run = CodePage::Ansi().SpanWithout(rest, "<>&\"");
        if (run >= kPiece) { // long enough to go by itself
            WriteText(piece);
            piece.clear();
            WriteText(rest.substr(0, run));
        } else {
            WithMemoryException([&] { piece += rest.substr(0, run); });
        }
        rest.remove_prefix(run);
        if (!rest.empty()) {
            WithMemoryException([&] { piece += EntityFor(rest.front()); });
            rest.remove_prefix(1);
        }
        if (piece.size() >= kPiece) {
            WriteText(piece);
            piece.clear();
        }
    }
    WriteText(piece);
}

void COutputStreamWriter::FormattedWrite(const char* format, ...) {
    CString text;
    std::va_list arguments;
    va_start(arguments, format);
    text.FormatV(format, arguments);
    va_end(arguments);
    Write(text);
}

void COutputStreamWriter::WriteVerbatim(const char* text) {
    if (text)
        WriteText(text);
}

void COutputStreamWriter::WriteVerbatim(const char* text, DWORD length) {
    WriteText({text, length});
}

void COutputStreamWriter::WriteText(std::string_view text) {
    if (text.empty())
        return;
    const WORD native = GetNativeCCSID();
    if (m_wCCSID == native) {
        constexpr std::size_t most = 1u << 30;
        for (std::size_t at = 0; at < text.size(); at += most)
            m_pFile->Write(text.data() + at, static_cast<UINT>(std::min(text.size() - at, most)));
        m_report.ullConsumed += text.size();
        m_report.ullProduced += text.size();
    } else {
        Translate(text, native);
    }
    AddToRecordIndex(text.size());
}

void COutputStreamWriter::Translate(std::string_view text, WORD native) {
    // Out of the member while it is in use: after an exception the next text begins with a new one.
    std::unique_ptr<SliceTranslator> translator;
    if (m_wTranslatedFrom == native)
        translator = std::move(m_pTranslator);
    if (!translator)
        WithMemoryException(
            [&] { translator = std::make_unique<SliceTranslator>(native, m_wCCSID, m_nOptions); });
    bool done = translator->IsValid();
    const auto* bytes = reinterpret_cast<const BYTE*>(text.data());
    for (std::size_t at = 0; done && at < text.size();) {
        const auto size =
            static_cast<DWORD>(std::min<std::size_t>(text.size() - at, SliceTranslator::kSlice));
        done =
            translator->Pass(bytes + at, size, at + size == text.size(),
                             [this](const BYTE* out, DWORD count) { m_pFile->Write(out, count); });
        at += size;
    }
    STranslationReport piece;
    translator->Report(&piece);
    AddToReport(piece);
    if (!done)
        ThrowTranslationException(native, m_wCCSID);
    m_pTranslator = std::move(translator);
    m_wTranslatedFrom = native;
}

void COutputStreamWriter::AddToReport(const STranslationReport& piece) {
    constexpr ULONGLONG nowhere = STranslationReport::nowhere;
    if (m_report.ullFirstUntranslatable == nowhere && piece.ullFirstUntranslatable != nowhere)
        m_report.ullFirstUntranslatable = m_report.ullConsumed + piece.ullFirstUntranslatable;
    if (m_report.ullFirstMalformed == nowhere && piece.ullFirstMalformed != nowhere)
        m_report.ullFirstMalformed = m_report.ullConsumed + piece.ullFirstMalformed;
    m_report.ullConsumed += piece.ullConsumed;
    m_report.ullProduced += piece.ullProduced;
    m_report.ullUntranslatable += piece.ullUntranslatable;
    m_report.ullMalformed += piece.ullMalformed;
}

void COutputStreamWriter::AddToRecordIndex(std::size_t length) {
    LONGLONG index = m_nRecordIndex + static_cast<LONGLONG>(length);
    if (index > INT_MAX) // padding goes by the place within the record alone
        index = m_nRecordLength > 0 ? index % m_nRecordLength : INT_MAX;
    m_nRecordIndex = static_cast<int>(index);
}

void COutputStreamWriter::LineBreak() {
    if (m_nRecordLength > 0) {
        LONGLONG pad = LONGLONG{m_nRecordLength} - m_nRecordIndex % m_nRecordLength;
        if (pad >= m_nRecordLength)
            pad = 0;
        const std::string blanks(static_cast<std::size_t>(std::min<LONGLONG>(pad, kPiece)), ' ');
        for (; pad > 0; pad -= static_cast<LONGLONG>(blanks.size()))
            WriteText(std::string_view(blanks).substr(
                0, static_cast<std::size_t>(std::min<LONGLONG>(pad, kPiece))));
    }
    if (m_eLineBreak == eCR)
        WriteText("\r");
    else if (m_eLineBreak == eCRLF)
        WriteText("\r\n");
    m_nRecordIndex = 0;
}

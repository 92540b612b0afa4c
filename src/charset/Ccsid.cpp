#include "vnbytstr/Ccsid.h"

#include "src/charset/CcsidTranslator.h"
#include "src/charset/CodePage.h"

#include <algorithm>
#include <cstdio>
#include <limits>

using vnbytstr::CodePage;
using vnbytstr::detail::CcsidPair;
using vnbytstr::detail::CcsidTranslator;
using vnbytstr::detail::FindCcsidPair;

IMPLEMENT_DYNAMIC(CTranslationException, CException)

/// The handle that callers hold is the translator.
class CCCSIDTranslation final : public CcsidTranslator {
public:
    using CcsidTranslator::CcsidTranslator;
    bool m_hasFailed = false;
};

namespace {

const CcsidPair* FindPair(WORD from, WORD to, UINT options) {
    return FindCcsidPair(from, to, (options & translateSwapNewLine) != 0);
}

bool IsKnown(WORD ccsid) { return FindCcsidPair(ccsid, ccsid, false) != nullptr; }

} // namespace

BOOL CTranslationException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const {
    if (helpContext)
        *helpContext = 0;
    if (!buffer || size == 0)
        return FALSE;
    const bool knowsFrom = IsKnown(m_wFrom), knowsTo = IsKnown(m_wTo);
    if (knowsFrom && knowsTo)
        std::snprintf(
            buffer, size,
            "Text could not be translated from CCSID %u to CCSID %u: it holds characters "
            "that CCSID %u has no form for. Choose a CCSID that holds them, such as 1208.",
            m_wFrom, m_wTo, m_wTo);
    else
        std::snprintf(buffer, size,
                      "Text cannot be translated from CCSID %u to CCSID %u: CCSID %u is not known. "
                      "Choose another CCSID.",
                      m_wFrom, m_wTo, knowsFrom ? m_wTo : m_wFrom);
    return TRUE;
}

WORD GetNativeCCSID() { return CodePage::Ansi().GetCcsid(); }

BOOL CanTranslateCCSID(WORD from, WORD to) { return FindCcsidPair(from, to, false) ? TRUE : FALSE; }

void ThrowTranslationException(WORD from, WORD to) { throw new CTranslationException(from, to); }

CString GetNativeEuroString() {
    const std::string euro = CodePage::Ansi().FromWide(u"\u20AC");
    return euro == "?" ? CString("EUR") : CString(euro.c_str());
}

CCCSIDTranslation* TranslateBeginEx(WORD from, WORD to, const SCCSIDLayout* layout, UINT options) {
    const CcsidPair* pair = FindPair(from, to, options);
    return pair ? new CCCSIDTranslation(*pair, layout, (options & translateStop) != 0) : nullptr;
}

ETranslation TranslateCCSIDEx(CCCSIDTranslation* translation, const BYTE* in, DWORD* inLength,
                              BYTE* out, DWORD* outLength, BOOL last) {
    if (!translation || !inLength || !outLength || (!in && *inLength) || (!out && *outLength))
        return translationFailed;
    std::size_t consumed = 0, produced = 0;
    const auto status = translation->Translate({in, *inLength}, {out, *outLength}, last != FALSE,
                                               consumed, produced);
    *inLength = static_cast<DWORD>(consumed);
    *outLength = static_cast<DWORD>(produced);
    switch (status) {
    case CcsidTranslator::Status::Done:
        return translationDone;
    case CcsidTranslator::Status::OutputFull:
        return translationMore;
    case CcsidTranslator::Status::Failed:
        break;
    }
    translation->m_hasFailed = true;
    return translationFailed;
}

BOOL TranslateReportEx(const CCCSIDTranslation* translation, STranslationReport* report) {
    if (!translation || !report)
        return FALSE;
    *report = translation->GetReport();
    return TRUE;
}

BOOL TranslateEndEx(CCCSIDTranslation* translation, STranslationReport* report) {
    if (!translation)
        return FALSE;
    if (report)
        *report = translation->GetReport();
    const bool failed = translation->m_hasFailed;
    delete translation;
    return failed ? FALSE : TRUE;
}

BOOL TranslateCCSID(WORD from, WORD to, const BYTE* in, DWORD inLength, BYTE* out, DWORD* outLength,
                    const SCCSIDLayout* layout, UINT options, STranslationReport* report) {
    if (report)
        *report = {};
    if (!outLength)
        return FALSE;
    const DWORD room = *outLength;
    *outLength = 0;
    const CcsidPair* pair = FindPair(from, to, options);
    if (!pair || (!in && inLength) || (!out && room))
        return FALSE;
    CcsidTranslator translator(*pair, layout, (options & translateStop) != 0);
    std::size_t consumed = 0, produced = 0;
    auto status = translator.Translate({in, inLength}, {out, room}, true, consumed, produced);
    // What does not fit is translated all the same, to learn how much it is.
    std::array<BYTE, 4096> beyond;
    for (std::size_t taken = consumed; status == CcsidTranslator::Status::OutputFull;
         taken += consumed)
        status =
            translator.Translate({in + taken, inLength - taken}, beyond, true, consumed, produced);
    const STranslationReport& whole = translator.GetReport();
    if (report)
        *report = whole;
    constexpr ULONGLONG most = std::numeric_limits<DWORD>::max();
    *outLength = static_cast<DWORD>(std::min(whole.ullProduced, most));
    return status == CcsidTranslator::Status::Done && whole.ullProduced <= room ? TRUE : FALSE;
}

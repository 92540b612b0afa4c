// CByteStream: translation between coded character sets.

#include "src/bytestore/ContainerTranslation.h"

using namespace vnbytstr::detail;

int CByteStream::TranslateCCSID(WORD from, WORD to, STranslationReport* report, UINT options) {
    CheckWritable();
    const BOOL complete = GetComplete();
    if (m_pStore) {
        if (!m_pStore->TranslateCCSID(from, to, *m_pStore, report, options))
            return 0;
        m_pStore->SetComplete(complete);
        return 1;
    }
    CByteStream translated;
    if (!TranslateTo(*this, from, to, translated, report, options))
        return 0;
    TakeContent(translated);
    return 1;
}

int CByteStream::TranslateCCSID(WORD from, WORD to, CByteStream& destination,
                                STranslationReport* report, UINT options) const {
    if (&destination == this)
        return destination.TranslateCCSID(from, to, report, options);
    destination.CheckWritable();
    return TranslateTo(*this, from, to, destination, report, options);
}

int CByteStream::TranslateCCSID(DWORD index, DWORD count, BYTE* out, DWORD* outLength, WORD from,
                                WORD to, STranslationReport* report, UINT options) const {
    return TranslateInto(*this, index, count, out, outLength, from, to, report, options);
}

int CByteStream::TranslateCCSID(BYTE* out, DWORD* outLength, WORD from, WORD to,
                                STranslationReport* report, UINT options) const {
    return TranslateCCSID(GetStart(), 0, out, outLength, from, to, report, options);
}

int CByteStream::TranslateCCSID(WORD from, CString& text, STranslationReport* report,
                                UINT options) const {
    return TranslateToText(*this, from, text, report, options);
}

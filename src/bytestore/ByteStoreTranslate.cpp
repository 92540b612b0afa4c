// CByteStore: translation between coded character sets.

#include "src/bytestore/ContainerTranslation.h"

using namespace vnbytstr::detail;

int CByteStore::TranslateCCSID(WORD from, WORD to, CByteStore& destination,
                               STranslationReport* report, UINT options) {
    if (&destination != this)
        return TranslateTo(*this, from, to, destination, report, options);
    CByteStore translated;
    translated.TakeLimits(*this);
    if (!TranslateTo(*this, from, to, translated, report, options))
        return 0;
    TakeContent(translated);
    return 1;
}

int CByteStore::TranslateCCSID(DWORD index, DWORD count, BYTE* out, DWORD* outLength, WORD from,
                               WORD to, STranslationReport* report, UINT options) {
    return TranslateInto(*this, index, count, out, outLength, from, to, report, options);
}

int CByteStore::TranslateCCSID(BYTE* out, DWORD* outLength, WORD from, WORD to,
                               STranslationReport* report, UINT options) {
    return TranslateCCSID(m_dwStart, 0, out, outLength, from, to, report, options);
}

int CByteStore::TranslateCCSID(WORD from, CString& text, STranslationReport* report, UINT options) {
    return TranslateToText(*this, from, text, report, options);
}

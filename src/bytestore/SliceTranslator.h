// Translates text between CCSIDs slice by slice; a function gets the output piece by piece.
#pragma once

#include "vnbytstr/Ccsid.h"
#include "vnbytstr/framework/Exception.h"

#include <array>
#include <memory>

namespace vnbytstr::detail {

class SliceTranslator {
public:
    static constexpr DWORD kSlice = 16384;  ///< most input bytes at a time
    static constexpr DWORD kOutput = 32768; ///< room for output; a slice may need it several times

    /// `options` as for TranslateBeginEx.
    SliceTranslator(WORD from, WORD to, UINT options = 0)
        : m_translation(
              WithMemoryException([=] { return TranslateBeginEx(from, to, nullptr, options); })) {}

    /// False when the pair cannot be translated.
    bool IsValid() const { return m_translation != nullptr; }

    /// Translates `count` bytes; `last` says that the text ends with them. `take(bytes, count)`
    /// gets every piece of output. False when the translation fails. After the last piece the
    /// object is ready for another text.
    template <class Take>
    bool Pass(const BYTE* bytes, DWORD count, bool last, Take take) {
        for (;;) {
            DWORD consumed = count;
            DWORD produced = kOutput;
            const ETranslation result = WithMemoryException([&] {
                return TranslateCCSIDEx(m_translation.get(), bytes, &consumed, m_output.data(),
                                        &produced, last);
            });
            if (produced > 0)
                take(m_output.data(), produced);
            if (result != translationMore)
                return result == translationDone;
            bytes += consumed;
            count -= consumed;
        }
    }

    /// What became of the text so far, into `report` unless that is null.
    void Report(STranslationReport* report) const {
        if (report)
            TranslateReportEx(m_translation.get(), report);
    }

private:
    struct End {
        void operator()(CCCSIDTranslation* translation) const { TranslateEndEx(translation); }
    };
    std::unique_ptr<CCCSIDTranslation, End> m_translation;
    std::array<BYTE, kOutput> m_output;
};

} // namespace vnbytstr::detail

// Whole-text conversion by ICU's converters alone, which the library's translation must equal.
#pragma once

#include "vnbytstr/Ccsid.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace vnbytstr::test {

/// ICU's name of a set; that it is the right one is for charset/data/ccsid.vec to show.
inline std::string ConverterName(WORD ccsid) {
    const std::string number = std::to_string(ccsid);
    const bool isWindows = (ccsid >= 1250 && ccsid <= 1258) || ccsid == 874 || ccsid == 932 ||
                           ccsid == 936 || ccsid == 949 || ccsid == 950;
    return ccsid == 1200   ? "UTF-16BE"
           : ccsid == 1202 ? "UTF-16LE"
           : ccsid == 1208 ? "UTF-8"
                           : (isWindows ? "windows-" : "ibm-") + number;
}

class OracleConverter {
public:
    explicit OracleConverter(const std::string& name) {
        UErrorCode error = U_ZERO_ERROR;
        m_converter = ucnv_open(name.c_str(), &error);
        if (U_FAILURE(error))
            throw std::runtime_error(name);
    }
    explicit OracleConverter(WORD ccsid) : OracleConverter(ConverterName(ccsid)) {}
    ~OracleConverter() { ucnv_close(m_converter); }
    OracleConverter(const OracleConverter&) = delete;
    OracleConverter& operator=(const OracleConverter&) = delete;

    std::u16string Decode(const std::string& text) {
        std::u16string wide(text.size() * 2 + 16, u'\0');
        UErrorCode error = U_ZERO_ERROR;
        wide.resize(static_cast<std::size_t>(
            ucnv_toUChars(m_converter, wide.data(), static_cast<int32_t>(wide.size()), text.data(),
                          static_cast<int32_t>(text.size()), &error)));
        return wide;
    }
    std::string Encode(const std::u16string& wide) {
        std::string text(wide.size() * 8 + 16, '\0');
        UErrorCode error = U_ZERO_ERROR;
        text.resize(static_cast<std::size_t>(
            ucnv_fromUChars(m_converter, text.data(), static_cast<int32_t>(text.size()),
                            wide.data(), static_cast<int32_t>(wide.size()), &error)));
        return text;
    }

private:
    UConverter* m_converter;
};

inline std::string OracleTranslate(WORD from, WORD to, const std::string& text) {
    return OracleConverter(to).Encode(OracleConverter(from).Decode(text));
}

struct Result {
    std::string text;
    STranslationReport report;
};

/// Translates in slices of `slice` bytes (0: all at once) into buffers of `room` bytes.
inline Result Translate(WORD from, WORD to, const std::string& text, std::size_t slice = 0,
                        std::size_t room = 32768, UINT options = 0,
                        const SCCSIDLayout* layout = nullptr) {
    Result result;
    CCCSIDTranslation* translation = TranslateBeginEx(from, to, layout, options);
    if (!translation) {
        ADD_FAILURE() << from << " to " << to;
        return result;
    }
    std::string out(room, '\0');
    if (slice == 0)
        slice = std::max<std::size_t>(text.size(), 1);
    bool failed = false;
    for (std::size_t at = 0; !failed && (at < text.size() || at == 0); at += slice) {
        const std::size_t size = std::min(slice, text.size() - at);
        const BOOL last = at + size == text.size();
        std::size_t taken = 0;
        ETranslation status = translationMore;
        while (status == translationMore) {
            DWORD inLength = static_cast<DWORD>(size - taken), outLength = static_cast<DWORD>(room);
            status = TranslateCCSIDEx(
                translation, reinterpret_cast<const BYTE*>(text.data()) + at + taken, &inLength,
                reinterpret_cast<BYTE*>(out.data()), &outLength, last);
            taken += inLength;
            result.text.append(out, 0, outLength);
            if (status == translationMore && outLength != room) {
                ADD_FAILURE() << "asks for room that it has";
                break;
            }
        }
        failed = status == translationFailed;
        EXPECT_TRUE(failed || taken == size);
    }
    EXPECT_EQ(TranslateEndEx(translation, &result.report), failed ? FALSE : TRUE);
    EXPECT_EQ(result.report.ullProduced, result.text.size());
    return result;
}

inline std::string Name(WORD from, WORD to) {
    return std::to_string(from) + " to " + std::to_string(to);
}

} // namespace vnbytstr::test

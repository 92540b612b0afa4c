// Whole-text conversion by ICU's converters alone, which the library's translation must equal.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <unicode/ucnv.h>

#include <stdexcept>
#include <string>

namespace vnbytstr::test {

inline std::string ConverterName(WORD ccsid) {
    switch (ccsid) {
    case 874:
    case 932:
    case 936:
    case 949:
    case 950:
    case 1250:
    case 1251:
    case 1252:
    case 1253:
    case 1254:
    case 1255:
    case 1256:
    case 1257:
    case 1258:
        return "windows-" + std::to_string(ccsid);
    case 1200:
        return "UTF-16BE";
    case 1202:
        return "UTF-16LE";
    case 1208:
        return "UTF-8";
    default:
        return "ibm-" + std::to_string(ccsid);
    }
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

} // namespace vnbytstr::test

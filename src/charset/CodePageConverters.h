// The converters of a code page; shared by the sources of CodePage.
#pragma once

#include "src/charset/CodePage.h"
#include "src/charset/IcuConverter.h"

namespace vnbytstr {

struct CodePage::Converters {
    explicit Converters(const char* icuName) : pool(icuName, Prepare) {}
    detail::ConverterPool pool;

private:
    /// Sets the substitutes that CodePage.h promises.
    static void Prepare(UConverter* converter);
};

} // namespace vnbytstr

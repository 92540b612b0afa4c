// The part of the system seam that is about the user's language: locales and fonts.
#pragma once

#include "vnbytstr/framework/Export.h"

#include <string>

namespace vnbytstr {

/// Every function may be called from every thread.
class VNBYTSTR_API Locale {
public:
    virtual ~Locale() = default;

    /// The process's locale for text, in POSIX form such as "de_AT.UTF-8": LC_ALL, LC_CTYPE or
    /// LANG, else "C".
    virtual std::string GetTextLocale() = 0;
    /// The locale of the texts that programs show: LC_ALL, LC_MESSAGES or LANG, else "C".
    virtual std::string GetMessagesLocale() = 0;
    /// The family of fonts to use for the one of that name: itself (as it is spelled) when it is
    /// installed, else the nearest that is, preferably one of fixed width. Empty when the system
    /// does not know. Names are UTF-8.
    virtual std::string MatchFontFamily(const std::string& family) = 0;
};

} // namespace vnbytstr

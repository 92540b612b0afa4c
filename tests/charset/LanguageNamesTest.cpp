#include "src/charset/LanguageNames.h"
#include "src/charset/CodePage.h"

#include <gtest/gtest.h>

using namespace vnbytstr;

namespace {

TEST(LanguageNames, FollowsThePublishedTable) {
    const std::pair<const char*, const char*> names[] = {{"en_US", "ENU"},
                                                         {"en_US.UTF-8", "ENU"},
                                                         {"en_GB.ISO-8859-15", "ENG"},
                                                         {"fr_CA", "FRC"},
                                                         {"fr_FR@euro", "FRA"},
                                                         {"fr_BE.UTF-8@euro", "FRB"},
                                                         {"pt_PT", "PTG"},
                                                         {"pt_BR", "PTB"},
                                                         {"de_AT", "DEA"},
                                                         {"de_LI", "DEC"},
                                                         {"zh_TW", "CHT"},
                                                         {"zh_CN.GB18030", "CHS"},
                                                         {"es_ES", "ESN"},
                                                         {"es_MX", "ESM"},
                                                         {"ar_EG", "ARE"},
                                                         {"he_IL", "HEB"},
                                                         {"iw_IL", "HEB"},
                                                         {"it_CH", "ITS"},
                                                         {"no_NO", "NOR"},
                                                         {"nn_NO", "NON"},
                                                         {"sr_RS", "SRO"},
                                                         {"sr_RS@latin", "SRM"},
                                                         {"sr_RS.UTF-8@latin", "SRM"},
                                                         {"sh_BA", "SRS"},
                                                         {"sv_FI", "SVF"},
                                                         {"ja_JP.eucJP", "JPN"},
                                                         {"ko_KR", "KOR"}};
    for (const auto& [locale, code] : names)
        EXPECT_EQ(AbbreviatedLanguageName(locale), code) << locale;
}

TEST(LanguageNames, FallsBackToTheMainCountry) {
    EXPECT_EQ(AbbreviatedLanguageName("de_BE"), "DEU");
    EXPECT_EQ(AbbreviatedLanguageName("fr"), "FRA");
    EXPECT_EQ(AbbreviatedLanguageName("pt_AO"), "PTB");
    EXPECT_EQ(AbbreviatedLanguageName("ca_ES@other"), "CAT");
    EXPECT_EQ(AbbreviatedLanguageName("eo"), "ZZZ");
    EXPECT_EQ(AbbreviatedLanguageName("d"), "ZZZ");
    for (const char* none : {"", "C", "POSIX", "C.UTF-8", ".UTF-8", "@euro"})
        EXPECT_EQ(AbbreviatedLanguageName(none), "ENU") << none;
}

TEST(LanguageNames, NamesLanguagesInTheirOwnWords) {
    const ScopedCodePage utf8(65001);
    const auto nameOf = [](const char* code) {
        return LanguageDisplayName(LocaleOfLanguage(code));
    };
    EXPECT_EQ(nameOf("DEU"), "Deutsch (Deutschland)");
    EXPECT_EQ(nameOf("FRA"), "Français (France)");
    EXPECT_EQ(nameOf("JPN"), "日本語 (日本)");
    EXPECT_EQ(nameOf("SRM"), "Srpski (latinica, Srbija)");
    EXPECT_EQ(nameOf("ZZZ"), "");
    const ScopedCodePage western(1252);
    EXPECT_EQ(nameOf("FRA"), "Fran\xE7"
                             "ais (France)");
    EXPECT_EQ(nameOf("JPN"), "Japanese (Japan)");
}

} // namespace

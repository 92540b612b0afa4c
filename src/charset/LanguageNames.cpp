// The table is the published one of Windows' national language support (LOCALE_SABBREVLANGNAME; the
// identifiers of Microsoft's [MS-LCID]), keyed by the names that POSIX locales have.
#include "src/charset/LanguageNames.h"

#include "src/charset/CodePage.h"

#include <unicode/uchar.h>
#include <unicode/uloc.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace vnbytstr {

namespace {

struct Name {
    std::string_view locale;
    std::string_view code;
};

// The main country of a language is the first of it.
// clang-format off
constexpr Name kNames[] = {
    {"af_ZA", "AFK"},
    {"am_ET", "AMH"},
    {"ar_SA", "ARA"},
    {"ar_AE", "ARU"},
    {"ar_BH", "ARH"},
    {"ar_DZ", "ARG"},
    {"ar_EG", "ARE"},
    {"ar_IQ", "ARI"},
    {"ar_JO", "ARJ"},
    {"ar_KW", "ARK"},
    {"ar_LB", "ARB"},
    {"ar_LY", "ARL"},
    {"ar_MA", "ARM"},
    {"ar_OM", "ARO"},
    {"ar_QA", "ARQ"},
    {"ar_SY", "ARS"},
    {"ar_TN", "ART"},
    {"ar_YE", "ARY"},
    {"arn_CL", "MPD"},
    {"as_IN", "ASM"},
    {"az_AZ", "AZE"},
    {"az_AZ@cyrillic", "AZC"},
    {"ba_RU", "BAS"},
    {"be_BY", "BEL"},
    {"bg_BG", "BGR"},
    {"bn_IN", "BNG"},
    {"bn_BD", "BNB"},
    {"bo_CN", "BOB"},
    {"br_FR", "BRE"},
    {"bs_BA", "BSB"},
    {"bs_BA@cyrillic", "BSC"},
    {"ca_ES", "CAT"},
    {"ca_ES@valencia", "VAL"},
    {"co_FR", "COS"},
    {"cs_CZ", "CSY"},
    {"cy_GB", "CYM"},
    {"da_DK", "DAN"},
    {"de_DE", "DEU"},
    {"de_AT", "DEA"},
    {"de_CH", "DES"},
    {"de_LI", "DEC"},
    {"de_LU", "DEL"},
    {"dsb_DE", "DSB"},
    {"dv_MV", "DIV"},
    {"el_GR", "ELL"},
    {"en_US", "ENU"},
    {"en_AU", "ENA"},
    {"en_BZ", "ENL"},
    {"en_CA", "ENC"},
    {"en_GB", "ENG"},
    {"en_IE", "ENI"},
    {"en_IN", "ENN"},
    {"en_JM", "ENJ"},
    {"en_MY", "ENM"},
    {"en_NZ", "ENZ"},
    {"en_PH", "ENP"},
    {"en_SG", "ENE"},
    {"en_TT", "ENT"},
    {"en_ZA", "ENS"},
    {"en_ZW", "ENW"},
    {"es_ES", "ESN"},
    {"es_AR", "ESS"},
    {"es_BO", "ESB"},
    {"es_CL", "ESL"},
    {"es_CO", "ESO"},
    {"es_CR", "ESC"},
    {"es_DO", "ESD"},
    {"es_EC", "ESF"},
    {"es_GT", "ESG"},
    {"es_HN", "ESH"},
    {"es_MX", "ESM"},
    {"es_NI", "ESI"},
    {"es_PA", "ESA"},
    {"es_PE", "ESR"},
    {"es_PR", "ESU"},
    {"es_PY", "ESZ"},
    {"es_SV", "ESE"},
    {"es_US", "EST"},
    {"es_UY", "ESY"},
    {"es_VE", "ESV"},
    {"et_EE", "ETI"},
    {"eu_ES", "EUQ"},
    {"fa_IR", "FAR"},
    {"fi_FI", "FIN"},
    {"fil_PH", "FPO"},
    {"fo_FO", "FOS"},
    {"fr_FR", "FRA"},
    {"fr_BE", "FRB"},
    {"fr_CA", "FRC"},
    {"fr_CH", "FRS"},
    {"fr_LU", "FRL"},
    {"fr_MC", "FRM"},
    {"fy_NL", "FYN"},
    {"ga_IE", "IRE"},
    {"gd_GB", "GLA"},
    {"gl_ES", "GLC"},
    {"gsw_FR", "GSW"},
    {"gu_IN", "GUJ"},
    {"ha_NG", "HAU"},
    {"he_IL", "HEB"},
    {"hi_IN", "HIN"},
    {"hr_HR", "HRV"},
    {"hr_BA", "HRB"},
    {"hsb_DE", "HSB"},
    {"hu_HU", "HUN"},
    {"hy_AM", "HYE"},
    {"id_ID", "IND"},
    {"ig_NG", "IBO"},
    {"ii_CN", "III"},
    {"is_IS", "ISL"},
    {"it_IT", "ITA"},
    {"it_CH", "ITS"},
    {"iu_CA@latin", "IUK"},
    {"iu_CA", "IUS"},
    {"ja_JP", "JPN"},
    {"ka_GE", "KAT"},
    {"kk_KZ", "KKZ"},
    {"kl_GL", "KAL"},
    {"km_KH", "KHM"},
    {"kn_IN", "KDI"},
    {"ko_KR", "KOR"},
    {"kok_IN", "KNK"},
    {"ky_KG", "KYR"},
    {"lb_LU", "LBX"},
    {"lo_LA", "LAO"},
    {"lt_LT", "LTH"},
    {"lv_LV", "LVI"},
    {"mi_NZ", "MRI"},
    {"mk_MK", "MKI"},
    {"ml_IN", "MYM"},
    {"mn_MN", "MNN"},
    {"mn_CN", "MNG"},
    {"moh_CA", "MWK"},
    {"mr_IN", "MAR"},
    {"ms_MY", "MSL"},
    {"ms_BN", "MSB"},
    {"mt_MT", "MLT"},
    {"nb_NO", "NOR"},
    {"ne_NP", "NEP"},
    {"nl_NL", "NLD"},
    {"nl_BE", "NLB"},
    {"nn_NO", "NON"},
    {"nso_ZA", "NSO"},
    {"oc_FR", "OCI"},
    {"or_IN", "ORI"},
    {"pa_IN", "PAN"},
    {"pl_PL", "PLK"},
    {"prs_AF", "PRS"},
    {"ps_AF", "PAS"},
    {"pt_BR", "PTB"},
    {"pt_PT", "PTG"},
    {"qut_GT", "QUT"},
    {"quz_PE", "QUP"},
    {"quz_BO", "QUB"},
    {"quz_EC", "QUE"},
    {"rm_CH", "RMC"},
    {"ro_RO", "ROM"},
    {"ru_RU", "RUS"},
    {"rw_RW", "KIN"},
    {"sa_IN", "SAN"},
    {"sah_RU", "SAH"},
    {"se_NO", "SME"},
    {"se_FI", "SMG"},
    {"se_SE", "SMF"},
    {"si_LK", "SIN"},
    {"sk_SK", "SKY"},
    {"sl_SI", "SLV"},
    {"sma_NO", "SMA"},
    {"sma_SE", "SMB"},
    {"smj_NO", "SMJ"},
    {"smj_SE", "SMK"},
    {"smn_FI", "SMN"},
    {"sms_FI", "SMS"},
    {"sq_AL", "SQI"},
    {"sr_RS", "SRO"},
    {"sr_RS@latin", "SRM"},
    {"sr_BA", "SRN"},
    {"sr_BA@latin", "SRS"},
    {"sr_CS", "SRB"},
    {"sr_CS@latin", "SRL"},
    {"sr_ME", "SRQ"},
    {"sr_ME@latin", "SRP"},
    {"sv_SE", "SVE"},
    {"sv_FI", "SVF"},
    {"sw_KE", "SWK"},
    {"syr_SY", "SYR"},
    {"ta_IN", "TAM"},
    {"te_IN", "TEL"},
    {"tg_TJ", "TAJ"},
    {"th_TH", "THA"},
    {"tk_TM", "TUK"},
    {"tn_ZA", "TSN"},
    {"tr_TR", "TRK"},
    {"tt_RU", "TTT"},
    {"tzm_DZ", "TZM"},
    {"ug_CN", "UIG"},
    {"uk_UA", "UKR"},
    {"ur_PK", "URD"},
    {"uz_UZ", "UZB"},
    {"uz_UZ@cyrillic", "UZC"},
    {"vi_VN", "VIT"},
    {"wo_SN", "WOL"},
    {"xh_ZA", "XHO"},
    {"yo_NG", "YOR"},
    {"zh_CN", "CHS"},
    {"zh_HK", "ZHH"},
    {"zh_MO", "ZHM"},
    {"zh_SG", "ZHI"},
    {"zh_TW", "CHT"},
    {"zu_ZA", "ZUL"},
};
// clang-format on

/// Languages under another name than the table's.
constexpr std::array<std::array<std::string_view, 2>, 5> kAliases = {
    {{"no", "nb"}, {"iw", "he"}, {"in", "id"}, {"tl", "fil"}, {"sh", "sr"}}};

std::string_view LanguageOf(std::string_view locale) {
    return locale.substr(0, locale.find_first_of("_@"));
}

std::string_view CodeOf(std::string_view locale) {
    const auto* found = std::find_if(std::begin(kNames), std::end(kNames),
                                     [&](const Name& name) { return name.locale == locale; });
    return found != std::end(kNames) ? found->code : std::string_view();
}

std::u16string DisplayName(const std::string& locale, const char* inLocale) {
    std::array<UChar, 256> name;
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = uloc_getDisplayName(locale.c_str(), inLocale, name.data(),
                                               static_cast<int32_t>(name.size()), &status);
    return U_FAILURE(status) ? std::u16string()
                             : std::u16string(name.data(), static_cast<std::size_t>(length));
}

void CapitalizeFirst(std::u16string& text) {
    if (text.empty() || U16_IS_SURROGATE(text[0]))
        return;
    const UChar32 title = u_totitle(text[0]);
    if (U_IS_BMP(title))
        text[0] = static_cast<char16_t>(title);
}

/// The ICU name of a locale of the table: the script takes the place of the modifier.
std::string IcuLocale(const std::string& locale) {
    const std::size_t at = locale.find('@');
    if (at == std::string::npos)
        return locale;
    const std::string modifier = locale.substr(at + 1);
    const std::string place = locale.substr(0, at);
    if (modifier == "valencia")
        return place + "_VALENCIA";
    const std::size_t bar = place.find('_');
    return place.substr(0, bar) + (modifier == "latin" ? "_Latn" : "_Cyrl") + place.substr(bar);
}

} // namespace

std::string AbbreviatedLanguageName(std::string_view locale) {
    const std::size_t at = locale.find('@');
    std::string modifier(at != std::string_view::npos ? locale.substr(at) : "");
    std::string name(locale.substr(0, locale.find_first_of(".@")));
    if (name.empty() || name == "C" || name == "POSIX")
        return "ENU";
    for (const auto& [alias, language] : kAliases) {
        if (LanguageOf(name) != alias)
            continue;
        if (alias == "sh")
            modifier = "@latin";
        name.replace(0, alias.size(), language);
        break;
    }
    if (const std::string_view code = CodeOf(name + modifier); !code.empty())
        return std::string(code);
    if (const std::string_view code = CodeOf(name); !code.empty())
        return std::string(code);
    for (const Name& each : kNames) {
        if (LanguageOf(each.locale) == LanguageOf(name))
            return std::string(each.code);
    }
    return "ZZZ";
}

std::string LocaleOfLanguage(std::string_view code) {
    const auto* found = std::find_if(std::begin(kNames), std::end(kNames),
                                     [&](const Name& name) { return name.code == code; });
    return found != std::end(kNames) ? std::string(found->locale) : std::string();
}

std::string LanguageDisplayName(const std::string& locale) {
    if (locale.empty())
        return {};
    const std::string icu = IcuLocale(locale);
    std::u16string native = DisplayName(icu, icu.c_str());
    CapitalizeFirst(native);
    const CodePage& page = CodePage::Ansi();
    std::string text = page.FromWide(native);
    if (!native.empty() && page.ToWide(text) == native)
        return text;
    return page.FromWide(DisplayName(icu, "en_US"));
}

} // namespace vnbytstr

#include "src/globals/BuiltInVars.h"

#include "src/charset/CodePage.h"
#include "src/charset/Collation.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>

namespace vnbytstr::detail {

namespace {

using Kind = VariableRule::Kind;

constexpr VariableRule kText{};
constexpr VariableRule kNonEmpty{Kind::NonEmpty};
constexpr VariableRule kCharacter{Kind::OneCharacter};
constexpr VariableRule kSwitch{Kind::Number, 0, 1};
constexpr LONG kNoEnd = std::numeric_limits<LONG>::max();

constexpr VariableRule Number(LONG least, LONG most) { return {Kind::Number, least, most}; }

constexpr BuiltInVar Kept(const char* name, const char* value, VariableRule rule) {
    return {name, value, rule, true, false};
}
constexpr BuiltInVar Fresh(const char* name, const char* value, VariableRule rule) {
    return {name, value, rule, false, true};
}

constexpr BuiltInVar kBuiltIns[] = {
    Fresh("TLXAO_BATCH", "1", Number(1, 2)),
    Fresh("TLXAO_CONNECT_ID", " ", kText),
    Fresh("TLXAO_CURSOR_OPEN", "2", Number(1, 2)),
    Fresh("TLXAO_DBCS", nullptr, kSwitch),
    Fresh("TLXAO_NLF_LANG", nullptr, kText),
    Fresh("TLXAO_NUM_FETCHED", "0", Number(0, kNoEnd)),
    Fresh("TLXAO_OBJ_NAME", " ", kText),
    Fresh("TLXAO_OBJ_OWNER", " ", kText),
    Fresh("TLXAO_PZR_RELEASE", "14", Number(0, kNoEnd)),
    Fresh("TLXAO_PZR_VER_RLS", "PZR V8R1.0", kText),
    Fresh("TLXAO_QRY_SUBTYPE", "1", Number(0, 9)),
    Fresh("TLXAO_QUERY_MODEL", "1", Number(0, 9)),
    Fresh("TLXAO_SYSTEM_ID", "LINUX", kText),
    Kept("TLXCP_TEDFLT", "+", kNonEmpty),
    Kept("TLXCP_TENULL", "-", kNonEmpty),
    Kept("TLXDC_CURRENCY", "", kText),
    Kept("TLXDC_DISPLAY_RPT", "0", kSwitch),
    Kept("TLXDC_LIST_ORDER", "1", Number(1, 5)),
    Kept("TLXEC_FORM_LANG", "1", kSwitch),
    Kept("TLXEC_NLFCMD_LANG", "0", kSwitch),
    Kept("TLXEC_RESET_RPT", "0", Number(0, 2)),
    Kept("TLXEC_SHARE", "1", kSwitch),
    Kept("TLXEC_SP_RS_NUM", "-1", Number(-1, kNoEnd)),
    Fresh("TLXQW_AUTOMATION", "0", kSwitch),
    Kept("TLXQW_CONF_AUTOC", "1", kSwitch),
    Kept("TLXQW_CONNECTIONS", "0", Number(0, kNoEnd)),
    Fresh("TLXQW_DQ", "\"", kCharacter),
    Kept("TLXQW_EXP_DT_FRMT", "0", Number(0, 9)),
    Kept("TLXQW_EXP_OUT_MDE", "1", Number(0, 2)),
    Kept("TLXQW_FST_SV_DATA", "0", kSwitch),
    Kept("TLXQW_HTML_REFTXT", nullptr, kText),
    Fresh("TLXQW_ORIENTATION", "0", kSwitch),
    Kept("TLXQW_PRINT_OUTPUT", "", kText),
    Kept("TLXQW_PROC_OUTPUT", "", kText),
    Kept("TLXQW_PROC_WNDWS", "1", kSwitch),
    Kept("TLXQW_QUERY_LANG", "0", Number(0, 2)),
    Kept("TLXQW_QUERY_PREP", "0", kSwitch),
    Kept("TLXQW_REUSE_OBJS", "0", kSwitch),
    Kept("TLXQW_RPT_COPIES", "1", Number(1, 9999)),
    Kept("TLXQW_RPT_FONT", nullptr, kNonEmpty),
    Kept("TLXQW_RPT_FONT_BD", nullptr, kSwitch),
    Kept("TLXQW_RPT_FONT_CS", nullptr, Number(0, 255)),
    Kept("TLXQW_RPT_FONT_IT", nullptr, kSwitch),
    Kept("TLXQW_RPT_FONT_SZ", nullptr, Number(1, 1638)),
    Kept("TLXQW_RPT_LEN_TYP", "0", Number(0, 2)),
    Kept("TLXQW_RPT_NUM_CHR", "80", Number(1, 32767)),
    Kept("TLXQW_RPT_NUM_LNS", "60", Number(1, 32767)),
    Kept("TLXQW_RPT_ORIENT", "0", kSwitch),
    Kept("TLXQW_RPT_OUT_TYP", "0", Number(0, 2)),
    Kept("TLXQW_RPT_USE_PS", "1", kSwitch),
    Kept("TLXQW_RPT_WID_TYP", "0", Number(0, 2)),
    Kept("TLXQW_RPT_TD_TYP", "0", Number(0, 9)),
    Kept("TLXQW_RPT_TT_TYP", "0", Number(0, 9)),
    Kept("TLXQW_SHOW_QUERY", "0", kSwitch),
    Fresh("TLXQW_SQ", "'", kCharacter),
    Kept("TLXQW_STRIP_SPACE", "1", kSwitch),
    Kept("TLXQW_SV_DATA_C_S", "0", kSwitch),
    Kept("TLXQW_SV_DATA_T_M", "1", Number(0, 2)),
    Kept("TLXQW_UEDIT_DLL", "vnuedit.dll", kText),
};
static_assert(std::size(kBuiltIns) == kBuiltInCount - 1);

/// Names that the host's command language has.
constexpr const char* kReservedNames[] = {
    "TLXAP_CASE",        "TLXAP_CONFIRM",     "TLXAP_DECIMAL",     "TLXAP_LENGTH",
    "TLXAP_PFKEY_TABLE", "TLXAP_PRINTER",     "TLXAP_QUERY_LANG",  "TLXAP_QUERY_MODEL",
    "TLXAP_RESOURC_GRP", "TLXAP_SPACE",       "TLXAP_SYNONYM_TBL", "TLXAP_TRACE",
    "TLXAP_WIDTH",       "TLXAO_APPL_TRACE",  "TLXAO_FORM_PANEL",  "TLXAO_INTERACT",
    "TLXAO_LOCAL_DB2",   "TLXAO_LOCATION",    "TLXAO_ATTENTION",   "TLXAO_PANEL_TYPE",
    "TLXAO_SUBSYS_ID",   "TLXAO_VARIATION",   "TLXQM_MESSAGE",     "TLXQM_MSG_HELP",
    "TLXQM_MSG_NUMBER",  "TLXQM_SUB_TXT",     "TLXQM_SQL_RC",      "TLXQM_SQL_STATE",
    "TLXQM_SUBST_VARS",  "TLXCM_MESSAGE",     "TLXCM_MSG_HELP",    "TLXCM_MSG_NUMBER",
    "TLXCM_SUB_TXT",     "TLXCM_SUBST_VARS",  "TLXCP_TEADD",       "TLXCP_TECHG",
    "TLXCP_TEDEL",       "TLXCP_TEDFLT_DBCS", "TLXCP_TENULL_DBCS", "TLXCP_TEMOD",
    "TLXDC_COST_EST",    "TLXDC_SHOW_PANID",  "TLXEC_ALIASES",     "TLXEC_COLS_LDB2",
    "TLXEC_COLS_RDB2",   "TLXEC_COLS_SQL",    "TLXEC_ISOLATION",   "TLXEC_TABS_LDB2",
    "TLXEC_TABS_RDB2",   "TLXEC_TABS_SQL",    "TLXEC_RERUN_IPROC", "TLXQC_LENGTH",
    "TLXQC_QRY_COUNT",   "TLXQC_QRY_LANG",    "TLXQC_QRY_TYPE",    "TLXQC_RESULT",
};

std::string NameKey(const Collation& collation, std::string_view name) {
    std::string key;
    AppendNameKey(collation, name, key);
    return key;
}

using NameTable = std::unordered_map<std::string, KnownName>;

NameTable MakeNames(const Collation& collation) {
    NameTable names;
    for (int id = 1; id < kBuiltInCount; ++id)
        names.emplace(NameKey(collation, FindBuiltIn(id)->name), KnownName{id, false});
    for (const char* name : kReservedNames)
        names.emplace(NameKey(collation, name), KnownName{0, true});
    return names;
}

/// One for each locale in use; outside tests there is only one.
const NameTable& NamesOf(const Collation& collation) {
    static std::mutex mutex;
    static auto* const known = new std::map<const Collation*, NameTable>;
    const std::lock_guard lock(mutex);
    const auto found = known->find(&collation);
    return found != known->end() ? found->second
                                 : known->emplace(&collation, MakeNames(collation)).first->second;
}

} // namespace

const BuiltInVar* FindBuiltIn(int id) noexcept {
    return id > 0 && id < kBuiltInCount ? &kBuiltIns[id - 1] : nullptr;
}

void AppendNameKey(const Collation& collation, std::string_view name, std::string& key) {
    const bool isPlain = std::all_of(name.begin(), name.end(), [](char c) {
        return c != 'i' && static_cast<unsigned char>(c) < 0x80;
    });
    if (isPlain) { // no letter with another upper case
        collation.AppendKey(name, key);
        return;
    }
    const CodePage& page = CodePage::Ansi();
    std::string upper;
    const char* const end = name.data() + name.size();
    for (const char* p = name.data(); p < end;) {
        const std::string_view one(p, page.CharLength(p, end));
        p += one.size();
        const std::u16string wide = one.size() > 1 ? page.ToWide(one) : std::u16string();
        if (one == "i" || wide == u"\xFF49" || wide == u"\xFF29") // in full width, too
            upper += 'I';
        else
            upper += one;
    }
    collation.AppendKey(upper, key);
}

KnownName FindKnownName(std::string_view name) {
    const Collation& collation = Collation::Current();
    const NameTable& names = NamesOf(collation);
    const auto found = names.find(NameKey(collation, name));
    return found != names.end() ? found->second : KnownName{};
}

int VariableRule::FirstMisfit(std::string_view value) const {
    switch (kind) {
    case Kind::AnyText:
        return -1;
    case Kind::NonEmpty:
        return value.empty() ? 0 : -1;
    case Kind::OneCharacter: {
        if (value.empty())
            return 0;
        const std::size_t length =
            CodePage::Ansi().CharLength(value.data(), value.data() + value.size());
        return length == value.size() ? -1 : static_cast<int>(length);
    }
    case Kind::Number:
        break;
    }
    LONG number = 0;
    const char* const end = value.data() + value.size();
    const auto [rest, error] = std::from_chars(value.data(), end, number);
    if (error == std::errc::result_out_of_range)
        return 0;
    if (error != std::errc())
        return value.starts_with('-') ? 1 : 0;
    if (rest != end)
        return static_cast<int>(rest - value.data());
    return number >= least && number <= most ? -1 : 0;
}

} // namespace vnbytstr::detail

// Defaults, what the profile keeps, and texts from the resource libraries.
#include "src/charset/CodePage.h"
#include "tests/globals/TableFixture.h"
#include "vnbytstr/Language.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <map>
#include <random>
#include <set>

using enum CGlobalVars::EStatus;
using vnbytstr::test::Call;
using vnbytstr::test::Fault;

namespace {

const std::map<std::string, std::string> kKept = {{"TLXQW_QUERY_LANG", "0"},
                                                  {"TLXQW_QUERY_PREP", "0"},
                                                  {"TLXQW_PRINT_OUTPUT", ""},
                                                  {"TLXQW_PROC_OUTPUT", ""},
                                                  {"TLXEC_SHARE", "1"},
                                                  {"TLXEC_SP_RS_NUM", "-1"},
                                                  {"TLXQW_SHOW_QUERY", "0"},
                                                  {"TLXQW_SV_DATA_C_S", "0"},
                                                  {"TLXQW_SV_DATA_T_M", "1"},
                                                  {"TLXQW_STRIP_SPACE", "1"},
                                                  {"TLXQW_UEDIT_DLL", "vnuedit.dll"},
                                                  {"TLXQW_PROC_WNDWS", "1"},
                                                  {"TLXQW_REUSE_OBJS", "0"},
                                                  {"TLXQW_RPT_USE_PS", "1"},
                                                  {"TLXQW_RPT_OUT_TYP", "0"},
                                                  {"TLXQW_RPT_LEN_TYP", "0"},
                                                  {"TLXQW_RPT_WID_TYP", "0"},
                                                  {"TLXQW_RPT_NUM_LNS", "60"},
                                                  {"TLXQW_RPT_NUM_CHR", "80"},
                                                  {"TLXQW_RPT_COPIES", "1"},
                                                  {"TLXQW_CONNECTIONS", "0"},
                                                  {"TLXQW_FST_SV_DATA", "0"},
                                                  {"TLXQW_RPT_ORIENT", "0"},
                                                  {"TLXQW_RPT_TD_TYP", "0"},
                                                  {"TLXQW_RPT_TT_TYP", "0"},
                                                  {"TLXEC_RESET_RPT", "0"},
                                                  {"TLXQW_EXP_DT_FRMT", "0"},
                                                  {"TLXQW_EXP_OUT_MDE", "1"},
                                                  {"TLXQW_CONF_AUTOC", "1"},
                                                  {"TLXCP_TEDFLT", "+"},
                                                  {"TLXCP_TENULL", "-"},
                                                  {"TLXDC_DISPLAY_RPT", "0"},
                                                  {"TLXDC_LIST_ORDER", "1"},
                                                  {"TLXDC_CURRENCY", ""},
                                                  {"TLXEC_FORM_LANG", "1"},
                                                  {"TLXEC_NLFCMD_LANG", "0"},
                                                  {"TLXQW_RPT_FONT", "CourierNew"},
                                                  {"TLXQW_RPT_FONT_SZ", "10"},
                                                  {"TLXQW_RPT_FONT_BD", "0"},
                                                  {"TLXQW_RPT_FONT_IT", "0"},
                                                  {"TLXQW_RPT_FONT_CS", "1"},
                                                  {"TLXQW_HTML_REFTXT", "View data"}};

const std::map<std::string, std::string> kFresh = {
    {"TLXAO_BATCH", "1"},        {"TLXQW_AUTOMATION", "0"},
    {"TLXQW_SQ", "'"},           {"TLXQW_DQ", "\""},
    {"TLXQW_ORIENTATION", "0"},  {"TLXAO_CURSOR_OPEN", "2"},
    {"TLXAO_CONNECT_ID", " "},   {"TLXAO_NLF_LANG", "English"},
    {"TLXAO_NUM_FETCHED", "0"},  {"TLXAO_OBJ_NAME", " "},
    {"TLXAO_OBJ_OWNER", " "},    {"TLXAO_PZR_RELEASE", "14"},
    {"TLXAO_QRY_SUBTYPE", "1"},  {"TLXAO_PZR_VER_RLS", "PZR V8R1.0"},
    {"TLXAO_DBCS", "1"},         {"TLXAO_QUERY_MODEL", "1"},
    {"TLXAO_SYSTEM_ID", "LINUX"}};

class GlobalVarsProfile : public vnbytstr::test::TableFixture {
protected:
    GlobalVarsProfile() { VNWriteProfileString(3, "Options", "UILanguage", "ENU"); }
    static std::map<std::string, std::string> Section() {
        std::map<std::string, std::string> values;
        CProfileSectionKey key;
        VNGetProfileSectionKey(3, "Global Variables", key);
        for (int i = 0; i < key.GetCount(); ++i)
            values.emplace(key.GetName(i), key.GetString(i));
        return values;
    }

private:
    vnbytstr::ScopedCodePage m_page{65001};
};

TEST_F(GlobalVarsProfile, DefaultsAreSavedAndFreshOnesAreNot) {
    CGlobalVars table;
    EXPECT_EQ(table.SaveToRegistry(), NotInitialized);
    table.Initialize();
    EXPECT_EQ(kKept.size() + kFresh.size(), 59u);
    for (const auto& defaults : {kKept, kFresh})
        for (const auto& [name, value] : defaults)
            EXPECT_EQ(Value(table, name.c_str()), value) << name;
    EXPECT_EQ(table.GetGlobalStrings().m_strLanguage, "English");
    EXPECT_EQ(table.SaveToRegistry(), Success);
    EXPECT_EQ(Section(), kKept);
    const vnbytstr::ScopedCodePage scope(1252);
    table.Initialize();
    EXPECT_EQ(Value(table, "TLXAO_DBCS"), "0");
}

TEST_F(GlobalVarsProfile, ReportFontIsOneTheSystemHas) {
    VNWriteProfileString(1, "Form Fonts", "DefaultFormFontName", "Some Font");
    VNWriteProfileDWORD(1, "Form Fonts", "DefaultFormFontSize", 12);
    VNWriteProfileDWORD(1, "Form Fonts", "DefaultFormFontBold", 700);
    VNWriteProfileDWORD(1, "Form Fonts", "DefaultFormFontCharSet", 0xFFFFFFFF);
    CGlobalVars table;
    table.Initialize();
    EXPECT_EQ(Value(table, "TLXQW_RPT_FONT"), "Some Font"); // the system does not know
    m_system.SetFontFamily("Liberation Mono");
    table.Initialize();
    EXPECT_EQ(Value(table, "TLXQW_RPT_FONT"), "Liberation Mono");
    EXPECT_EQ(Value(table, "TLXQW_RPT_FONT_SZ"), "12");
    EXPECT_EQ(Value(table, "TLXQW_RPT_FONT_BD"), "1");
    EXPECT_EQ(Value(table, "TLXQW_RPT_FONT_IT"), "0");
    EXPECT_EQ(Value(table, "TLXQW_RPT_FONT_CS"), "1");
    VNWriteProfileString(3, "Global Variables", "TLXQW_RPT_FONT", "Mine");
    table.Initialize();
    EXPECT_EQ(Value(table, "TLXQW_RPT_FONT"), "Mine");
}

TEST_F(GlobalVarsProfile, UserVariablesComeBackWhenTheyAreKept) {
    KeepUserVariables();
    VNWriteProfileString(3, "Global Variables", "LEFTOVER", "1");
    CGlobalVars table;
    table.Initialize();
    const CString leftover = "leftover";
    EXPECT_EQ(Value(table, leftover), "1");
    EXPECT_EQ(table.DeleteGlobalVariable(&leftover), Success);
    VNWriteProfileString(3, "Global Variables", "STRANGER", "1");
    std::mt19937 random(6);
    std::map<std::string, std::string> wanted = kKept;
    for (const char first : std::string("AZ$~{}?@#%\\"))
        for (const char next : std::string("B0_$~{}?@#%\\")) {
            const std::string name = {first, next};
            std::string value(random() % 40, '\0');
            for (char& c : value)
                c = static_cast<char>(1 + random() % 255);
            if (name == "AB")
                value = "'"; // adding makes the empty text of it, setting does not
            EXPECT_EQ(Add(table, name.c_str()), Success) << name;
            EXPECT_EQ(Set(table, name.c_str(), value.c_str()), Success);
            wanted[name] = value;
        }
    EXPECT_EQ(table.SaveToRegistry(), Success);
    EXPECT_EQ(Section(), wanted); // without the stranger
    CGlobalVars again;
    again.Initialize();
    ASSERT_EQ(again.GetSize(), table.GetSize());
    for (int i = 0; i < table.GetSize(); ++i) {
        CString name, value, againName, againValue;
        table.GetGlobalVariable(i, name, value);
        again.GetGlobalVariable(i, againName, againValue);
        if (name != "TLXAO_NLF_LANG") {
            EXPECT_EQ(name, againName);
            EXPECT_EQ(value, againValue);
        }
    }
}

TEST_F(GlobalVarsProfile, WithoutThatOnlyBuiltInOnesAreWritten) {
    VNWriteProfileString(3, "Global Variables", "OTHER", "1");
    CGlobalVars table;
    table.Initialize();
    EXPECT_EQ(table.GetSize(), 60);
    Add(table, "MINE", "1");
    Set(table, "TLXCP_TENULL", "NULL");
    m_system.Inject(Fault{.call = Call::Rename, .error = EIO});
    EXPECT_EQ(table.SaveToRegistry(), NotSaved);
    m_system.Inject({});
    EXPECT_EQ(Section().size(), 1u);
    EXPECT_EQ(table.SaveToRegistry(), Success);
    auto wanted = kKept;
    wanted["TLXCP_TENULL"] = "NULL";
    wanted["OTHER"] = "1";
    EXPECT_EQ(Section(), wanted);
}

TEST_F(GlobalVarsProfile, ValuesOfAnyKindInTheFile) {
    std::string text = "[3/Options]\nSaveGlobals=1\nUILanguage=ENU\n[3/Global Variables]\n"
                       "TLXQW_RPT_NUM_LNS=many\nTLXQW_RPT_COPIES=99999999999\nTLXCP_TENULL=\n"
                       "TLXQW_RPT_FONT=\nTLXQW_HTML_REFTXT=\nTLXEC_SHARE=0\nTLXAO_BATCH=2\n"
                       "tlxec_share=1\nTLXAP_CASE=1\nTLX_NEW=1\n1BAD=1\nmyvar=low\nMYVAR=high\n"
                       "NOTEXT=%FF%FE%01\n";
    for (int i = 0; i < 100000; ++i)
        text += "VAR" + std::to_string(i) + "=" + std::to_string(i) + "\n";
    m_folder.Write("profile.ini", text);
    NextTick();
    CGlobalVars table;
    table.Initialize();
    EXPECT_EQ(table.GetSize(), 60 + 2 + 100000);
    for (const char* name : {"TLXQW_RPT_NUM_LNS", "TLXQW_RPT_COPIES", "TLXCP_TENULL",
                             "TLXQW_RPT_FONT", "TLXQW_HTML_REFTXT"})
        EXPECT_EQ(Value(table, name), kKept.at(name));
    EXPECT_EQ(Value(table, "TLXEC_SHARE"), "0");
    EXPECT_EQ(Value(table, "TLXAO_BATCH"), "1");
    EXPECT_EQ(Value(table, "MyVar"), "high");
    EXPECT_EQ(Value(table, "NOTEXT"), "\xFF\xFE\x01");
    EXPECT_EQ(Value(table, "VAR99999"), "99999");
    EXPECT_EQ(table.SaveToRegistry(), Success);
    EXPECT_EQ(Section().size(), kKept.size() + 2 + 100000);
}

TEST_F(GlobalVarsProfile, AKilledSaveLeavesTheOldFileOrTheNew) {
    KeepUserVariables();
    CGlobalVars table;
    table.Initialize();
    for (int i = 0; i < 200; ++i)
        Add(table, ("V" + std::to_string(i)).c_str(), "A");
    const auto fill = [&table](const char* value) {
        for (int i = 0; i < 200; ++i)
            Set(table, ("V" + std::to_string(i)).c_str(), value);
    };
    EXPECT_EQ(table.SaveToRegistry(), Success);
    const char* const wish = std::getenv("VNBYTSTR_TEST_KILLS");
    const int kills = wish ? std::atoi(wish) : 500;
    std::mt19937 random(7);
    for (int kill = 0; kill < kills; ++kill) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            for (bool odd = true;; odd = !odd) {
                fill(odd ? "B" : "A");
                table.SaveToRegistry();
            }
        ::usleep(static_cast<useconds_t>(random() % 4000));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        NextTick();
        const auto section = Section();
        ASSERT_EQ(section.size(), kKept.size() + 200);
        for (const auto& [name, value] : section) {
            ASSERT_TRUE(!name.starts_with('V') || value == section.at("V0")) << name;
        }
        fill(kill % 2 ? "A" : "C"); // and nothing is left that hinders the next one
        ASSERT_EQ(table.SaveToRegistry(), Success);
    }
}

TEST_F(GlobalVarsProfile, OfTwoProcessesThatSaveTheLaterOnesTableStays) {
    KeepUserVariables();
    CGlobalVars table;
    table.Initialize();
    constexpr int kRounds = 100;
    const std::vector<std::string> names = {"TLXDC_CURRENCY", "TLXQW_PRINT_OUTPUT"};
    std::vector<pid_t> children;
    for (const std::string& own : names) {
        children.push_back(::fork());
        ASSERT_GE(children.back(), 0);
        if (children.back() == 0) {
            bool saved = Add(table, ("OWN" + own.substr(3)).c_str(), "1") == Success;
            for (int i = 0; i < kRounds; ++i) {
                const std::string key = own + std::to_string(i);
                saved &= VNWriteProfileDWORD(3, "Keys", key.c_str(), 1) == TRUE;
                Set(table, own.c_str(), key.c_str());
                saved &= table.SaveToRegistry() == Success;
            }
            ::_exit(saved ? 0 : 1);
        }
    }
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    NextTick();
    CProfileSectionKey keys;
    VNGetProfileSectionKey(3, "Keys", keys);
    EXPECT_EQ(keys.GetCount(), 2 * kRounds); // single settings are never lost
    std::vector<std::map<std::string, std::string>> tables;
    for (const std::string& own : names) {
        tables.push_back(kKept);
        tables.back()[own] = own + std::to_string(kRounds - 1);
        tables.back()["OWN" + own.substr(3)] = "1";
    }
    // The whole table of one of the two, its own variables among them.
    EXPECT_TRUE(Section() == tables[0] || Section() == tables[1]);
}

TEST_F(GlobalVarsProfile, OneThatIsSetAsideDoesNotReplaceTheOrdinaryOne) {
    KeepUserVariables();
    CGlobalVars table;
    table.Initialize();
    Add(table, "TWICE", "ordinary");
    EXPECT_EQ(table.SetGlobalVariableFlag(60, 1), Success);
    Add(table, "TWICE", "set aside");
    EXPECT_EQ(table.SetGlobalVariableFlag(61, 1), Success);
    EXPECT_EQ(table.SetGlobalVariableFlag(60, 0), Success);
    Add(table, "ALONE", "set aside");
    EXPECT_EQ(table.SetGlobalVariableFlag(62, 1), Success);
    EXPECT_EQ(table.SaveToRegistry(), Success);
    EXPECT_EQ(Section()["TWICE"], "ordinary");
    EXPECT_EQ(Section()["ALONE"], "set aside");
}

TEST_F(GlobalVarsProfile, ValuesOfAnotherVersionStayUntilTheyAreChanged) {
    const std::map<std::string, std::string> strange = {{"TLXQW_QUERY_LANG", "3"},
                                                        {"TLXDC_LIST_ORDER", "9"}};
    for (const bool keepsUsers : {false, true}) {
        VNWriteProfileDWORD(3, "Options", "SaveGlobals", keepsUsers);
        for (const auto& [name, value] : strange)
            VNWriteProfileString(3, "Global Variables", name.c_str(), value.c_str());
        CGlobalVars table;
        table.Initialize();
        EXPECT_EQ(Value(table, "TLXQW_QUERY_LANG"), "0");
        EXPECT_EQ(Set(table, "TLXDC_LIST_ORDER", "2"), Success);
        EXPECT_EQ(table.SaveToRegistry(), Success);
        auto wanted = kKept;
        wanted["TLXQW_QUERY_LANG"] = "3";
        wanted["TLXDC_LIST_ORDER"] = "2";
        EXPECT_EQ(Section(), wanted);
    }
}

TEST_F(GlobalVarsProfile, ASectionThatWasNotReadIsNotDeleted) {
    KeepUserVariables();
    VNWriteProfileString(3, "Global Variables", "MYREPORT", "1");
    VNWriteProfileString(3, "Global Variables", "TLXQW_RPT_FONT_SZ", "20");
    auto wanted = Section();
    NextTick();
    m_folder.Write("profile.ini", m_folder.Read("profile.ini") + "; changed\n");
    m_system.SetEnvironment("VNBYTSTR_PROFILE", m_folder.Path() + "./profile.ini"); // read anew
    m_system.Inject(Fault{.call = Call::Open, .fromThenOn = true, .error = EMFILE});
    CGlobalVars table;
    table.Initialize();
    EXPECT_EQ(Value(table, "TLXQW_RPT_FONT_SZ"), "10");
    EXPECT_EQ(Add(table, "MINE", "2"), Success);
    EXPECT_EQ(Set(table, "TLXCP_TENULL", "NULL"), Success);
    EXPECT_EQ(table.SaveToRegistry(), NotSaved);
    EXPECT_NE(m_system.Diagnostics().find("could not be saved"), std::string::npos);
    m_system.Inject({});
    EXPECT_EQ(table.SaveToRegistry(), Success); // what was changed, and nothing else
    wanted["MINE"] = "2";
    wanted["TLXCP_TENULL"] = "NULL";
    EXPECT_EQ(Section(), wanted);
    table.Initialize();
    EXPECT_EQ(Value(table, "TLXQW_RPT_FONT_SZ"), "20");
    EXPECT_EQ(Value(table, "MYREPORT"), "1");
}

TEST_F(GlobalVarsProfile, ValuesThatTheCodePageCannotShowStay) {
    KeepUserVariables();
    m_folder.Write("profile.ini", m_folder.Read("profile.ini") +
                                      "[3/Global Variables]\n\xE6\x97\xA5=1\n"
                                      "NAME=\xE6\x97\xA5\xE6\x9C\xAC \xE2\x82\xAC\n"
                                      "TLXDC_CURRENCY=\xE6\x97\xA5\n");
    NextTick();
    const vnbytstr::ScopedCodePage western(1252);
    CGlobalVars table;
    table.Initialize();
    EXPECT_EQ(Value(table, "NAME"), "?? \x80");
    EXPECT_EQ(table.SaveToRegistry(), Success);
    const std::string text = m_folder.Read("profile.ini");
    for (const char* line : {"\n\xE6\x97\xA5=1\n", "\nNAME=\xE6\x97\xA5\xE6\x9C\xAC \xE2\x82\xAC\n",
                             "\nTLXDC_CURRENCY=\xE6\x97\xA5\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line;
    Set(table, "NAME", "\x80");
    EXPECT_EQ(table.SaveToRegistry(), Success);
    EXPECT_NE(m_folder.Read("profile.ini").find("\nNAME=\xE2\x82\xAC\n"), std::string::npos);
}

TEST_F(GlobalVarsProfile, EveryVariableIsDescribedInEveryLanguage) {
    CString text;
    EXPECT_EQ(CGlobalVars::GetDescriptionFromID(static_cast<CGlobalVars::GlobalVarIDs>(0), text),
              UnknownName);
    EXPECT_EQ(
        CGlobalVars::GetFullDescriptionFromID(static_cast<CGlobalVars::GlobalVarIDs>(60), text),
        UnknownName);
    std::set<std::string> all;
    const auto addAll = [&](const char* language) {
        VNWriteProfileString(3, "Options", "UILanguage", language);
        ASSERT_NE(LoadResourceDLL("vnurc"), nullptr) << language;
        for (int i = 1; i < 60; ++i) {
            const auto id = static_cast<CGlobalVars::GlobalVarIDs>(i);
            CString brief, full;
            EXPECT_EQ(CGlobalVars::GetDescriptionFromID(id, brief), Success) << language << i;
            EXPECT_EQ(CGlobalVars::GetFullDescriptionFromID(id, full), Success) << language << i;
            EXPECT_GT(full.GetLength(), brief.GetLength()) << language << i;
            EXPECT_TRUE(all.insert(std::string(language) + std::string(brief)).second) << brief;
            all.insert(std::string(full));
        }
    };
    const char* const languages[] = {"DEU", "FRA", "ESN", "ITA", "PTB", "JPN",
                                     "KOR", "CHT", "HEB", "ARE", "ENU"};
    for (const char* language : languages)
        addAll(language);
    EXPECT_EQ(all.size(), std::size(languages) * 59 * 2); // no text left in another language
}

} // namespace

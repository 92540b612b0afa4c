// Defaults, what the profile keeps, and texts from the resource libraries.
#include "src/charset/CodePage.h"
#include "tests/globals/TableFixture.h"

#include <fstream>
#include <map>
#include <random>

using enum CGlobalVars::EStatus;
using vnbytstr::test::Call;
using vnbytstr::test::Fault;

namespace {

using Values = std::map<std::string, std::string>;

/// The defaults that the profile keeps, or those that are set at each start.
Values Defaults(bool isFresh) {
    std::ifstream file(VNBYTSTR_TESTS_FOLDER "globals/data/defaults.ini");
    Values values;
    bool isWanted = !isFresh;
    for (std::string line; std::getline(file, line);) {
        const std::size_t sign = line.find('=');
        if (line == "[fresh]")
            isWanted = isFresh;
        else if (isWanted && line[0] != '#')
            values[line.substr(0, sign)] = line.substr(sign + 1);
    }
    return values;
}
const Values kKept = Defaults(false), kFresh = Defaults(true);

class GlobalVarsProfile : public vnbytstr::test::TableFixture {
protected:
    GlobalVarsProfile() { VNWriteProfileString(3, "Options", "UILanguage", "ENU"); }
    static Values Section() {
        Values values;
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
    Values wanted = kKept;
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

TEST_F(GlobalVarsProfile, AVariableSetAsideDoesNotReplaceTheOrdinaryOne) {
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
    const Values strange = {{"TLXQW_QUERY_LANG", "3"}, {"TLXDC_LIST_ORDER", "9"}};
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

TEST_F(GlobalVarsProfile, TheLaterSaveStays) {
    KeepUserVariables();
    CGlobalVars first, second;
    first.Initialize();
    second.Initialize();
    Add(first, "FIRST", "1");
    Add(second, "SECOND", "2");
    EXPECT_EQ(first.SaveToRegistry(), Success);
    VNWriteProfileDWORD(3, "Options", "Other", 1);
    EXPECT_EQ(second.SaveToRegistry(), Success);
    auto wanted = kKept;
    wanted["SECOND"] = "2";
    EXPECT_EQ(Section(), wanted);
    EXPECT_EQ(VNGetProfileDWORD(3, "Options", "Other", 0), 1u);
}

TEST_F(GlobalVarsProfile, EveryVariableIsDescribed) {
    CString brief, full;
    for (const int i : {0, 60}) {
        const auto id = static_cast<CGlobalVars::GlobalVarIDs>(i);
        EXPECT_EQ(CGlobalVars::GetDescriptionFromID(id, brief), UnknownName);
        EXPECT_EQ(CGlobalVars::GetFullDescriptionFromID(id, full), UnknownName);
    }
    Values names;
    for (int i = 1; i < 60; ++i) {
        const auto id = static_cast<CGlobalVars::GlobalVarIDs>(i);
        EXPECT_EQ(CGlobalVars::GetDescriptionFromID(id, brief), Success) << i;
        EXPECT_EQ(CGlobalVars::GetFullDescriptionFromID(id, full), Success) << i;
        EXPECT_GT(full.GetLength(), brief.GetLength()) << i;
        EXPECT_TRUE(names.emplace(brief, full).second) << brief;
    }
}

} // namespace

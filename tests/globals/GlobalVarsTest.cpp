// The table: names, values, adding and removing, against a plain model.
#include "src/charset/CodePage.h"
#include "tests/globals/TableFixture.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <climits>
#include <random>
#include <thread>
#include <utility>
#include <vector>

using enum CGlobalVars::EStatus;

namespace {

/// What is so before anything has made the process's table.
struct WithoutTable {
    bool isMinusNull =
        IsNullValue("-") && !IsNullValue("+") && !IsNullValue("") && !IsNullValue(nullptr);
    bool isNothingThere =
        &CGlobalVars::Get("TLXAO_BATCH") == &CGlobalVars::m_strEmptyValue &&
        &CGlobalVars::Get(CGlobalVars::TLXAO_BATCH) == &CGlobalVars::m_strEmptyValue;
};

class GlobalVars : public vnbytstr::test::TableFixture {
protected:
    static const WithoutTable& Before() {
        static const WithoutTable before;
        return before;
    }
    static void SetUpTestSuite() { Before(); }
};

static_assert(CGlobalVars::TLXCP_TEDFLT == 14 && CGlobalVars::TLXQW_AUTOMATION == 24 &&
              CGlobalVars::TLXQW_REUSE_OBJS == 38 && CGlobalVars::TLXQW_RPT_WID_TYP == 51 &&
              CGlobalVars::TLXQW_UEDIT_DLL == 59);

TEST_F(GlobalVars, ProcessesTable) {
    EXPECT_TRUE(Before().isMinusNull);
    EXPECT_TRUE(Before().isNothingThere);
    CGlobalVars& table = GetGlobals();
    EXPECT_EQ(&table, &CGlobalVars::Get());
    EXPECT_TRUE(IsNullValue("-")); // made, but empty
    EXPECT_EQ(table.Initialize(), Success);
    EXPECT_EQ(table.GetSize(), 60);
    EXPECT_TRUE(IsNullValue("-"));
    EXPECT_EQ(Set(table, "TLXCP_TENULL", "NULL"), Success);
    EXPECT_TRUE(IsNullValue("NULL"));
    EXPECT_FALSE(IsNullValue("-"));
    EXPECT_FALSE(IsNullValue(nullptr));
    EXPECT_EQ(CGlobalVars::Get("tlxcp_tenull"), "NULL");
    EXPECT_EQ(CGlobalVars::Get(CGlobalVars::TLXCP_TENULL), "NULL");
    for (const CString* nothing :
         {&CGlobalVars::Get("NO_SUCH"), &CGlobalVars::Get(static_cast<const char*>(nullptr)),
          &CGlobalVars::Get(static_cast<CGlobalVars::GlobalVarIDs>(0)),
          &CGlobalVars::Get(static_cast<CGlobalVars::GlobalVarIDs>(60))})
        EXPECT_EQ(nothing, &CGlobalVars::m_strEmptyValue);
    EXPECT_EQ(table.Initialize(), Success); // anew
    EXPECT_TRUE(IsNullValue("-"));
    EXPECT_STREQ(table.GetRuntimeClass()->m_lpszClassName, "CGlobalVars");
}

TEST_F(GlobalVars, EveryIndexIsAnId) {
    CGlobalVars table;
    table.Initialize();
    CString name = "x", value = "x";
    EXPECT_EQ(table.GetGlobalVariable(0, name, value), Success);
    EXPECT_EQ(name, "");
    EXPECT_EQ(value, "");
    for (int i = 1; i < 60; ++i) {
        const auto id = static_cast<CGlobalVars::GlobalVarIDs>(i);
        EXPECT_EQ(table.GetGlobalVariable(i, name, value), Success);
        EXPECT_EQ(name, CGlobalVars::GetNameFromID(id));
        EXPECT_EQ(CGlobalVars::GetIDFromName(name), id);
        CString lower = name, again;
        lower.MakeLower();
        EXPECT_EQ(CGlobalVars::GetIDFromName(lower), id);
        EXPECT_EQ(table.GetGlobalVarValue(id, again), Success);
        EXPECT_EQ(again, value);
        EXPECT_FALSE(CGlobalVars::IsReservedName(name));
        EXPECT_EQ(table.Validate(&name, &value, nullptr), Success) << name << value;
    }
    EXPECT_EQ(CGlobalVars::GetIDFromName("ＴＬＸＱＷ＿ＳＱ"), CGlobalVars::TLXQW_SQ);
    EXPECT_EQ(CGlobalVars::GetIDFromName("TLXAP_CASE"), 0);
    EXPECT_EQ(CGlobalVars::GetIDFromName(nullptr), 0);
    EXPECT_TRUE(CGlobalVars::IsReservedName("tlxqc_result"));
    EXPECT_FALSE(CGlobalVars::IsReservedName("TLXQC_OTHER"));
    for (const int i : {INT_MIN, -1, 60, INT_MAX}) {
        EXPECT_EQ(table.GetGlobalVariable(i, name, value), UnknownName);
        EXPECT_STREQ(CGlobalVars::GetNameFromID(static_cast<CGlobalVars::GlobalVarIDs>(i)), "");
    }
}

TEST_F(GlobalVars, NamesThatCanBeAdded) {
    CGlobalVars table;
    EXPECT_EQ(Add(table, "EARLY"), NotInitialized);
    table.Initialize();
    for (const char* name : {"TLX", "tlxao_mine", "TLXAP_CASE", "TLX A", "TLXAO_BATCH"})
        EXPECT_EQ(Add(table, name), ReservedPrefix) << name;
    EXPECT_EQ(Add(table, ""), EmptyName);
    for (const char* name : {"1ABC", "A-B", "_X", " X", "X ", "A.B", "É", "ＡＢＣ", "A\xFF", "A!"})
        EXPECT_EQ(Add(table, name), InvalidCharacter) << name;
    EXPECT_EQ(Add(table, CString("A\0B", 3)), InvalidCharacter);
    EXPECT_EQ(table.GetSize(), 60);
    for (const char* name : {"MY_VAR1", "$~_{}?@#%\\", "\\", "%41", "[3/Options]", "TL", "#1"})
        EXPECT_EQ(Add(table, name, "v"),
                  std::string_view(name).starts_with('[') ? InvalidCharacter : Success)
            << name;
    EXPECT_EQ(Add(table, "my_var1"), Duplicate);
    EXPECT_EQ(Add(table, "#1"), Duplicate);
    EXPECT_EQ(Value(table, "ＭＹ＿ｖａｒ１"), "v");
    int added = -1;
    const CString name = "Fresh", value = "1";
    EXPECT_EQ(table.AddGlobalVariable(&name, &value, added, 1), Success);
    EXPECT_EQ(added, 1);
    EXPECT_EQ(table.GetSize(), 66);
    EXPECT_EQ(table.AddGlobalVariable(&name, nullptr, added), Success);
    EXPECT_EQ(table.AddGlobalVariable("LITERAL", "1", added), Success); // and all that goes with it
    EXPECT_EQ(table.Validate("LITERAL", "2"), Success);
    EXPECT_EQ(table.SetGlobalVarValue("LITERAL", "2"), Success);
    EXPECT_EQ(table.SetGlobalVarValue(CGlobalVars::TLXCP_TENULL, "literal"), Success);
    EXPECT_EQ(Value(table, "LITERAL") + Value(table, "TLXCP_TENULL"), "2literal");
    EXPECT_EQ(table.DeleteGlobalVariable("LITERAL"), Success);
    CString storedName, storedValue = "x";
    EXPECT_EQ(table.GetGlobalVariable(66, storedName, storedValue), Success);
    EXPECT_EQ(storedName, "FRESH");
    EXPECT_EQ(storedValue, "");
    EXPECT_EQ(table.AddGlobalVariable(nullptr, &value, added), EmptyName);
    EXPECT_EQ(added, 0);
}

TEST_F(GlobalVars, OnlyLoneMarksAreParsedWhenAdded) {
    CGlobalVars table;
    table.Initialize();
    const std::pair<const char*, const char*> values[] = {
        {"'", ""}, {"(", ""}, {"'a'", "'a'"}, {"(a)", "(a)"}, {"''", "''"}, {")", ")"}};
    char name[] = "A";
    for (const auto& [value, stored] : values) {
        EXPECT_EQ(Add(table, name, value), Success);
        EXPECT_EQ(Value(table, name), stored);
        ++name[0];
    }
    EXPECT_EQ(Set(table, "A", "'"), Success);
    EXPECT_EQ(Value(table, "A"), "'");
    const std::pair<const char*, const char*> literals[] = {
        {"'it''s' so", "it's"}, {"'open", "open"}, {"(a(b)c)d", "a(b)c"}, {"((", "("},
        {"plain'", "plain'"},   {"''''", "'"},     {"'''", "'"},          {"", ""}};
    for (const auto& [literal, parsed] : literals) {
        CString value = literal;
        CGlobalVars::ParseGlobal(value);
        EXPECT_EQ(value, parsed) << literal;
        CGlobalVars::Convert(value);
        CGlobalVars::ParseGlobal(value);
        EXPECT_EQ(value, parsed);
    }
    CString value;
    EXPECT_EQ(table.GetGlobalVarValue(CGlobalVars::TLXQW_SQ, value, 1), Success);
    EXPECT_EQ(value, "''''");
}

TEST_F(GlobalVars, ValuesThatAreTaken) {
    CGlobalVars table;
    table.Initialize();
    Add(table, "MINE", "old");
    struct Case {
        const char *name, *value;
        int status, position;
    };
    const Case cases[] = {
        {"TLXEC_SHARE", "0", Success, -1},
        {"TLXEC_SHARE", "2", InvalidValue, 0},
        {"TLXEC_SHARE", "", InvalidValue, 0},
        {"TLXEC_SHARE", "1x", InvalidValue, 1},
        {"TLXEC_SHARE", " 1", InvalidValue, 0},
        {"TLXEC_SP_RS_NUM", "-1", Success, -1},
        {"TLXEC_SP_RS_NUM", "-2", InvalidValue, 0},
        {"TLXEC_SP_RS_NUM", "-x", InvalidValue, 1},
        {"TLXEC_SP_RS_NUM", "2147483647", Success, -1},
        {"TLXEC_SP_RS_NUM", "99999999999999999999", InvalidValue, 0},
        {"TLXQW_RPT_NUM_LNS", "0", InvalidValue, 0},
        {"TLXQW_RPT_NUM_LNS", "32767", Success, -1},
        {"TLXCP_TENULL", "", InvalidValue, 0},
        {"TLXCP_TENULL", "\xFF\xFE", Success, -1},
        {"TLXQW_SQ", "''", InvalidValue, 1},
        {"TLXQW_SQ", "’", Success, -1},
        {"TLXDC_CURRENCY", "", Success, -1},
        {"MINE", "", Success, -1},
        {"NO_SUCH", "1", UnknownName, -1},
        {"TLXAP_TRACE", "1", ReservedPrefix, -1},
        {"", "1", EmptyName, -1},
    };
    for (const Case& one : cases) {
        const CString name = one.name, value = one.value;
        const std::string before = Value(table, name);
        int position = 7, changed = 7;
        EXPECT_EQ(table.Validate(&name, &value, &position), one.status) << name << ' ' << value;
        EXPECT_EQ(position, one.position) << name << ' ' << value;
        EXPECT_EQ(table.SetGlobalVarValue(&name, &value, &changed, &position, 1), one.status);
        EXPECT_EQ(changed, one.status == Success && before != one.value) << name << ' ' << value;
        EXPECT_EQ(Value(table, name), before);
        EXPECT_EQ(table.SetGlobalVarValue(&name, &value, nullptr, &position), one.status);
        EXPECT_EQ(position, one.position);
        EXPECT_EQ(Value(table, name), one.status == Success ? one.value : before);
    }
    const CString one = "1";
    EXPECT_EQ(table.SetGlobalVarValue(CGlobalVars::TLXQW_AUTOMATION, &one, nullptr, nullptr, 0, 1),
              ProgramOnly);
    EXPECT_EQ(Value(table, "TLXQW_AUTOMATION"), "0");
    EXPECT_EQ(table.SetGlobalVarValue(CGlobalVars::TLXQW_AUTOMATION, &one), Success);
    EXPECT_EQ(table.SetGlobalVarValue(CGlobalVars::TLXQW_SHOW_QUERY, &one, nullptr, nullptr, 0, 1),
              Success);
    EXPECT_EQ(table.SetGlobalVarValue(static_cast<CGlobalVars::GlobalVarIDs>(0), &one),
              UnknownName);
}

TEST_F(GlobalVars, VariablesSetAside) {
    CGlobalVars table;
    table.Initialize();
    Add(table, "X", "first");
    EXPECT_EQ(table.SetGlobalVariableFlag(60, 5), Success);
    EXPECT_EQ(Value(table, "X"), "");
    EXPECT_EQ(Add(table, "x", "second"), Success);
    EXPECT_EQ(Value(table, "X"), "second");
    EXPECT_EQ(table.SetGlobalVariableFlag(60, 0), Duplicate);
    const CString name = "X";
    EXPECT_EQ(table.DeleteGlobalVariable(&name), Success);
    EXPECT_EQ(table.SetGlobalVariableFlag(60, 0), Success);
    EXPECT_EQ(Value(table, "X"), "first");
    EXPECT_EQ(table.SetGlobalVariableFlag(1, 1), BuiltIn);
    EXPECT_EQ(table.SetGlobalVariableFlag(61, 1), UnknownName);
}

TEST_F(GlobalVars, BuiltInOnesStay) {
    CGlobalVars table;
    table.Initialize();
    Add(table, "X");
    const CString builtIn = "tlxao_batch", missing = "Y", mine = "x", none;
    EXPECT_EQ(table.DeleteGlobalVariable(&builtIn), BuiltIn);
    EXPECT_EQ(table.DeleteGlobalVariable(&missing), UnknownName);
    EXPECT_EQ(table.DeleteGlobalVariable(&missing, 0, 1), Success);
    EXPECT_EQ(table.DeleteGlobalVariable(&none), EmptyName);
    EXPECT_EQ(table.DeleteGlobalVariable(nullptr), EmptyName);
    EXPECT_EQ(table.DeleteGlobalVariable(&mine, 1), Success);
    EXPECT_EQ(table.GetSize(), 61);
    EXPECT_EQ(table.DeleteGlobalVariable(&mine), Success);
    EXPECT_EQ(table.GetSize(), 60);
}

TEST_F(GlobalVars, DoWhatAListOfPairsDoes) {
    CGlobalVars table;
    table.Initialize();
    std::vector<std::pair<std::string, std::string>> model;
    std::mt19937 random(5);
    for (int step = 0; step < 20000; ++step) {
        const std::string name = "V" + std::to_string(random() % 300);
        std::string spelled = name;
        if (random() % 2)
            spelled[0] = static_cast<char>(std::tolower(spelled[0]));
        const CString asked = spelled.c_str();
        const std::string value = std::to_string(random());
        const auto found = std::find_if(model.begin(), model.end(),
                                        [&](const auto& one) { return one.first == name; });
        const bool isThere = found != model.end();
        switch (random() % 4) {
        case 0:
            ASSERT_EQ(Add(table, asked, value.c_str()), isThere ? Duplicate : Success);
            if (!isThere)
                model.emplace_back(name, value);
            break;
        case 1:
            ASSERT_EQ(table.DeleteGlobalVariable(&asked), isThere ? Success : UnknownName);
            if (isThere)
                model.erase(found);
            break;
        case 2:
            ASSERT_EQ(Set(table, asked, value.c_str()), isThere ? Success : UnknownName);
            if (isThere)
                found->second = value;
            break;
        default:
            ASSERT_EQ(Value(table, asked), isThere ? found->second : "");
        }
    }
    table.AssertValid();
    ASSERT_EQ(table.GetSize(), 60 + static_cast<int>(model.size()));
    for (std::size_t i = 0; i < model.size(); ++i) {
        CString name, value;
        table.GetGlobalVariable(60 + static_cast<int>(i), name, value);
        EXPECT_EQ(name, model[i].first.c_str());
        EXPECT_EQ(value, model[i].second.c_str());
    }
}

TEST_F(GlobalVars, LettersAreTheSameInEveryLocale) {
    const vnbytstr::ScopedCodePage utf8(65001);
    for (const char* locale : {"tr_TR.UTF-8", "az_AZ.UTF-8", "lt_LT.UTF-8", "en_US.UTF-8"}) {
        m_system.SetEnvironment("LC_ALL", locale);
        CGlobalVars table;
        table.Initialize();
        EXPECT_EQ(Add(table, "region", "North"), Success) << locale;
        EXPECT_EQ(Add(table, "Region"), Duplicate);
        EXPECT_EQ(Set(table, "regIOn", "South"), Success);
        EXPECT_EQ(Value(table, "region"), "South");
        EXPECT_EQ(Value(table, "\xEF\xBD\x92\xEF\xBD\x85\xEF\xBD\x87\xEF\xBD\x89on"), "South");
        EXPECT_EQ(CGlobalVars::GetIDFromName("tlxao_connect_id"), CGlobalVars::TLXAO_CONNECT_ID);
        EXPECT_TRUE(CGlobalVars::IsReservedName("tlxap_printer"));
        const CString name = "ReGiOn";
        EXPECT_EQ(table.DeleteGlobalVariable(&name), Success);
    }
    // The second byte of a character is no letter.
    const vnbytstr::ScopedCodePage japanese(932);
    CGlobalVars table;
    table.Initialize();
    EXPECT_EQ(Value(table, "\x83\x69"), "");
}

TEST_F(GlobalVars, ThreadsMayReadAtOnce) {
    CGlobalVars table;
    table.Initialize();
    for (int i = 0; i < 200; ++i)
        Add(table, ("REGION" + std::to_string(i)).c_str(), std::to_string(i).c_str());
    std::atomic<int> wrong{0};
    const auto read = [&] {
        for (int i = 0; i < 20000; ++i)
            if (Value(table, ("region" + std::to_string(i % 200)).c_str()) !=
                std::to_string(i % 200))
                ++wrong;
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(read);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace

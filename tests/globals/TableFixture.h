// A table with its own profile.
#pragma once

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"
#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Profile.h"

#include <gtest/gtest.h>

#include <string>

namespace vnbytstr::test {

class TableFixture : public testing::Test {
protected:
    TableFixture() : m_scope(m_system) {
        m_system.SetEnvironment("VNBYTSTR_PROFILE", m_folder.File("profile.ini"));
        m_system.SetEnvironment("LC_ALL", "C.UTF-8");
        m_system.SetFontFamily("");
        m_system.SetTick(m_tick);
    }
    void NextTick() { m_system.SetTick(++m_tick); }
    void KeepUserVariables() { VNWriteProfileDWORD(3, "Options", "SaveGlobals", 1); }

    static std::string Value(const CGlobalVars& table, const CString& name) {
        CString value;
        table.GetGlobalVarValue(name, value);
        return {value, static_cast<std::size_t>(value.GetLength())};
    }
    static int Set(CGlobalVars& table, const CString& name, const CString& value) {
        return table.SetGlobalVarValue(&name, &value);
    }
    static int Add(CGlobalVars& table, const CString& name, const CString& value = "") {
        int added = -1;
        const int status = table.AddGlobalVariable(&name, &value, added);
        EXPECT_EQ(added, status == CGlobalVars::Success ? 1 : 0);
        return status;
    }

    TemporaryFolder m_folder;
    TestSystem m_system;
    ScopedSystem m_scope;
    DWORD m_tick = 1000;
};

} // namespace vnbytstr::test

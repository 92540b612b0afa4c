// A profile in a folder of its own, with a clock that stands still.
#pragma once

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"
#include "vnbytstr/Profile.h"

#include <gtest/gtest.h>

#include <string>

namespace vnbytstr::test {

class Profile : public testing::Test {
protected:
    Profile() : m_scope(m_system) {
        m_system.SetEnvironment("VNBYTSTR_PROFILE", m_folder.File("profile.ini"));
        m_system.SetTick(m_tick);
    }
    void NextTick() { m_system.SetTick(++m_tick); }
    bool Holds(const std::string& name) const { return !m_folder.Read(name).empty(); }

    TemporaryFolder m_folder;
    TestSystem m_system;
    ScopedSystem m_scope;
    DWORD m_tick = 1000;
};

} // namespace vnbytstr::test

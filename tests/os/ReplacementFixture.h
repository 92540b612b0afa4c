// What the tests of FileReplacement share: a folder of the targets, and a temporary one.
#pragma once

#include "src/os/FileReplacement.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>

namespace vnbytstr::test {

class ReplacementFixture : public ::testing::Test {
protected:
    ReplacementFixture() : m_scope(m_system) {
        std::filesystem::create_directory(m_folder.File("tmp"));
        std::filesystem::create_directory(m_folder.File("at"));
        m_system.SetTemporaryFolder(m_folder.File("tmp/"));
    }
    ~ReplacementFixture() override { EXPECT_TRUE(m_system.OpenHandles().empty()); }

    std::string Name(const std::string& name) const { return m_folder.File("at/" + name); }
    std::string Read(const std::string& name) const { return m_folder.Read("at/" + name); }
    void Write(const std::string& name, const std::string& content) const {
        m_folder.Write("at/" + name, content);
    }
    /// Names beside the targets and in the temporary folder.
    std::size_t LeftOvers() const {
        std::size_t count = 0;
        for (const char* folder : {"at", "tmp"})
            for (const auto& entry : std::filesystem::directory_iterator(m_folder.File(folder)))
                count += entry.path().filename().string().find('~') != std::string::npos;
        return count;
    }
    static int Put(const std::string& name, const std::string& content) {
        FileReplacement target;
        if (const int error = target.Open(name.c_str()))
            return error;
        for (std::size_t at = 0; at < content.size();) {
            std::size_t done = 0;
            if (const int error = System::Current().WriteFile(target.Handle(), content.data() + at,
                                                              content.size() - at, done))
                return error;
            at += done;
        }
        return target.Commit();
    }

    TemporaryFolder m_folder;
    TestSystem m_system;
    ScopedSystem m_scope;
};

} // namespace vnbytstr::test

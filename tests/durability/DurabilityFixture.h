// Folders for one try of a save, watched by a system.
#pragma once

#include "src/charset/CodePage.h"
#include "tests/durability/SaveScenarios.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

namespace vnbytstr::test {

/// A home and a temporary folder.
class PlaceForTest {
public:
    PlaceForTest() : m_place{m_root.Path() + "home/", m_root.Path() + "tmp/"} {
        std::filesystem::create_directory(m_place.home);
        std::filesystem::create_directory(m_place.temporary);
    }
    std::string Root() const { return m_root.Path(); }
    operator const Place&() const { return m_place; }
    std::string Read(const std::string& name) const { return m_root.Read("home/" + name); }

    /// Names of the files that the save should not have left.
    std::vector<std::string> LeftOvers(const SaveScenario& scenario) const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_root.Path())) {
            const std::string name = entry.path().filename().string();
            const bool isKnown = entry.is_directory() || name == scenario.target ||
                                 name == "link" || name == "part" || name == "profile.ini.lock";
            if (!isKnown)
                names.push_back(name);
        }
        return names;
    }

    /// The same without files that were removed while they are open: some systems list them still.
    std::size_t CountLeft(const SaveScenario& scenario) const {
        const auto names = LeftOvers(scenario);
        return static_cast<std::size_t>(std::ranges::count_if(names, [](const std::string& name) {
            return name.find(".~aside-") == std::string::npos;
        }));
    }

private:
    TemporaryFolder m_root;
    Place m_place;
};

/// Installs a system that works on that place, with 16 pages in memory and the ANSI page 1252.
class Session {
public:
    Session(TestSystem& system, const Place& place, const SaveScenario& scenario)
        : m_system(system) {
        system.SetTemporaryFolder(place.temporary);
        system.SetEnvironment("VNBYTSTR_PROFILE", place.home + "profile.ini");
        system.SetMemoryLoad(100);
        system.SetSyncsNothing();
        if (scenario.isClosed)
            system.SetClosedFolder(place.home);
        if (scenario.isOtherDevice)
            system.SetOtherDevice(place.home);
    }

private:
    ScopedSystem m_system;
    ScopedCodePage m_page{1252};
};

inline std::string TestName(const ::testing::TestParamInfo<SaveScenario>& info) {
    std::string name = info.param.name;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    }
    return name;
}

} // namespace vnbytstr::test

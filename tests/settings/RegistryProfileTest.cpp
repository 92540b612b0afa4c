// The settings in a registry: one in memory, whose writes can fail, and the system's where it has one.
#include "src/os/SystemRegistry.h"
#include "tests/settings/ProfileFixture.h"

#include <algorithm>
#include <cerrno>

namespace vnbytstr::test {
namespace {

class MemoryRegistry : public SystemRegistry {
public:
    int Read(const std::string& key, bool isWhole, RegistryKey& tree) override {
        tree = {};
        const auto place = m_keys.find(Fold(key));
        if (place == m_keys.end())
            return ENOENT;
        Copy(place->first, 2, isWhole, tree);
        return 0;
    }
    int Set(const std::string& key, const std::string& name, const std::string& text) override {
        if (const int error = Fail())
            return error;
        for (std::size_t at = 0; at != std::string::npos;) {
            at = key.find('\\', at + 1);
            const std::string path = key.substr(0, at);
            RegistryKey& made = m_keys.try_emplace(Fold(path)).first->second;
            if (made.name.empty())
                made.name = path.substr(path.rfind('\\') + 1);
            made.changed = ++m_clock;
        }
        auto& values = m_keys[Fold(key)].values;
        const auto value = Find(values, name);
        if (value == values.end())
            values.push_back({name, text});
        else
            value->text = text;
        return 0;
    }
    int Remove(const std::string& key, const std::string& name) override {
        if (const int error = Fail())
            return error;
        const auto place = m_keys.find(Fold(key));
        if (place == m_keys.end())
            return 0;
        auto& values = place->second.values;
        if (const auto value = Find(values, name); value != values.end())
            values.erase(value);
        place->second.changed = ++m_clock;
        const std::string within = Fold(key) + '\\';
        const auto next = m_keys.lower_bound(within);
        if (values.empty() && (next == m_keys.end() || !next->first.starts_with(within)))
            m_keys.erase(place);
        return 0;
    }
    int Sync(const std::string& /*key*/) override { return Fail(); }
    std::string Fold(const std::string& name) override {
        std::string folded = name;
        for (char& c : folded)
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
        return folded;
    }

    unsigned writes = 0, failAt = 0; ///< which write fails, from 1; 0 for none
    bool isDead = false;             ///< and all after it

private:
    int Fail() {
        ++writes;
        return failAt != 0 && (isDead ? writes >= failAt : writes == failAt) ? EIO : 0;
    }
    std::vector<RegistryValue>::iterator Find(std::vector<RegistryValue>& values,
                                              const std::string& name) {
        return std::ranges::find_if(
            values, [&](const RegistryValue& each) { return Fold(each.name) == Fold(name); });
    }
    void Copy(const std::string& path, int levels, bool isWhole, RegistryKey& tree) {
        tree = m_keys[path];
        if (!isWhole && levels != 2)
            tree.values.clear();
        for (const auto& [each, key] : m_keys) {
            if (levels > 0 && each.starts_with(path + '\\') &&
                each.find('\\', path.size() + 1) == std::string::npos)
                Copy(each, levels - 1, isWhole, tree.keys.emplace_back());
        }
    }

    std::map<std::string, RegistryKey> m_keys; // by folded path, without the keys in them
    std::int64_t m_clock = 0;
};

class SystemWithRegistry : public TestSystem {
public:
    SystemRegistry* GetRegistry() override { return isOwn ? &memory : TestSystem::GetRegistry(); }
    MemoryRegistry memory;
    bool isOwn = true;
};

/// The parameter: whether the registry is the system's.
class RegistryProfile : public testing::TestWithParam<bool> {
protected:
    RegistryProfile() : m_scope(m_system) {
        m_system.isOwn = !GetParam();
        m_system.SetEnvironment("VNBYTSTR_PROFILE", std::string("registry:") + kKey);
        m_system.SetEnvironment("APPDATA", m_folder.Path());
        m_system.SetEnvironment("XDG_CONFIG_HOME", m_folder.Path());
        Clear(kKey, Tree());
        NextTick();
    }
    ~RegistryProfile() override { Clear(kKey, Tree()); }

    static constexpr const char* kKey = "Software\\vnbytstr tests\\profile";
    void NextTick() { m_system.SetTick(++m_tick); }
    SystemRegistry& Keys() { return *m_system.GetRegistry(); }
    RegistryKey Tree() {
        RegistryKey tree;
        Keys().Read(kKey, true, tree);
        return tree;
    }
    void Clear(const std::string& path, const RegistryKey& key) {
        for (const RegistryKey& each : key.keys)
            Clear(path + '\\' + each.name, each);
        for (const RegistryValue& each : key.values)
            Keys().Remove(path, each.name);
    }
    /// "3\Options\MaxCachePages=64" and so on, sorted; without the count of saves.
    std::string Content() {
        std::vector<std::string> lines;
        const auto add = [&](auto&& self, const std::string& path, const RegistryKey& key) -> void {
            for (const RegistryValue& each : key.values) {
                if (each.name != "Saves")
                    lines.push_back(path + each.name + '=' + each.text.value_or("?") + '\n');
            }
            for (const RegistryKey& each : key.keys)
                self(self, path + each.name + '\\', each);
        };
        add(add, "", Tree());
        std::ranges::sort(lines);
        std::string all;
        for (const std::string& line : lines)
            all += line;
        return all;
    }

    TemporaryFolder m_folder;
    SystemWithRegistry m_system;
    ScopedSystem m_scope;
    DWORD m_tick = 1000;
};

TEST_P(RegistryProfile, SectionsAreKeysOfOneKey) {
    EXPECT_EQ(VNGetProfileDWORD(3, "Options", "MaxCachePages", 64), 64u);
    EXPECT_TRUE(VNWriteProfileDWORD(3, "Options", "MaxCachePages", 32));
    EXPECT_TRUE(VNWriteProfileString(1, "Form Fonts", "Name", "Courier 100%"));
    EXPECT_EQ(Content(), "1\\Form Fonts\\Name=Courier 100%25\n3\\Options\\MaxCachePages=32\n");
    EXPECT_EQ(VNGetProfileDWORD(3, "Options", "MaxCachePages", 64), 32u);
    // What others write is seen at the next tick.
    EXPECT_EQ(Keys().Set(std::string(kKey) + "\\3\\Options", "MaxCachePages", "77"), 0);
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "Options", "MaxCachePages", 64), 77u);
    EXPECT_TRUE(VNDeleteProfileSection(3, "Options"));
    EXPECT_EQ(Content(), "1\\Form Fonts\\Name=Courier 100%25\n");
    EXPECT_EQ(m_system.Diagnostics(), "");
}

TEST_P(RegistryProfile, EveryTextComesBack) {
    const char* const names[] = {"a", "A",        "b=c",  " ends ",   "[x]",
                                 ";", "100%",     "%41",  "a\\b",     "x/y]",
                                 "",  "\xC3\xA9", "\xFF", "\xC3\x89", "tab\tline\n"};
    CProfileBatch batch;
    for (const char* section : names) {
        for (const char* name : names)
            batch.WriteString(3, section, name, (std::string(section) + '|' + name + '\n').c_str());
    }
    EXPECT_TRUE(batch.Commit());
    EXPECT_EQ(Content().find("Pending"), std::string::npos);
    const auto check = [&] {
        for (const char* section : names) {
            for (const char* name : names)
                EXPECT_EQ(VNGetProfileString(3, section, name, "-"),
                          (std::string(section) + '|' + name + '\n').c_str());
        }
    };
    check();
    const std::string before = Content();
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "a\\b", 1)); // alone
    EXPECT_TRUE(VNWriteProfileString(3, "A", "a\\b", "A|a\\b\n"));
    EXPECT_EQ(Content(), before);
    check();
    for (const char* section : names)
        EXPECT_TRUE(VNDeleteProfileSection(3, section));
    EXPECT_EQ(Content(), "");
}

TEST_P(RegistryProfile, WhatIsNotAProfilesIsKept) {
    const std::string options = std::string(kKey) + "\\3\\Options";
    for (const auto& [key, name, text] : {std::tuple{std::string(kKey), "Owner", "x"},
                                          {std::string(kKey) + "\\Other", "b", "1"},
                                          {options, "odd = name", "\x01 two\nlines "},
                                          {options + "\\Deeper", "b", "2"},
                                          {options, "n", "1"}})
        EXPECT_EQ(Keys().Set(key, name, text), 0);
    NextTick();
    EXPECT_EQ(VNGetProfileString(3, "Options", "odd = name", "-"), "\x01 two\nlines ");
    const std::string before = Content();
    EXPECT_TRUE(VNWriteProfileDWORD(3, "Options", "n", 2));
    EXPECT_TRUE(VNWriteProfileDWORD(3, "Options", "N", 3));
    EXPECT_TRUE(VNWriteProfileDWORD(3, "Options", "n", 1));
    EXPECT_TRUE(VNWriteProfileString(3, "Options", "N", nullptr));
    EXPECT_EQ(Content(), before);
    EXPECT_TRUE(VNDeleteProfileSection(3, "Options"));
    EXPECT_EQ(Content(), "Other\\b=1\nOwner=x\n");
    RegistryKey deeper;
    EXPECT_EQ(Keys().Read(options + "\\Deeper", true, deeper), 0);
    EXPECT_EQ(Keys().Remove(options + "\\Deeper", "b"), 0);
}

/// Stopped at every write: of a process that ends there, and of one whose write fails.
TEST_P(RegistryProfile, ASaveIsOneStep) {
    if (GetParam())
        return; // its writes do not fail
    const auto both = [](CProfileBatch& batch, DWORD value) {
        batch.DeleteSection(3, "Old");
        batch.WriteDWORD(3, "Pair", "left", value);
        batch.WriteDWORD(3, "Pair", "right", value);
        batch.WriteDWORD(3, "New", "n", value);
    };
    bool isSaved = false;
    for (unsigned at = 1; !isSaved; ++at) {
        for (const bool isDead : {false, true}) {
            MemoryRegistry& registry = m_system.memory;
            Clear(kKey, Tree());
            NextTick();
            EXPECT_TRUE(VNWriteProfileDWORD(3, "Old", "o", 1));
            EXPECT_TRUE(VNWriteProfileDWORD(3, "Pair", "left", 1));
            EXPECT_TRUE(VNWriteProfileDWORD(3, "Pair", "right", 1));
            registry.writes = 0;
            registry.failAt = at;
            registry.isDead = isDead;
            CProfileBatch batch;
            both(batch, 2);
            isSaved = batch.Commit();
            registry.failAt = 0;
            NextTick();
            const DWORD left = VNGetProfileDWORD(3, "Pair", "left", 0);
            EXPECT_EQ(VNGetProfileDWORD(3, "Pair", "right", 0), left) << at;
            EXPECT_EQ(VNGetProfileDWORD(3, "New", "n", 1), left) << at;
            EXPECT_EQ(VNIsProfileValue(3, "Old", "o"), left == 1) << at;
            EXPECT_TRUE(left == (isSaved ? 2u : 1u) || (left == 2 && isDead)) << at;
            EXPECT_TRUE(VNWriteProfileDWORD(3, "After", "a", 1));
            const std::string number = std::to_string(left);
            EXPECT_EQ(Content(), std::string("3\\After\\a=1\n") +
                                     (left == 2 ? "3\\New\\n=2\n" : "3\\Old\\o=1\n") +
                                     "3\\Pair\\left=" + number + "\n3\\Pair\\right=" + number +
                                     "\n")
                << at;
        }
    }
}

std::vector<bool> Registries() {
    return vnbytstr::System::Current().GetRegistry() ? std::vector{false, true}
                                                     : std::vector{false};
}
INSTANTIATE_TEST_SUITE_P(, RegistryProfile, testing::ValuesIn(Registries()),
                         [](const auto& info) { return info.param ? "System" : "Memory"; });

} // namespace
} // namespace vnbytstr::test

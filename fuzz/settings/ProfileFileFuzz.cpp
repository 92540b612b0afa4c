// A profile file of any bytes that is read and changed: a change does what it says and nothing
// else, in memory and in the text that is read again, and a process under another code page loses
// nothing of it.
#include "fuzz/FuzzInput.h"
#include "src/settings/ProfileFile.h"

#include <compare>
#include <map>
#include <optional>
#include <vector>

using namespace vnbytstr;
using detail::ProfileFile;
using fuzz::Require;

namespace {

struct Key {
    UINT root = 0;
    std::string section, name;
    auto operator<=>(const Key&) const = default;
};
using Values = std::map<Key, std::optional<std::string>>;

std::optional<std::string> Read(const ProfileFile& file, const Key& key) {
    const std::string* value = file.Find(key.root, key.section, key.name);
    // Both ways of reading agree.
    int listed = 0;
    file.ForEach(key.root, key.section, [&](const std::string& one, const std::string& text) {
        listed += one == key.name;
        Require(one != key.name || (value && *value == text));
    });
    Require(listed == (value ? 1 : 0) && (!value || file.HasSection(key.root, key.section)));
    return value ? std::optional(*value) : std::nullopt;
}

void RequireHolds(const ProfileFile& file, const Values& values) {
    for (const auto& [key, value] : values)
        Require(Read(file, key) == value);
}

void Change(ProfileFile& file, Values& values, const Key& key, int choice,
            const std::string& value) {
    const auto& [root, section, name] = key;
    switch (choice) {
    case 0: {
        const bool wasThere = values.at(key).has_value();
        Require(file.Remove(root, section, name) == wasThere);
        values[key].reset();
        return;
    }
    case 1: {
        const bool wasThere = file.HasSection(root, section);
        Require(file.RemoveSection(root, section) >= wasThere && !file.HasSection(root, section));
        for (auto& [other, text] : values) {
            if (other.root == root && other.section == section)
                text.reset();
        }
        return;
    }
    default:
        Require(file.Set(root, section, name, value) == (values.at(key) != value));
        values[key] = value;
        return;
    }
}

std::string Word(fuzz::Input& input) {
    constexpr std::array<const char*, 4> kKnown = {"Options", "a", "", "\xE9"};
    const std::uint8_t choice = input.Byte();
    std::string word = choice < kKnown.size() ? kKnown[choice] : input.Bytes(choice % 16);
    std::erase(word, '\0');
    return word;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const CodePage& page = *CodePage::Find(fuzz::PageOf(input.Byte()));
    const CodePage& other = *CodePage::Find(fuzz::PageOf(input.Byte()));
    struct Step {
        Key key;
        int choice;
        std::string value;
    };
    std::vector<Step> steps(input.Byte() % 6);
    for (Step& step : steps) {
        const std::uint8_t choice = input.Byte();
        std::string section = Word(input), name = Word(input);
        step = {{choice & 1 ? 3u : 1u, std::move(section), std::move(name)},
                choice >> 1 & 3,
                Word(input)};
    }
    const std::string text = input.Rest();

    ProfileFile file(text, page);
    Require(file.DamagedLine() <= size + 1);
    Values values;
    for (const Step& step : steps)
        values[step.key] = Read(file, step.key);
    RequireHolds(ProfileFile(file.Text(), page), values); // what was left out changes nothing
    for (const Step& step : steps) {
        Change(file, values, step.key, step.choice, step.value);
        RequireHolds(file, values);
        const std::string saved = file.Text();
        const ProfileFile again(saved, page);
        RequireHolds(again, values);
        Require(again.Text() == saved || again.DamagedLine() != 0);
    }
    ProfileFile foreign(file.Text(), other);
    foreign.Set(7, "Another", "one", "value");
    foreign.RemoveSection(7, "Another");
    RequireHolds(ProfileFile(foreign.Text(), page), values);
    return 0;
}

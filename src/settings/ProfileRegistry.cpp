#include "src/settings/ProfileRegistry.h"

#include "src/os/System.h"
#include "src/settings/ProfileText.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

namespace vnbytstr::detail {

namespace {

constexpr std::string_view kPrefix = "registry:";
constexpr const char* kDefaultKey = "Software\\vnbytstr";
constexpr const char* kPending = "Pending";
constexpr const char* kSaves = "Saves";
constexpr int kMaxReads = 100; // each time another process saved meanwhile

const std::string* Find(const RegistryKey& key, std::string_view name) {
    for (const RegistryValue& value : key.values) {
        if (value.name == name && value.text)
            return &*value.text;
    }
    return nullptr;
}

/// FNV-1a.
void Mix(std::uint64_t& sum, std::string_view text) {
    for (const char c : text)
        sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001B3;
}

void MixKey(std::uint64_t& sum, const RegistryKey& key) {
    Mix(sum, key.name + '\\' + std::to_string(key.changed));
    for (const RegistryKey& each : key.keys)
        MixKey(sum, each);
}

bool IsNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

} // namespace

/// The names in the registry, so that a new one is no other's.
class ProfileRegistry::Names {
public:
    explicit Names(SystemRegistry& registry) : m_registry(registry) {}

    void Add(const std::string& key, const std::string& name) {
        m_names[m_registry.Fold(key + '\n' + name)] = name;
    }
    void Remove(const std::string& key, const std::string& name) {
        m_names.erase(m_registry.Fold(key + '\n' + name));
    }
    /// The name for `name` in a key: itself, or all of it as %XX when it would be another's.
    std::string Take(const std::string& key, const std::string& name) {
        const auto place = m_names.find(m_registry.Fold(key + '\n' + name));
        const bool isOthers = place != m_names.end() && place->second != name;
        std::string taken = isOthers ? EscapeAll(DecodeProfileText(name, CodePage::Ansi())) : name;
        Add(key, taken);
        return taken;
    }

private:
    SystemRegistry& m_registry;
    std::map<std::string, std::string> m_names; // by their folded form
};

std::optional<ProfileRegistry> ProfileRegistry::Of(const std::string& name) {
    SystemRegistry* const registry =
        name.starts_with(kPrefix) ? System::Current().GetRegistry() : nullptr;
    if (!registry)
        return std::nullopt;
    std::string key = name.substr(kPrefix.size());
    while (key.ends_with('\\'))
        key.pop_back();
    return ProfileRegistry(*registry, key.empty() ? kDefaultKey : std::move(key));
}

int ProfileRegistry::GetStamp(std::uint64_t& stamp) const {
    RegistryKey tree;
    const int error = m_registry.Read(m_key, false, tree);
    stamp = 0xCBF29CE484222325;
    MixKey(stamp, tree);
    for (const char* name : {kPending, kSaves}) {
        if (const std::string* text = Find(tree, name))
            Mix(stamp, *text);
    }
    return error;
}

ProfileRegistry::Places ProfileRegistry::PlacesIn(const RegistryKey& tree, Names& names) const {
    Places places;
    for (const RegistryKey& root : tree.keys) {
        const std::string rootKey = m_key + '\\' + root.name;
        const auto add = [&](const RegistryKey& section, const std::string& key,
                             const std::string& sectionName) {
            const std::string header =
                '[' + root.name + '/' + EscapeMarks(sectionName, ProfileToken::Section) + ']';
            for (const RegistryValue& value : section.values) {
                names.Add(key, value.name);
                if (value.text && IsNumber(root.name))
                    places.try_emplace(
                        {header, EscapeMarks(value.name, ProfileToken::Name)},
                        Place{key, value.name, EscapeMarks(*value.text, ProfileToken::Value)});
            }
        };
        add(root, rootKey, "");
        for (const RegistryKey& section : root.keys) {
            names.Add(rootKey + '\\', section.name); // apart from the values of that key
            add(section, rootKey + '\\' + section.name, section.name);
        }
    }
    return places;
}

/// Between a reading of all and a look at "Saves" after it, no process has begun a save.
int ProfileRegistry::Load(std::string& text) const {
    text.clear();
    for (int count = 0; count < kMaxReads; ++count) {
        RegistryKey tree, after;
        if (const int error = m_registry.Read(m_key, true, tree))
            return error;
        if (const std::string* pending = Find(tree, kPending)) {
            text = *pending;
            return 0;
        }
        if (const int error = m_registry.Read(m_key, false, after))
            return error;
        const std::string *const saves = Find(tree, kSaves), *const now = Find(after, kSaves);
        if (Find(after, kPending) || (saves ? !now || *saves != *now : now != nullptr))
            continue;
        Names names(m_registry);
        std::string header;
        for (const auto& [place, value] : PlacesIn(tree, names)) {
            if (place.first != header)
                text += place.first + '\n';
            header = place.first;
            text += place.second + '=' + value.text + '\n';
        }
        return 0;
    }
    return EBUSY;
}

int ProfileRegistry::Save(const std::string& text) const {
    std::string before;
    if (const int error = Load(before); error != 0 && error != ENOENT)
        return error;
    const int error = Apply(text);
    if (error != 0)
        Apply(before);
    return error;
}

/// What the text of a profile file says; where the values are to stand is not known yet.
ProfileRegistry::Places ProfileRegistry::PlacesIn(std::string_view text) {
    Places places;
    std::string header;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, size);
        text.remove_prefix(std::min(size + 1, text.size()));
        const std::size_t equals = line.find('=');
        if (line.starts_with('['))
            header = line.ends_with(']') && line.find('/') != std::string_view::npos ? line : "";
        else if (equals != std::string_view::npos && !header.empty())
            places[{header, std::string(line.substr(0, equals))}].text = line.substr(equals + 1);
    }
    return places;
}

std::string ProfileRegistry::NewKey(const std::string& header, Names& names) const {
    const std::size_t slash = header.find('/');
    const std::string root = m_key + '\\' + header.substr(1, slash - 1);
    std::string section = header.substr(slash + 1, header.size() - slash - 2);
    for (std::size_t at = 0; (at = section.find('\\', at)) != std::string::npos;)
        section.replace(at, 1, "%5C");
    return section.empty() ? root : root + '\\' + names.Take(root + '\\', section);
}

/// Makes the keys as `after` says. What goes, goes first: its name may be wanted in another
/// spelling.
int ProfileRegistry::Move(const Places& before, const Places& after, Names& names) const {
    std::map<std::string, std::string> keys; // by header
    for (const auto& [place, value] : before) {
        keys.emplace(place.first, value.key);
        if (after.contains(place))
            continue;
        if (const int error = m_registry.Remove(value.key, value.name))
            return error;
        names.Remove(value.key, value.name);
    }
    for (const auto& [place, value] : after) {
        if (const auto known = before.find(place); known != before.end()) {
            const Place& old = known->second;
            const bool isSame = old.text == value.text;
            if (const int error = isSame ? 0 : m_registry.Set(old.key, old.name, value.text))
                return error;
            continue;
        }
        std::string& key = keys[place.first];
        if (key.empty())
            key = NewKey(place.first, names);
        if (const int error = m_registry.Set(key, names.Take(key, place.second), value.text))
            return error;
    }
    return 0;
}

int ProfileRegistry::Apply(const std::string& text) const {
    RegistryKey tree;
    if (const int error = m_registry.Read(m_key, true, tree); error != 0 && error != ENOENT)
        return error;
    const std::string* const saves = Find(tree, kSaves);
    const std::uint64_t count = saves && IsNumber(*saves) ? std::stoull(saves->substr(0, 18)) : 0;
    Names names(m_registry);
    const Places before = PlacesIn(tree, names);
    int error = m_registry.Set(m_key, kPending, text);
    if (error == 0)
        error = Move(before, PlacesIn(text), names);
    if (error == 0)
        error = m_registry.Set(m_key, kSaves, std::to_string(count + 1));
    if (error == 0)
        error = m_registry.Remove(m_key, kPending);
    return error != 0 ? error : m_registry.Sync(m_key);
}

} // namespace vnbytstr::detail

// The profile in the registry: what a profile file holds, as keys and values.
//
//     [3/Options]             HKEY_CURRENT_USER\<key>\3\Options
//     MaxCachePages=64            MaxCachePages   REG_SZ  64
//
// Names and texts are written as in the file, with a backslash in a section's name as %5C. The
// registry ignores case: a name that differs from another one in that alone is written as %XX
// throughout. Keys and values of any other form are left as they are.
//
// A save is one step for this library's readers, also when its process is killed: the new content
// first goes to the value "Pending" of <key>, as a file's text, which counts instead of the keys
// until all of them are as it says; the next save does what is left. "Saves" counts the saves.
#pragma once

#include "src/os/SystemRegistry.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vnbytstr::detail {

/// Saving is for one process at a time, which the caller sees to (ProfileLock).
class ProfileRegistry {
public:
    /// The profile of that name: "registry:", for the key Software\vnbytstr, or "registry:<key>".
    /// Nothing for all other names, which are a file's, and where there is no registry.
    static std::optional<ProfileRegistry> Of(const std::string& name);

    /// A number that changes when the content does. ENOENT when there is none.
    int GetStamp(std::uint64_t& stamp) const;
    /// The content, as the text of a profile file. ENOENT when there is none.
    int Load(std::string& text) const;
    /// Makes it the content. On an error it is as it was.
    int Save(const std::string& text) const;

private:
    /// Where a value stands, by its section's header and its name as a file has them.
    struct Place {
        std::string key, name, text;
    };
    using Places = std::map<std::pair<std::string, std::string>, Place>;
    class Names;

    ProfileRegistry(SystemRegistry& registry, std::string key)
        : m_registry(registry), m_key(std::move(key)) {}

    Places PlacesIn(const RegistryKey& tree, Names& names) const;
    static Places PlacesIn(std::string_view text);
    std::string NewKey(const std::string& header, Names& names) const;
    int Move(const Places& before, const Places& after, Names& names) const;
    int Apply(const std::string& text) const;

    SystemRegistry& m_registry;
    std::string m_key;
};

} // namespace vnbytstr::detail

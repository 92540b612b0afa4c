// The part of the seam that Windows alone has: keys below the current user's, which hold named
// values and further keys. Names and texts are UTF-8; a key's name is a path with backslashes.
#pragma once

#include "vnbytstr/framework/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vnbytstr {

struct RegistryValue {
    std::string name;
    std::optional<std::string> text; ///< a number's in decimal digits; none for other types
};

struct RegistryKey {
    std::string name;
    std::int64_t changed =
        0; ///< when its values or the keys in it last changed, in the system's unit
    std::vector<RegistryValue> values;
    std::vector<RegistryKey> keys;
};

/// Every function may be called from every thread. Those that return int return 0 or an errno
/// value: ENOENT when there is no such key, EACCES and so on.
class VNBYTSTR_API SystemRegistry {
public:
    virtual ~SystemRegistry() = default;

    /// The key, the keys in it, and those in these. Values only of the key itself unless `isWhole`.
    /// What others change meanwhile is there or not.
    virtual int Read(const std::string& key, bool isWhole, RegistryKey& tree) = 0;
    /// Sets a text, in one step. Makes the keys of the path as needed.
    virtual int Set(const std::string& key, const std::string& name, const std::string& text) = 0;
    /// Removes a value, and its key when that has nothing else in it. 0 when there is none.
    virtual int Remove(const std::string& key, const std::string& name) = 0;
    /// Returns when what was set and removed is on the disk.
    virtual int Sync(const std::string& key) = 0;
    /// The same text for all names that the system takes for one: it ignores case.
    virtual std::string Fold(const std::string& name) = 0;
};

} // namespace vnbytstr

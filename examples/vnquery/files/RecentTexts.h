// Texts that are remembered in the profile, the latest last.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vnquery {

/// A section of the profile with one value for each key. Several processes may add at once; a new
/// profile is for its owner alone (mode 0600).
class RecentTexts {
public:
    /// Keeps the latest `count`.
    RecentTexts(const char* section, int count) : m_section(section), m_count(count) {}

    std::vector<std::string> GetAll() const;
    /// The text that was added last with that key; "" without one.
    std::string Get(std::string_view key) const;
    /// Adds a text and forgets the one with that key. False when that could not be saved.
    bool Add(std::string_view key, const std::string& text) const;

private:
    const char* m_section;
    int m_count;
};

} // namespace vnquery

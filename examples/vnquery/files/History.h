// The statements that ran, kept from one run of the program to the next.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vnquery {

struct HistoryEntry {
    std::string sql;
    std::string connection; ///< Connection::GetDisplayName, which has no passwords
    std::int64_t when = 0;  ///< when it began, in seconds since 1970 (UTC)
    std::int64_t milliseconds = 0;
    std::int64_t rows = -1; ///< -1 when it is not known
    std::string error;      ///< why it failed; "" when it did not
};

/// Whether the statement may hold a password or another secret: it has a word such as PASSWORD,
/// SECRET, TOKEN or IDENTIFIED in it, also within a longer word, and is no plain query without
/// quoted texts and comments. This errs on the side of secrecy; a secret that nothing in the text
/// names as such cannot be told from other values.
bool MayHoldSecret(std::string_view sql);

/// An SQLite file, for its owner alone (mode 0600), beside the settings (see Profile.h). Several
/// processes may use it at once. The functions throw Failure. A file that is damaged is set aside
/// as <name>.damaged-1 (or the next free number), and a new one begun.
class History {
public:
    /// Longer statements are not kept.
    static constexpr std::size_t kLongest = 65536;

    /// history.sqlite in the folder of the settings, or beside the file that VNBYTSTR_PROFILE
    /// names, with its name before; "" or /dev/null, which keep nothing, where there are no
    /// settings.
    static std::string DefaultFile();

    /// Keeps the latest `count`.
    explicit History(std::string file = DefaultFile(), int count = 1000)
        : m_file(std::move(file)), m_count(count) {}

    /// Keeps the statement, unless MayHoldSecret(sql) or it is too long.
    void Add(const HistoryEntry& entry) const;
    /// The latest first.
    std::vector<HistoryEntry> GetAll() const;
    /// Removes all, also from the file's free space.
    void Clear() const;

private:
    template <class Action>
    void WithDatabase(Action&& action) const;

    std::string m_file;
    int m_count;
};

/// Queries that the user saved under names, in the settings.
class SavedQueries {
public:
    /// Names and texts, by name.
    static std::vector<std::pair<std::string, std::string>> GetAll();
    static std::string Get(const std::string& name);
    /// Replaces one with that name. False when that could not be saved.
    static bool Save(const std::string& name, const std::string& sql);
    static bool Rename(const std::string& from, const std::string& to);
    static bool Delete(const std::string& name);
};

} // namespace vnquery

// How names lead to variables. A table may have a hundred thousand of them, and what a lookup costs
// is its cache misses: it touches one slot of a table that fits the cache and, as a rule, one
// variable of 64 bytes.
#pragma once

#include "vnbytstr/GlobalVars.h"

#include "src/charset/Collation.h"
#include "vnbytstr/framework/Exception.h"

#include <cstddef>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vnbytstr::detail {

inline std::string_view ViewOf(const CString& text) {
    return {text, static_cast<std::size_t>(text.GetLength())};
}

/// Storage of the variables, side by side, by a number that each keeps.
class VariablePool {
public:
    CGlobalVar& At(DWORD number) const noexcept {
        return *std::launder(
            reinterpret_cast<CGlobalVar*>(&m_slabs[number / kSlab][number % kSlab]));
    }
    /// A new variable and its number.
    std::pair<CGlobalVar*, DWORD> Make(const CString& name, const CString& value);
    void Destroy(DWORD number) noexcept;

private:
    static constexpr DWORD kSlab = 1024;
    struct alignas(64) Place {
        std::byte bytes[sizeof(CGlobalVar)];
    };

    std::vector<std::unique_ptr<Place[]>> m_slabs;
    std::vector<DWORD> m_free; // room for every number, so that Destroy cannot fail
    DWORD m_used = 0;          // numbers given out so far
};

} // namespace vnbytstr::detail

/// What the profile had at Initialize and the table does not have.
struct CGlobalVars::SUnread {
    struct SValue {
        CString given;                  ///< what the variable was given instead
        std::optional<CString> refused; ///< what the profile has, when it was read
    };
    const SValue* Find(int id) const {
        const auto found = values.find(id);
        return found == values.end() ? nullptr : &found->second;
    }
    void Clear() noexcept {
        isSection = false;
        values.clear();
    }

    bool isSection = false; ///< the profile could not be read at all
    std::map<int, SValue> values;
};

/// A hash table of the ordinary variables by the keys of their names, with linear probing.
struct CGlobalVars::SIndex {
public:
    SIndex() : m_slots(64) { LearnRules(); }

    /// Removes all entries.
    void Clear() noexcept;
    /// From now on names are matched by the rules of the system's locale. Of an empty index only.
    void LearnRules();
    /// The key of a name, valid until the thread's next call for any table.
    std::string_view KeyOf(std::string_view name) const;
    CGlobalVar* Find(std::string_view key) const noexcept;
    /// False when there is a variable of an equal name already.
    bool Insert(const CGlobalVar& var);
    void Erase(const CGlobalVar& var) noexcept;
    std::size_t GetCount() const noexcept { return m_count; }

    vnbytstr::detail::VariablePool pool;

private:
    static constexpr DWORD kNone = 0xFFFFFFFF;
    struct Slot {
        DWORD hash = 0;
        DWORD number = kNone;
    };
    void Grow();
    void Put(const Slot& slot) noexcept;

    const vnbytstr::Collation* m_collation = nullptr;
    std::vector<Slot> m_slots; // a power of two of them, an eighth at least free
    std::size_t m_count = 0;
};

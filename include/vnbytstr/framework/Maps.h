// The framework's maps: CMapStringToString, CMapStringToOb, CMapStringToPtr, CMapPtrToPtr.
#pragma once

#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/StringList.h"

#include <climits>
#include <functional>
#include <string_view>
#include <unordered_map>

namespace vnbytstr::detail {

/// Keys that are strings: equal when they compare equal as text.
struct StringKey {
    using Stored = CString;
    using Given = const char*;
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(const char* text) const noexcept {
            return std::hash<std::string_view>()(text);
        }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(const char* left, const char* right) const noexcept {
            return std::strcmp(left, right) == 0;
        }
    };
    static Given Normal(Given key) noexcept { return key != nullptr ? key : ""; }
};

/// Keys that are addresses; null is one of them.
struct PointerKey {
    using Stored = void*;
    using Given = void*;
    using Hash = std::hash<void*>;
    using Equal = std::equal_to<void*>;
    static Given Normal(Given key) noexcept { return key; }
};

/// What all maps share. A map of pointers does not own what they point to; a null text as a key is
/// the empty one. Memory that cannot be had throws CMemoryException and leaves the map as it was.
/// One map, one thread at a time.
template <class Key, class Value>
class VNBYTSTR_API MapBase : public CObject {
public:
    using GivenKey = typename Key::Given;
    using StoredKey = typename Key::Stored;

    int GetCount() const noexcept { return static_cast<int>(m_entries.size()); }
    bool IsEmpty() const noexcept { return m_entries.empty(); }

    /// Puts the value of `key` into `value`; FALSE, with `value` untouched, when there is none.
    BOOL Lookup(GivenKey key, Value& value) const {
        const auto found = m_entries.find(Key::Normal(key));
        if (found == m_entries.end())
            return FALSE;
        value = found->second;
        return TRUE;
    }
    /// The value of `key`, made (empty or null) when there is none. The reference stays valid until
    /// the key is removed.
    Value& operator[](GivenKey key) {
        const auto found = m_entries.find(Key::Normal(key));
        if (found != m_entries.end())
            return found->second;
        if (GetCount() == INT_MAX)
            AfxThrowMemoryException();
        return WithMemoryException([&]() -> Value& { return m_entries[StoredKey(key)]; });
    }
    void SetAt(GivenKey key, Value value) { (*this)[key] = std::move(value); }
    /// FALSE when the key was not there.
    BOOL RemoveKey(GivenKey key) {
        const auto found = m_entries.find(Key::Normal(key));
        if (found == m_entries.end())
            return FALSE;
        m_entries.erase(found);
        return TRUE;
    }
    void RemoveAll() noexcept { m_entries.clear(); }

    /// Where a walk over all entries begins, in no particular order; null when the map is empty.
    POSITION GetStartPosition() const noexcept { return PositionOf(m_entries.begin()); }
    /// The entry at `position`, which moves on to the next (null after the last); a null position
    /// throws CInvalidArgException. The entry just returned may be removed. Entries added during a
    /// walk may be met or missed, and others met twice or missed.
    void GetNextAssoc(POSITION& position, StoredKey& key, Value& value) const {
        if (position == nullptr)
            AfxThrowInvalidArgException();
        auto entry = m_entries.find(reinterpret_cast<const Entry*>(position)->first);
        key = entry->first;
        value = entry->second;
        position = PositionOf(++entry);
    }

private:
    using Entries = std::unordered_map<StoredKey, Value, typename Key::Hash, typename Key::Equal>;
    using Entry = typename Entries::value_type;

    // Entries do not move, so an address names one; the iterator is found again by its key.
    POSITION PositionOf(typename Entries::const_iterator entry) const noexcept {
        if (entry == m_entries.end())
            return nullptr;
        return reinterpret_cast<POSITION>(const_cast<Entry*>(&*entry));
    }

    Entries m_entries;
};

} // namespace vnbytstr::detail

class VNBYTSTR_API CMapStringToString
    : public vnbytstr::detail::MapBase<vnbytstr::detail::StringKey, CString> {
    DECLARE_DYNAMIC(CMapStringToString)
};

/// From strings to objects; it does not own them.
class VNBYTSTR_API CMapStringToOb
    : public vnbytstr::detail::MapBase<vnbytstr::detail::StringKey, CObject*> {
    DECLARE_DYNAMIC(CMapStringToOb)
};

/// From strings to pointers; it does not own what they point to.
class VNBYTSTR_API CMapStringToPtr
    : public vnbytstr::detail::MapBase<vnbytstr::detail::StringKey, void*> {
    DECLARE_DYNAMIC(CMapStringToPtr)
};

/// From pointers to pointers; it does not own what they point to.
class VNBYTSTR_API CMapPtrToPtr
    : public vnbytstr::detail::MapBase<vnbytstr::detail::PointerKey, void*> {
    DECLARE_DYNAMIC(CMapPtrToPtr)
};

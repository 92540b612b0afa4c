// Comparing texts the way people sort and search them: letters of one name in upper and lower
// case, in hiragana and katakana, in half and full width count as the same. It is the order of
// Unicode's collation algorithm (UTS #10) with the locale's own rules, down to accents and no
// further; punctuation counts.
//
// Texts are in the ANSI code page. Bytes that are not a character count as U+FFFD, which sorts
// after everything else. Control characters other than white space do not count at all, NUL among
// them.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vnbytstr {

/// The rules of one locale. Immutable; every member may be called from every thread. Of a text the
/// first 512 MB count.
class VNBYTSTR_API Collation {
public:
    /// The rules of the system's text locale, learnt at first use.
    static const Collation& Current();
    /// Those of a locale such as "de_AT.UTF-8"; what follows a '.' or '@' does not matter. "C",
    /// "POSIX", the empty name and an unknown language have Unicode's own order. Lives as long as
    /// the process. std::runtime_error when ICU has no collation data.
    static const Collation& ForLocale(std::string_view locale);

    ~Collation();
    Collation(const Collation&) = delete;
    Collation& operator=(const Collation&) = delete;

    /// Less than 0, 0 or greater than 0.
    int Compare(std::string_view left, std::string_view right) const;

    /// Appends the text's key: bytes without NUL, and a NUL. Two keys compare by their unsigned
    /// bytes as Compare compares the texts, so equal texts have equal keys. Keys of different
    /// locales, or versions of ICU, do not go together; they are for memory, not for files.
    void AppendKey(std::string_view text, std::string& keys) const;
    /// As AppendKey, without the way around ICU that plain ASCII text takes there: the same bytes.
    void AppendKeyByIcu(std::string_view text, std::string& keys) const;

private:
    struct Rules;
    explicit Collation(const std::string& locale);

    std::unique_ptr<Rules> m_rules;
};

/// Compares by the rules of the system's locale.
VNBYTSTR_API int CompareIgnoringCaseKanaWidth(std::string_view left, std::string_view right);

/// The keys of many texts, in one piece of memory.
class VNBYTSTR_API CollationKeys {
public:
    explicit CollationKeys(const Collation& collation = Collation::Current())
        : m_collation(&collation) {}

    /// Makes room for `count` texts of `bytes` bytes in all.
    void Reserve(std::size_t count, std::size_t bytes);
    /// Appends the key of the next text.
    void Add(std::string_view text) {
        m_collation->AppendKey(text, m_keys);
        m_ends.push_back(m_keys.size());
    }
    std::size_t GetCount() const noexcept { return m_ends.size(); }
    /// The key at `index` (below GetCount) with its NUL; valid until the next Add.
    std::string_view operator[](std::size_t index) const noexcept {
        const std::size_t begin = index == 0 ? 0 : m_ends[index - 1];
        return std::string_view(m_keys).substr(begin, m_ends[index] - begin);
    }

private:
    const Collation* m_collation;
    std::string m_keys;
    std::vector<std::size_t> m_ends;
};

} // namespace vnbytstr

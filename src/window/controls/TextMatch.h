// The one rule by which lists and combo boxes find a text: a beginning or the whole, letters of
// both cases alike as the ANSI code page pairs them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// A text to look for, ready to be compared with many.
class TextMatch {
public:
    explicit TextMatch(std::string_view text);

    /// Whether `text` begins with the text to look for; the empty one begins every text.
    bool Begins(std::string_view text) const {
        if (text.size() < m_lower.size() || m_lower.empty())
            return m_lower.empty();
        return (text[0] == m_first[0] || text[0] == m_first[1]) && Compare(text);
    }
    /// Whether `text` is the text to look for.
    bool Is(std::string_view text) const { return text.size() == m_lower.size() && Begins(text); }

    /// The first of `count` texts after the index `after`, and from 0 again up to it, that begins
    /// with (`whole`: is) the text; -1 when none does. `after` outside the texts: from 0.
    /// `textOf(index)` is the text at an index.
    template <class TextOf>
    int Find(int after, int count, bool whole, const TextOf& textOf) const {
        const int start = after < 0 || after >= count - 1 ? 0 : after + 1;
        for (int i = 0; i < count; ++i) {
            const int index = i < count - start ? start + i : i - (count - start);
            const std::string_view text = textOf(index);
            if (whole ? Is(text) : Begins(text))
                return index;
        }
        return -1;
    }

private:
    bool Compare(std::string_view text) const;

    std::string m_lower;
    bool m_ascii;
    char m_first[2] = {0, 0}; ///< the first byte in lower and upper case
};

} // namespace vnbytstr::detail

// Finds a text in others, letters of both cases alike as the ANSI code page pairs them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// A text to look for, ready to be looked for in many.
class ContainedText {
public:
    explicit ContainedText(std::string_view text);

    /// Where the text begins in `in`, at or after `from`; npos when it does not occur. The empty
    /// text occurs everywhere. A place within a character of several bytes does not count.
    std::size_t Find(std::string_view in, std::size_t from = 0) const {
        return m_fast ? FindFast(in, from) : FindSlowly(in, from);
    }
    bool IsIn(std::string_view in) const { return Find(in) != std::string_view::npos; }
    /// In lower case; as long as the text.
    const std::string& Lower() const { return m_lower; }

private:
    std::size_t FindFast(std::string_view in, std::size_t from) const;
    bool IsAt(const char* at) const;
    std::size_t FindSlowly(std::string_view in, std::size_t from) const;

    std::string m_lower;
    bool m_ascii;
    bool m_fast; ///< ASCII, and no byte of another character can be taken for one of its letters
};

} // namespace vnbytstr::detail

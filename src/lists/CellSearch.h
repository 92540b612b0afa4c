// The text that the user looks for in a list's cells.
#pragma once

#include "src/lists/ContainedText.h"
#include "src/window/controls/TextMatch.h"
#include "src/window/draw/TextPlaces.h"

#include <string>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// A text and EListFind flags, ready to be looked for in many cells. The empty text is in none.
class CellSearch {
public:
    CellSearch() : CellSearch({}, 0) {}
    CellSearch(std::string_view text, unsigned flags);

    bool IsEmpty() const { return m_text.empty(); }
    bool IsIn(std::string_view cell) const { return Find(cell, 0) != std::string_view::npos; }
    /// The hits in a cell, from left to right, none within another; up to `most`.
    std::vector<TextPart> Hits(std::string_view cell, std::size_t most) const;
    /// The same cells are hits.
    bool operator==(const CellSearch& other) const {
        return m_text == other.m_text && m_flags == other.m_flags;
    }

private:
    std::size_t Find(std::string_view cell, std::size_t from) const;
    std::size_t FindExactly(std::string_view cell, std::size_t from) const;

    std::string m_text;
    unsigned m_flags;
    ContainedText m_contained;
    TextMatch m_whole;
};

} // namespace vnbytstr::detail

#include "src/lists/CellSearch.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/ListFind.h"

namespace vnbytstr::detail {

CellSearch::CellSearch(std::string_view text, unsigned flags)
    : m_text(text), m_flags(flags & (kFindMatchCase | kFindWholeCell)), m_contained(text),
      m_whole(text) {}

std::size_t CellSearch::Find(std::string_view cell, std::size_t from) const {
    if (m_text.empty() || cell.size() < m_text.size())
        return std::string_view::npos;
    const bool matchesCase = (m_flags & kFindMatchCase) != 0;
    if ((m_flags & kFindWholeCell) != 0) {
        const bool is = from == 0 && (matchesCase ? cell == m_text : m_whole.Is(cell));
        return is ? 0 : std::string_view::npos;
    }
    return matchesCase ? FindExactly(cell, from) : m_contained.Find(cell, from);
}

/// A place within a character of several bytes does not count.
std::size_t CellSearch::FindExactly(std::string_view cell, std::size_t from) const {
    const CodePage& page = CodePage::Ansi();
    std::size_t at = cell.find(m_text, from);
    if (!page.IsSingleByte() && !page.IsUtf8())
        while (at != std::string_view::npos && page.CharStart(cell, at) != at)
            at = cell.find(m_text, at + 1);
    return at;
}

std::vector<TextPart> CellSearch::Hits(std::string_view cell, std::size_t most) const {
    std::vector<TextPart> hits;
    for (std::size_t at = Find(cell, 0); at != std::string_view::npos && hits.size() < most;) {
        hits.push_back({at, at + m_text.size()});
        at = Find(cell, hits.back().end);
    }
    return hits;
}

} // namespace vnbytstr::detail

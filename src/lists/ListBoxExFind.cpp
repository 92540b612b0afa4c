// CListBoxEx: finding a text, and the marks behind it.
#include "src/lists/ListColors.h"
#include "src/lists/ListFinder.h"

#include <utility>

using namespace vnbytstr::detail;

namespace {

/// A cell with more hits has the first ones marked.
constexpr std::size_t kMaxMarks = 64;

} // namespace

/// An open editor is stored first: its row may be left. False: the value was refused.
bool CListBoxEx::CanFind(const Lifeline& life) {
    return GetSafeHwnd() != nullptr &&
           (m_pActiveEditor == nullptr || (CellEnter(TRUE) && life.Holds()));
}

EFindResult CListBoxEx::FindText(LPCTSTR text, unsigned flags) {
    const Lifeline life(this);
    if (!CanFind(life))
        return kFindStopped;
    if (m_pFinder == nullptr)
        m_pFinder = std::make_unique<Finder>(*this);
    return m_pFinder->Begin(text != nullptr ? text : "", flags);
}

EFindResult CListBoxEx::FindNext() {
    const Lifeline life(this);
    if (!CanFind(life))
        return kFindStopped;
    return m_pFinder != nullptr ? m_pFinder->Go(true) : kFindNone;
}

EFindResult CListBoxEx::FindPrevious() {
    const Lifeline life(this);
    if (!CanFind(life))
        return kFindStopped;
    return m_pFinder != nullptr ? m_pFinder->Go(false) : kFindNone;
}

void CListBoxEx::ClearFind() {
    if (m_pFinder != nullptr)
        m_pFinder->End();
}

int CListBoxEx::GetFoundColumn() const {
    return m_pFinder != nullptr && GetSafeHwnd() != nullptr ? m_pFinder->CurrentColumn() : -1;
}

int CListBoxEx::GetFindCount() const { return m_pFinder != nullptr ? m_pFinder->Count() : -1; }

void CListBoxEx::Finder::DrawMarks(CDC& dc, const DrawnCell& cell, std::string_view seen,
                                   const CRect& place, UINT flags) const {
    const std::vector<TextPart> hits =
        cell.column < m_firstColumn ? std::vector<TextPart>() : m_search.Hits(cell.text, kMaxMarks);
    if (hits.empty())
        return;
    const DrawnRow plain{-1, GetSysColor(COLOR_WINDOW), GetSysColor(COLOR_WINDOWTEXT)};
    const DrawnRow& row = m_list.m_pDrawn != nullptr ? *m_list.m_pDrawn : plain;
    const COLORREF mark = MarkColor(row.m_background, row.m_text, GetSysColor(COLOR_HIGHLIGHT));
    const bool isCurrent =
        row.m_row >= 0 && row.m_row == m_hitRow && cell.column == CurrentColumn();
    CBrush frame(row.m_text);
    for (const CRect& hit : TextPlaces(dc, seen, place, flags, hits)) {
        dc.FillSolidRect(hit, mark);
        if (isCurrent)
            dc.FrameRect(hit, &frame);
    }
}

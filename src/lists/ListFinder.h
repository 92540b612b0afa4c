// The search of a CListBoxEx: what is looked for, the way from hit to hit in parts, the number of
// hits.
#pragma once

#include "src/lists/CellSearch.h"
#include "src/lists/ListColumns.h"
#include "src/lists/ListRows.h"
#include "vnbytstr/ListFind.h"

/// Cells are addressed by row and by position of the column from the left, among the shown ones.
class CListBoxEx::Finder {
public:
    explicit Finder(CListBoxEx& list) : m_list(list) {}

    /// Draws the marks of a cell, whose text `seen` will be drawn into `place` with `flags`.
    void DrawMarks(CDC& dc, const vnbytstr::detail::DrawnCell& cell, std::string_view seen,
                   const CRect& place, UINT flags) const;
    /// Whether a cell with that text is marked as a hit.
    bool IsMarked(int column, std::string_view cell) const {
        return column >= m_firstColumn && m_search.IsIn(cell);
    }
    /// Looks for a text from the current cell on. The list may end with a hit.
    EFindResult Begin(std::string_view text, unsigned flags);
    /// The next or previous hit from the current cell, which comes last. The list may end with it.
    EFindResult Go(bool forward);
    /// On kContinueFind.
    void Continue();
    void End();

    /// There are more rows, or fewer.
    void RowsChanged();
    /// All rows are others.
    void RowsReplaced();

    /// The column of the last hit, as long as its row has the focus; else -1.
    int CurrentColumn() const;
    /// Cells that are hits; -1 until they are counted.
    int Count() const { return m_isCounting ? -1 : m_hits; }

private:
    using Time = Rows::Time;
    using Cell = vnbytstr::detail::CellAddress;

    EFindResult Start(Cell first, Cell last, bool forward);
    EFindResult SearchUntil(Time until);
    bool NextRow();
    bool IsPast() const;
    bool IsHit(int row, int column);
    EFindResult Show(int row, int column);
    void CountUntil(Time until);
    int ShownColumns() const;
    int FocusRow() const;
    void Post();

    CListBoxEx& m_list;
    vnbytstr::detail::CellSearch m_search;
    int m_firstColumn = 0; ///< those before it are not looked at
    std::string m_buffer;
    int m_hitRow = -1;
    int m_hitColumn = -1; ///< in m_hitRow

    bool m_isRunning = false;
    bool m_isForward = true;
    bool m_hasWrapped = false;
    Cell m_next;      ///< the cell to look at
    Cell m_last;      ///< after the search has begun again at the other end
    int m_focus = -1; ///< the row with the focus when it began

    bool m_counts = false;
    bool m_isCounting = false;
    int m_countNext = 0; ///< row
    int m_hits = -1;
    bool m_isPosted = false;
};

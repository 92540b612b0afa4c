// The list of the result's rows.
#pragma once

#include "vnquery/window/ResultRows.h"

#include "vnbytstr/ListBoxEx.h"

namespace vnquery {

/// Shows a document. Besides a current row it has a current cell: the left and right keys move
/// through the columns of the row. Changed cells have a mark at their left edge.
class ResultList : public CListBoxEx {
public:
    /// `sortsLater` is called when a sort goes on in the background, see SortEnded.
    ResultList(ResultDocument& document, std::function<void()> sortsLater)
        : m_document(document), m_rows(document, std::move(sortsLater)) {}

    BOOL CreateList(CWnd* parent, UINT id, UINT headingsId);

    /// Shows the document's columns, and its rows from the first one.
    void ShowColumns();
    /// Gives editors to the columns that the document allows to be edited.
    void ShowEditors();
    /// Shows rows that the document has got since.
    void ShowNewRows() { RowsChanged(); }
    /// Fits columns without a width to their contents, within limits.
    void FitNewColumns();
    /// Shows a row, or all rows, again.
    void RefreshRow(std::size_t row) { RowChanged(static_cast<int>(row)); }
    void RefreshAll() { Invalidate(); }
    /// Stores the columns' widths in the document.
    void StoreWidths();

    /// -1 without a current row.
    int GetCurrentRow() const;
    int GetCurrentColumn() const { return m_column; }
    void SetCurrentCell(int row, int column);
    /// The row that a file was dropped on, or whose cell is being opened.
    int GetOpenedRow() const { return m_nCurRow; }

    /// Sorts as the document's layout says.
    void RestoreSort();
    /// To be called when the document's sort in the background runs no longer: shows the new order.
    void SortEnded();
    void DrawItem(LPDRAWITEMSTRUCT item) override;
    BOOL PreTranslateMessage(MSG* message) override;
    int ShowZoom(int row, int column, CString& value) override;

protected:
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    void OnRButtonDown(UINT flags, CPoint point);
    DECLARE_MESSAGE_MAP()

private:
    CRect CellRect(int column, const RECT& row) const;
    void MoveColumn(int by);
    void NotifyParent() const;
    void TakeColumn(CPoint point);
    void ShowSortArrow();
    BOOL RunCommand(unsigned command);

    ResultDocument& m_document;
    ResultRows m_rows;
    int m_column = 0;
};

} // namespace vnquery

// The list of the result's rows.
#pragma once

#include "vnquery/window/ResultRows.h"

#include "vnbytstr/ListBoxEx.h"

#include <QString>

namespace vnquery {

/// Shows a document: the rows' numbers in its column 0, which stays in view, and the result's
/// columns after it. Besides a current row it has a current cell: the left and right keys move
/// through the columns of the row. Changed cells have a mark at their left edge.
///
/// Functions take the list's rows, which a filter makes fewer than the document's, and the result's
/// columns.
class ResultList : public CListBoxEx {
public:
    /// Sent to the parent: the user asks to see the current value (a double click or Enter in a
    /// cell that is not edited).
    static constexpr UINT kWmShowValue = WM_APP + 2;

    /// `sorts`: see ResultRows. A sort in the background ends with SortEnded.
    ResultList(ResultDocument& document, std::function<void()> sorts)
        : m_document(document), m_rows(document, std::move(sorts)) {}

    BOOL CreateList(CWnd* parent, UINT id, UINT headingsId);

    /// Shows the document's columns, and its rows from the first one.
    void ShowColumns();
    /// Gives editors to the columns that the document allows to be edited.
    void ShowEditors();
    /// Fits columns without a width to their contents, within limits.
    void FitNewColumns();
    /// Keeps the columns' order, widths, and the filter in the document.
    void StoreLayout();
    /// The columns as the query gave them.
    void ResetColumns();

    /// The document's shown row of a row of the list.
    std::size_t ShownRowOf(int row) const {
        return static_cast<std::size_t>(GetUnfilteredRow(row));
    }
    /// -1 without a current row.
    int GetCurrentRow() const;
    /// The result's column; -1 in the column of the numbers.
    int GetCurrentColumn() const { return m_column - 1; }
    void SetCurrentCell(int row, int column);
    /// The row that a file was dropped on, or whose cell is being opened.
    int GetOpenedRow() const { return m_nCurRow; }
    /// The result's column under a column header, -1 for the numbers.
    static int ResultColumnOf(int listColumn) { return listColumn - 1; }
    static int ListColumnOf(int resultColumn) { return resultColumn + 1; }
    /// The result's columns from left to right, without the hidden ones.
    std::vector<std::size_t> GetShownColumns() const;
    std::vector<int> GetSelectedRows() const;
    /// The columns up to that one of the list stay in view.
    void FreezeUpTo(int listColumn);
    /// The column that was found becomes the current one.
    void TakeFoundColumn();
    /// Columns are aligned by what their values were found to be.
    void ShowKinds();
    /// The current column goes left or right by one.
    void MoveColumn(int by);

    void SortBy(int column, bool descending);
    /// Sorts as the document's layout says.
    void RestoreSort();
    /// To be called when the document's sort in the background runs no longer: shows the new order.
    void SortEnded();
    void DrawItem(LPDRAWITEMSTRUCT item) override;
    BOOL PreTranslateMessage(MSG* message) override;

protected:
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    void OnRButtonDown(UINT flags, CPoint point);
    DECLARE_MESSAGE_MAP()

private:
    CRect CellRect(int column, const RECT& row) const;
    /// Goes through the shown columns, at most to the first or last one.
    void StepColumn(int by);
    void NotifyParent() const;
    void TakeColumn(CPoint point);
    void ShowSortArrow();

    ResultDocument& m_document;
    ResultRows m_rows;
    int m_column = 1; ///< of the list
};

} // namespace vnquery
